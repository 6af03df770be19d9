#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "lineup/check_mark.h"
#include "lineup/scan_types.h"
#include "model/lineup_editor.h"
#include "support/words.h"
#include "terminal/line_input.h"

namespace lineup {

void LineupEditor::showTdtScan() const {
  const auto& global = config.lineupConfig.globalConfig;
  std::cout << "\n\n    DVB-T   DVB-C   \n      " << checkMark(global.cofdmScanEnabled) << "       "
            << checkMark(global.qamsScanEnabled) << "\n\n\n"
            << std::flush;
}

void LineupEditor::setTdtScan(bool enable, std::string& type) {
  upperCase(type);
  const bool isQams = type == kQamsScan;
  if (!isQams && type != kCofdmScan) {
    throw std::runtime_error("Scan type not supported ");
  }
  auto& global = config.lineupConfig.globalConfig;
  bool& enabled = isQams ? global.qamsScanEnabled : global.cofdmScanEnabled;
  // A request for QAMS sets pendingChanges even if the value is the same.
  pendingChanges = pendingChanges || isQams || enabled != enable;
  if (enabled == enable) {
    std::cout << "It has the same configuration: " << (enable ? "ENABLED" : "DISABLED")
              << std::endl;
    return;
  }
  enabled = enable;
  std::cout << "Updated scan type. Please remember to commit the changes." << std::endl;
}

void LineupEditor::addPlsItem() {
  std::cout << "Enter the information of the non-standard PLS item:" << std::endl
            << " plsType                      plsCode" << std::endl
            << " (0 Auto | 1 Gold | 2 Root)   131070 " << std::endl;
  std::string line;
  readAnswer(line);
  const std::vector<std::string> words = splitWords(line, ' ');
  if (words.size() < 2) {
    throw std::runtime_error("Please enter all the parameters");
  }
  hub_module::PLSItem item;
  item.plsType = readNumber(words[0]);
  item.plsCode = readNumber(words[1]);
  auto& scan = config.rfInputsScanConfig;
  if (scan.__isset.plsItemList) {
    scan.plsItemList.push_back(item);
  } else {
    scan.__set_plsItemList({item});
  }
  pendingChanges = true;
}

void LineupEditor::clearPlsItems() {
  auto& scan = config.rfInputsScanConfig;
  if (!scan.__isset.plsItemList) {
    return;
  }
  scan.plsItemList.clear();
  pendingChanges = true;
}

}  // namespace lineup
