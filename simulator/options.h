// The command line.

#pragma once

#include <chrono>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "general_types.h"
#include "model/headend_places.h"
#include "model/namespaces.h"
#include "simulator/faults.h"

namespace lineup::simulator {

struct Options {
  int port = kControllerPort;
  std::string stateFile =
      std::filesystem::path(kCataloguePath).replace_filename("headend-simulator.json");
  std::string catalogueFile = kCataloguePath;
  bool writeCatalogue = true;
  bool replaceCatalogue = false;
  std::set<general::RFInputId::type> absentInputs;
  std::chrono::seconds startupTime{0};
  std::vector<Fault> faults;
  bool inMemory = false;        ///< no state file
  bool keepsState = false;      ///< the state file stays at the end
  bool keepsCatalogue = false;  ///< likewise
  bool stamps = false;
  int readyDescriptor = -1;  ///< -1 for none
  bool help = false;
  bool version = false;
};

extern const char kHelpText[];

/// Reads the command line. Throws std::invalid_argument for invalid options.
Options parseOptions(int argc, char* argv[]);

}  // namespace lineup::simulator
