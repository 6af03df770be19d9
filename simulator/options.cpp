#include "simulator/options.h"

#include <fcntl.h>
#include <getopt.h>
#include <strings.h>

#include <charconv>
#include <climits>
#include <cstring>
#include <stdexcept>

namespace lineup::simulator {

namespace general = korvel::thrift::general;

const char kHelpText[] =
    R"(Usage: headend-simulator [OPTION]...
Stands in for the headend's controller on 127.0.0.1: answers its calls, keeps the
configuration and writes a service catalogue of invented services.

  --port N               listen on port N instead of 9190; 0 for any free port
  --state FILE           keep the configuration and the RF inputs in FILE instead of
                         /etc/korvel/conf/ControllerTask/headend-simulator.json
  --in-memory            keep them in no file
  --catalogue FILE       write the catalogue to FILE instead of
                         /etc/korvel/conf/ControllerTask/ControllerTask.sqlite
  --no-catalogue         write no catalogue
  --replace-catalogue    replace the catalogue even if another program wrote it
  --keep                 leave what was made under /etc/korvel there at the end; files
                         named by --state and --catalogue stay in any case
  --without-input NAME   leave an RF input (TDT1, TDT2, SAT1 to SAT8) out of the
                         status; may be given more than once
  --not-ready SECONDS    refuse every call for the first SECONDS
  --delay CALL[:N]=SECONDS
                         answer every CALL, or the Nth alone, so much later
  --refuse CALL[:N]      refuse it as a headend that is not ready
  --break CALL[:N]       close its connection without an answer
                         CALL is a name such as setHeadendConfig, or "all"; these
                         three may be given more than once
  --timestamps           put the time in front of each line
  --ready-fd N           write the port and a newline to the open file descriptor N
                         once it serves, and close it
  --help                 print this text and exit
  --version              print the version and exit

Says "headend-simulator: ready on 127.0.0.1:PORT" once it serves, then one line for each
call. SIGTERM or SIGINT ends it.
)";

namespace {

enum Option {
  PORT,
  STATE,
  IN_MEMORY,
  CATALOGUE,
  NO_CATALOGUE,
  REPLACE,
  KEEP,
  WITHOUT,
  NOT_READY,
  DELAY,
  REFUSE,
  BREAK,
  TIMESTAMPS,
  READY_FD,
  HELP,
  VERSION
};

const option kOptions[] = {{"port", required_argument, nullptr, PORT},
                           {"state", required_argument, nullptr, STATE},
                           {"catalogue", required_argument, nullptr, CATALOGUE},
                           {"no-catalogue", no_argument, nullptr, NO_CATALOGUE},
                           {"replace-catalogue", no_argument, nullptr, REPLACE},
                           {"without-input", required_argument, nullptr, WITHOUT},
                           {"not-ready", required_argument, nullptr, NOT_READY},
                           {"ready-fd", required_argument, nullptr, READY_FD},
                           {"in-memory", no_argument, nullptr, IN_MEMORY},
                           {"keep", no_argument, nullptr, KEEP},
                           {"delay", required_argument, nullptr, DELAY},
                           {"refuse", required_argument, nullptr, REFUSE},
                           {"break", required_argument, nullptr, BREAK},
                           {"timestamps", no_argument, nullptr, TIMESTAMPS},
                           {"help", no_argument, nullptr, HELP},
                           {"version", no_argument, nullptr, VERSION},
                           {nullptr, 0, nullptr, 0}};

int numberUpTo(int most, const std::string& option, const std::string& text) {
  int value = -1;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end || value < 0 || value > most) {
    throw std::invalid_argument(option + " needs a number from 0 to " + std::to_string(most) +
                                ", not '" + text + "'");
  }
  return value;
}

int openDescriptor(const std::string& option, const std::string& text) {
  const int descriptor = numberUpTo(INT_MAX, option, text);
  if (fcntl(descriptor, F_GETFD) < 0) {
    throw std::invalid_argument(option + " needs an open file descriptor, not '" + text + "'");
  }
  return descriptor;
}

std::string path(const std::string& option, const std::string& text) {
  if (text.empty()) throw std::invalid_argument(option + " needs a file name");
  return text;
}

general::RFInputId::type inputNamed(const std::string& name) {
  for (const auto& [value, valueName] : general::_RFInputId_VALUES_TO_NAMES) {
    // The names of groups come after those of inputs.
    if (value <= general::RFInputId::SAT8 && strcasecmp(name.c_str(), valueName) == 0) {
      return static_cast<general::RFInputId::type>(value);
    }
  }
  throw std::invalid_argument("--without-input needs TDT1, TDT2 or SAT1 to SAT8, not '" + name +
                              "'");
}

void apply(int option, Options& options) {
  const std::string argument = optarg == nullptr ? "" : optarg;
  switch (option) {
    case PORT:
      options.port = numberUpTo(65535, "--port", argument);
      break;
    case STATE:
      options.stateFile = path("--state", argument);
      options.keepsState = true;
      break;
    case CATALOGUE:
      options.catalogueFile = path("--catalogue", argument);
      options.keepsCatalogue = true;
      break;
    case NO_CATALOGUE:
      options.writeCatalogue = false;
      break;
    case REPLACE:
      options.replaceCatalogue = true;
      break;
    case WITHOUT:
      options.absentInputs.insert(inputNamed(argument));
      break;
    case NOT_READY:
      options.startupTime = std::chrono::seconds(numberUpTo(86400, "--not-ready", argument));
      break;
    case READY_FD:
      options.readyDescriptor = openDescriptor("--ready-fd", argument);
      break;
    case IN_MEMORY:
      options.inMemory = true;
      break;
    case KEEP:
      options.keepsState = options.keepsCatalogue = true;
      break;
    case DELAY:
      options.faults.push_back(parseFault("--delay", FaultKind::DELAY, argument));
      break;
    case REFUSE:
      options.faults.push_back(parseFault("--refuse", FaultKind::REFUSE, argument));
      break;
    case BREAK:
      options.faults.push_back(parseFault("--break", FaultKind::BREAK, argument));
      break;
    case TIMESTAMPS:
      options.stamps = true;
      break;
    case HELP:
      options.help = true;
      break;
    case VERSION:
      options.version = true;
      break;
  }
}

}  // namespace

Options parseOptions(int argc, char** argv) {
  Options options;
  opterr = 0;
  int option = 0;
  // The leading colon tells a missing argument from an unknown option.
  while ((option = getopt_long(argc, argv, ":", kOptions, nullptr)) != -1) {
    if (option == ':') {
      throw std::invalid_argument("option '" + std::string(argv[optind - 1]) +
                                  "' needs an argument");
    }
    if (option == '?') {
      throw std::invalid_argument("unknown option '" + std::string(argv[optind - 1]) + "'");
    }
    apply(option, options);
  }
  if (optind < argc) {
    throw std::invalid_argument("unexpected argument '" + std::string(argv[optind]) + "'");
  }
  return options;
}

}  // namespace lineup::simulator
