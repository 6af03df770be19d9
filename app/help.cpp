#include "app/help.h"

#include <iostream>

namespace lineup {

namespace {

// Fixed text, not generated from the command table: it has an order and a wording of its own.
constexpr char kHelp[] =
    "  help                     This help\n"
    "  show                     Show current lineup to be commited (also just pressing Return)\n"
    "  clear                    Clears the whole lineup\n"
    "  find SERVICE_NAME        Finds a SAT/TDT/Cable service in the DB\n"
    "  findsat SERVICE_NAME     Finds a SAT service in the DB\n"
    "  findtdt SERVICE_NAME     Finds a TDT service in the DB\n"
    "  findcable SERVICE_NAME   Finds a cable service in the DB\n"
    "  findip SERVICE_NAME      Finds an IP service in the DB\n"
    "  adddvb SERVICE_ID        Add a DVB input service to the RF and IP lineups\n"
    "  rfadddvb SERVICE_ID      Add a DVB input service to the RF lineup\n"
    "  ipadddvb SERVICE_ID      Add a DVB input service to the IP lineup\n"
    "  addenc SLOT_ID HDMI_ID   Add an ENC input service to the RF and IP lineups\n"
    "  rfaddenc SLOT_ID HDMI_ID Add an ENC input service to the RF lineup\n"
    "  ipaddenc SLOT_ID HDMI_ID Add an ENC input service to the IP lineup\n"
    "  rfaddempty DVB_SVC_TYPE  Add an empty input service to the RF lineup\n"
    "  addpls                   Add a non-standard PLS freq to the satellite scan params\n"
    "  rmpls                    Remove a non-standard PLS freq from the satellite scan params\n"
    "  rfmod [cofdm|qam]        Change RF output carrier modulation\n"
    "  rfnum [4|6]              Change number of RF output carriers per OUT module\n"
    "  drm [off/lynk/vsecure]   Change DRM working mode\n"
    "  eit [off|actual|others]  Change EIT working mode\n"
    "  type HEADEND_TYPE        Set the headend type\n"
    "  id HEADEND_ID            Set the headend ID [1-10]\n"
    "  country COUNTRY          Set the headend country\n"
    "  vlan [1|2]               Sets the output VLAN 1: TV1, 2: TV1&TV2\n"
    "  addipmux SLOT_ID IF_ID URL  Add a new mux to an IP input\n"
    "  stdp DECRYPT_POLICY      Change Stream Type Decrypt Policy to video, sub or ttx\n"
    "  rfinput                  status  Inputs status \n"
    "                           enable  [TDT1|TDT2|SAT1...SAT8|TDTALL|SATALL] enable input \n"
    "                           disable [TDT1|TDT2|SAT1...SAT8|TDTALL|SATALL] disable input \n"
    "  tdtscan                  status  Inputs status \n"
    "                           enable  [COFDM|QAMS] enable type scan \n"
    "                           disable [COFDM|QAMS] disable type scan \n"
    " \n"
    "  save CONFIG_FILE         Saves the configuration to a JSON file\n"
    "  restore CONFIG_FILE      Restores the configuration from a JSON file\n"
    "  reset                    Reset the lineup with the currently running lineup from "
    "ControllerTask\n"
    "  commit                   Send the lineup to ControllerTask\n"
    "  quit                     Quit the program (also just pressing Ctrl-D)\n";

}  // namespace

void printHelp() {
  std::cout << "Available commands:\n" << kHelp << std::flush;
}

}  // namespace lineup
