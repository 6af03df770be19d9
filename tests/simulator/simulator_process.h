// Runs the built simulator on a port and files of its own, and calls it as a client does.

#pragma once

#include <csignal>
#include <memory>
#include <string>
#include <vector>

#include "WebSrv.h"
#include "tests/support/file_content.h"
#include "tests/support/program_process.h"
#include "tests/support/temporary_folder.h"

namespace lineup::test {

/// The path of the simulator that was built along with the tests.
extern const char* const kSimulatorProgram;

/// A connection to the simulator and the generated client on it, without limits of size.
class Connection {
 public:
  explicit Connection(int port);

  korvel::thrift::hub_module::WebSrvClient* operator->() { return client_.get(); }

 private:
  std::unique_ptr<korvel::thrift::hub_module::WebSrvClient> client_;
};

/// A running simulator with its files in `folder`: "state.json" and "catalogue.sqlite".
class SimulatorProcess {
 public:
  /// Starts it and waits until it is ready. `port` 0 is any free port. Throws std::runtime_error if
  /// it ends instead.
  explicit SimulatorProcess(const TemporaryFolder& folder, std::vector<std::string> options = {},
                            int port = 0);

  int port() const { return port_; }
  /// A new connection; one call each is usual.
  Connection connect() const { return Connection(port_); }
  /// The next line that it prints.
  std::string nextLine();
  void signal(int number) const { process_.signal(number); }
  /// Waits for its end, as after a signal.
  Outcome finish() { return process_.finish(); }
  /// Ends it as a service manager does.
  Outcome end() {
    signal(SIGTERM);
    return finish();
  }

 private:
  ProgramProcess process_;
  int port_ = 0;
};

/// Runs a simulator that is to end by itself.
Outcome runSimulator(const std::vector<std::string>& arguments);

}  // namespace lineup::test
