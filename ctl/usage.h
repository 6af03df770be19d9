// What lineupctl says about itself.

#pragma once

namespace lineup::ctl {

inline constexpr char kVersionText[] = "lineupctl " LINEUP_VERSION "\n";

inline constexpr char kUsageText[] =
    "usage: lineupctl COMMAND [OPTION]... [OPERAND]...\n"
    "\n"
    "  show [--section SECTION]... [--format text|json|csv] [SOURCE]\n"
    "      Show a configuration. SECTION is settings, rf, ip, slots, ipinputs, rfinputs or scan.\n"
    "  diff [--format text|json] [FROM] TO\n"
    "      Show what differs between two sources; FROM is running unless it is given.\n"
    "  save FILE\n"
    "      Save the running configuration.\n"
    "  apply [--dry-run] [--backup DIR [--keep N]] [--expect SOURCE] [--patch PATCH]... FILE\n"
    "      Send a configuration, and check that it runs.\n"
    "  backup [--keep N] DIR\n"
    "      Keep the running configuration, if it differs from the newest kept.\n"
    "  wait [--timeout SECONDS]\n"
    "      Wait until the controller answers.\n"
    "  catalogue [--format text|json|csv] [WORD]...\n"
    "      Find services whose names hold every word.\n"
    "\n"
    "  --help, --version\n"
    "\n"
    "SOURCE, FROM and TO are \"running\" (what the controller holds), a file, or - for standard\n"
    "input.\n"
    "\n"
    "Exit status: 0 done; 1 differs, or --expect does not hold, or wait ran out; 2 wrong usage;\n"
    "3 a file, the output or the catalogue; 4 the controller; 5 something else runs than was "
    "sent.\n";

}  // namespace lineup::ctl
