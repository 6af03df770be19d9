// The calls of lineupctl to the controller.

#pragma once

#include <string>

#include "ctl/failure.h"
#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup::ctl {

/// Where the controller is, for messages: "127.0.0.1:9190".
std::string controllerPlace();

// Each throws Failure, with the address in its message.

/// The configuration that the controller holds. A reply without a field that a configuration file
/// has to have is a failure.
hub_module::HeadendConfig runningConfig();

/// The RF inputs of the controller's status, the rest of which is left out. A reply without them is
/// a failure.
hub_module::HeadendStatus runningRFInputs();

/// A call that had no effect: the controller could not be reached, or refused it.
class NotSent : public Failure {
 public:
  explicit NotSent(const std::string& message) : Failure(kController, message) {}
};

/// A controller that could not be reached.
class Unreachable : public NotSent {
 public:
  using NotSent::NotSent;
};

/// Sends `config` to the controller. Any failure but NotSent leaves open whether the controller has
/// taken it.
void send(const hub_module::HeadendConfig& config);

}  // namespace lineup::ctl
