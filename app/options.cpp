#include "app/options.h"

#include <getopt.h>

#include <cstdlib>
#include <iostream>

#include "support/words.h"

namespace lineup {

namespace {

constexpr char kShortOptions[] = "cl:vhs:r:t:";
constexpr option kLongOptions[] = {
    {"console", no_argument, nullptr, 'c'},    {"level", required_argument, nullptr, 'l'},
    {"version", no_argument, nullptr, 'v'},    {"help", no_argument, nullptr, 'h'},
    {"save", required_argument, nullptr, 's'}, {"restore", required_argument, nullptr, 'r'},
    {"type", required_argument, nullptr, 't'}, {nullptr, 0, nullptr, 0}};

constexpr char kUsage[] =
    " [ -clvhsrt ] \n"
    "Lineup command line interface\n"
    "Options:\n"
    "   [ -c ] [ --console ] (type=FLAG)\n"
    "          Log to console. Default: not print to console.\n"
    "   [ -l ] [ --level ] (type=INTEGER, range=3...7, default=5)\n"
    "          Max log level value to print:\n"
    "           3 == ERROR\n"
    "           4 == WARNING\n"
    "           5 == NOTICE\n"
    "           6 == INFORMATION\n"
    "           7 == DEBUG\n"
    "   [ -v ] [ --version ] (type=FLAG)\n"
    "          Program version and exit.\n"
    "   [ -h ] [ --help ] (type=FLAG)\n"
    "          Display this help and exit.\n"
    "   [ -s ] [ --save ] (type=STRING)\n"
    "          Save HeadendConfig to JSON file\n"
    "   [ -r ] [ --restore ] (type=STRING)\n"
    "          Restore HeadendConfig from JSON file\n"
    "   [ -t ] [ --type ] (type=STRING)\n"
    "          Set headend type. standard skyit\n";

void setLevel(CommandLineOptions& options, const char* argument) {
  options.level = readNumber(argument);
  if (options.level < LOG_LEVEL_ERROR) {
    throw std::string("parameter range error: level must be >= 3");
  }
  if (options.level > LOG_LEVEL_DEBUG) {
    throw std::string("parameter range error: level must be <= 7");
  }
}

void setOption(CommandLineOptions& options, int letter) {
  switch (letter) {
    case 'c':
      options.console = true;
      break;
    case 'l':
      setLevel(options, optarg);
      break;
    case 'v':
      options.version = true;
      break;
    case 'h':
      options.help = true;
      printUsage(options.programName, 0);
    case 's':
      options.saveFile = optarg;
      break;
    case 'r':
      options.restoreFile = optarg;
      break;
    case 't':
      options.headendType = optarg;
      break;
    default:  // getopt_long() has printed its diagnostic
      printUsage(options.programName, 1);
  }
}

}  // namespace

CommandLineOptions parseOptions(int argc, char* argv[]) {
  CommandLineOptions options;
  options.programName = argv[0];
  optind = 0;  // reinitializes getopt_long()
  int letter;
  while ((letter = getopt_long(argc, argv, kShortOptions, kLongOptions, nullptr)) != -1) {
    setOption(options, letter);
  }
  options.firstOperand = optind;
  return options;
}

void printUsage(const std::string& programName, int status) {
  if (status == 0) {
    std::cout << "usage: " << programName << kUsage;
  } else {
    std::cerr << "Try `" << programName << " --help' for more information.\n";
  }
  std::exit(status);
}

}  // namespace lineup
