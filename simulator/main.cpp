// headend-simulator: stands in for the headend's controller on a desk without a headend.

#include <thrift/Thrift.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <deque>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>

#include "model/headend_places.h"
#include "simulator/catalogue.h"
#include "simulator/faults.h"
#include "simulator/headend_service.h"
#include "simulator/messages.h"
#include "simulator/options.h"
#include "simulator/server.h"
#include "simulator/state_store.h"

namespace lineup::simulator {

namespace {

void complain(const char* message) {
  std::cerr << "headend-simulator: " << message << std::endl;
}

/// Leaves the signals that end the server to the thread that waits for them; threads inherit the
/// mask. Ignores SIGPIPE.
void prepareSignals() {
  const sigset_t signals = Server::endingSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  signal(SIGPIPE, SIG_IGN);
}

/// Tells the process at the other end of `descriptor` that `port` is served. A write
/// error is printed; the simulator goes on.
void announce(int descriptor, int port) {
  const std::string line = std::to_string(port) + "\n";
  if (write(descriptor, line.data(), line.size()) < 0) {
    complain(("--ready-fd: " + std::generic_category().message(errno)).c_str());
  }
  close(descriptor);
}

/// Removes files and folders at the end.
class Tidier {
 public:
  Tidier() = default;
  Tidier(const Tidier&) = delete;
  Tidier& operator=(const Tidier&) = delete;
  ~Tidier() {
    // A folder in which somebody else has put something stays.
    std::error_code ignored;
    for (const std::filesystem::path& part : parts_) {
      std::filesystem::remove(part, ignored);
    }
  }

  /// Removes the file, and the folders above it, as far as they are not there yet.
  void removeAtTheEnd(const std::filesystem::path& file) {
    std::filesystem::path path;
    for (const std::filesystem::path& name : file) {
      path /= name;
      std::error_code unknown;
      if (!std::filesystem::exists(std::filesystem::symlink_status(path, unknown))) {
        parts_.push_front(path);
      }
    }
  }

 private:
  std::deque<std::filesystem::path> parts_;  // the deepest first
};

/// Serves until told to end.
void run(const Options& options) {
  prepareSignals();
  // The port first: where another simulator is serving, none of its files is touched.
  Server server(options.port);
  Tidier tidier;
  if (!options.keepsState && !options.inMemory) {
    tidier.removeAtTheEnd(options.stateFile);
  }
  StateStore store = options.inMemory ? StateStore() : StateStore(options.stateFile);
  if (options.writeCatalogue) {
    if (!options.keepsCatalogue) {
      tidier.removeAtTheEnd(options.catalogueFile);
    }
    writeCatalogue(options.catalogueFile, options.replaceCatalogue);
  }
  Faults faults(options.faults);
  const auto service =
      std::make_shared<HeadendService>(store, faults, options.absentInputs, options.startupTime);
  if (options.stamps) {
    stampLines();
  }
  say(std::string("headend-simulator: ready on ") + kControllerAddress + ":" +
      std::to_string(server.port()));
  if (options.readyDescriptor >= 0) {
    announce(options.readyDescriptor, server.port());
  }
  if (!server.serveUntilSignal(service, [&faults] { faults.endDelays(); })) {
    throw std::runtime_error("the port broke");
  }
}

int runProgram(int argc, char* argv[]) {
  // Drops the library's messages about broken connections; start-up errors are exceptions.
  apache::thrift::GlobalOutput.setOutputFunction([](const char*) {});
  Options options;
  try {
    options = parseOptions(argc, argv);
  } catch (const std::invalid_argument& error) {
    complain(error.what());
    std::cerr << "Try 'headend-simulator --help' for more information." << std::endl;
    return 1;
  }
  if (options.help) {
    std::cout << kHelpText;
    return 0;
  }
  if (options.version) {
    std::cout << "headend-simulator " SIMULATOR_VERSION "\n";
    return 0;
  }
  try {
    run(options);
  } catch (const std::exception& error) {
    complain(error.what());
    return 1;
  }
  return 0;
}

}  // namespace

}  // namespace lineup::simulator

int main(int argc, char* argv[]) {
  return lineup::simulator::runProgram(argc, argv);
}
