#include "simulator/options.h"

#include <fcntl.h>
#include <getopt.h>
#include <strings.h>

#include <charconv>
#include <climits>
#include <cstring>
#include <stdexcept>
#include <system_error>

namespace lineup::simulator {

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
call. SIGTERM, SIGINT, SIGHUP or SIGQUIT ends it.
)";

namespace {

/// An option as it was given.
struct Given {
  std::string option;
  std::string argument{};  ///< empty for an option without one
};

int numberUpTo(int most, const Given& given) {
  const std::string& text = given.argument;
  int value = -1;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end || value < 0 || value > most) {
    throw std::invalid_argument(given.option + " needs a number from 0 to " + std::to_string(most) +
                                ", not '" + text + "'");
  }
  return value;
}

int openDescriptor(const Given& given) {
  const int descriptor = numberUpTo(INT_MAX, given);
  if (fcntl(descriptor, F_GETFD) < 0) {
    throw std::invalid_argument(given.option + " needs an open file descriptor, not '" +
                                given.argument + "'");
  }
  return descriptor;
}

std::string path(const Given& given) {
  if (given.argument.empty()) {
    throw std::invalid_argument(given.option + " needs a file name");
  }
  return given.argument;
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

template <FaultKind kKind>
void addFault(const Given& given, Options& options) {
  options.faults.push_back(parseFault(given.option, kKind, given.argument));
}

template <bool Options::*kFlag, bool kValue = true>
void setFlag(const Given& /*given*/, Options& options) {
  options.*kFlag = kValue;
}

struct OptionRow {
  const char* name;
  int takesArgument;  ///< as in getopt_long()
  void (*apply)(const Given& given, Options& options);
};

const OptionRow kRows[] = {
    {"port", required_argument,
     [](const Given& given, Options& options) { options.port = numberUpTo(65535, given); }},
    {"state", required_argument,
     [](const Given& given, Options& options) {
       options.stateFile = path(given);
       options.keepsState = true;
     }},
    {"catalogue", required_argument,
     [](const Given& given, Options& options) {
       options.catalogueFile = path(given);
       options.keepsCatalogue = true;
     }},
    {"no-catalogue", no_argument, setFlag<&Options::writeCatalogue, false>},
    {"replace-catalogue", no_argument, setFlag<&Options::replaceCatalogue>},
    {"without-input", required_argument,
     [](const Given& given, Options& options) {
       options.absentInputs.insert(inputNamed(given.argument));
     }},
    {"not-ready", required_argument,
     [](const Given& given, Options& options) {
       options.startupTime = std::chrono::seconds(numberUpTo(86400, given));
     }},
    {"ready-fd", required_argument,
     [](const Given& given, Options& options) { options.readyDescriptor = openDescriptor(given); }},
    {"in-memory", no_argument, setFlag<&Options::inMemory>},
    {"keep", no_argument,
     [](const Given& /*given*/, Options& options) {
       options.keepsState = options.keepsCatalogue = true;
     }},
    {"delay", required_argument, addFault<FaultKind::Delay>},
    {"refuse", required_argument, addFault<FaultKind::Refuse>},
    {"break", required_argument, addFault<FaultKind::Break>},
    {"timestamps", no_argument, setFlag<&Options::stamps>},
    {"help", no_argument, setFlag<&Options::help>},
    {"version", no_argument, setFlag<&Options::version>},
};

/// The rows as getopt_long() takes them, each with its index as the value to return.
std::vector<option> optionsForGetopt() {
  std::vector<option> options;
  for (const OptionRow& row : kRows) {
    options.push_back({row.name, row.takesArgument, nullptr, static_cast<int>(options.size())});
  }
  options.push_back({});
  return options;
}

}  // namespace

Options parseOptions(int argc, char* argv[]) {
  Options options;
  opterr = 0;
  const std::vector<option> known = optionsForGetopt();
  int option = 0;
  // The leading colon tells a missing argument from an unknown option.
  while ((option = getopt_long(argc, argv, ":", known.data(), nullptr)) != -1) {
    if (option == ':') {
      throw std::invalid_argument("option '" + std::string(argv[optind - 1]) +
                                  "' needs an argument");
    }
    if (option == '?') {
      throw std::invalid_argument("unknown option '" + std::string(argv[optind - 1]) + "'");
    }
    const OptionRow& row = kRows[option];
    row.apply({std::string("--") + row.name, optarg == nullptr ? "" : optarg}, options);
  }
  if (optind < argc) {
    throw std::invalid_argument("unexpected argument '" + std::string(argv[optind]) + "'");
  }
  return options;
}

}  // namespace lineup::simulator
