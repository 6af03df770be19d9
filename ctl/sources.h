// Where configurations come from and go to.

#pragma once

#include <string>

#include "ctl/failure.h"
#include "hub_module_types.h"

namespace lineup::ctl {

/// Where the controller is, for messages: "127.0.0.1:9190".
std::string controllerPlace();

// Each throws Failure, with the file or the address in its message.

/// The configuration that the controller holds. A reply without a field that a configuration file
/// has to have is a failure.
korvel::thrift::hub_module::HeadendConfig runningConfig();

/// The RF inputs of the controller's status, the rest of which is left out. A reply without them is
/// a failure.
korvel::thrift::hub_module::HeadendStatus runningRFInputs();

/// A call that had no effect: the controller could not be reached, or refused it.
class Refused : public Failure {
 public:
  explicit Refused(const std::string& message) : Failure(kController, message) {}
};

/// A controller that could not be reached.
class Away : public Refused {
 public:
  using Refused::Refused;
};

/// Sends `config` to the controller. Any failure but Refused leaves open whether the controller has
/// taken it.
void send(const korvel::thrift::hub_module::HeadendConfig& config);

/// What messages call a file: "standard input" for "-".
std::string fileName(const std::string& path);

/// All that a file holds, "-" for standard input.
std::string textInFile(const std::string& path);

/// The configuration in a file, "-" for standard input.
korvel::thrift::hub_module::HeadendConfig configInFile(const std::string& path);

/// Whether a SOURCE is the controller.
bool isRunning(const std::string& source);

/// The configuration in a SOURCE: "running", a file, or "-" for standard input.
korvel::thrift::hub_module::HeadendConfig configIn(const std::string& source);

/// Puts a file at `path`, in place of the one that is there, with the ending signals blocked.
void writeFile(const std::string& path, const std::string& content);

/// Writes all of `text` on standard output.
void print(const std::string& text);

}  // namespace lineup::ctl
