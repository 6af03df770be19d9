#include "ctl/controller.h"

#include <exception>
#include <stdexcept>

#include "controller/controller_calls.h"
#include "model/headend_places.h"

namespace lineup::ctl {

namespace {

/// Makes one call over a connection of its own.
template <class Call>
void callController(Call call) {
  bool isConnected = false;
  try {
    ControllerClient client = makeControllerClient();
    isConnected = true;
    call(client);
  } catch (const hub_module::ControllerTaskIsNotReady& error) {
    throw NotSent(controllerPlace() + ": the controller is not ready" +
                  (error.reason.empty() ? "" : ": " + error.reason));
  } catch (const std::exception& error) {
    const std::string message = controllerPlace() + ": " + error.what();
    if (isConnected) {
      throw Failure(kController, message);
    }
    throw Unreachable(message);
  }
}

}  // namespace

std::string controllerPlace() {
  return std::string(kControllerAddress) + ":" + std::to_string(kControllerPort);
}

hub_module::HeadendConfig runningConfig() {
  hub_module::HeadendConfig config;
  callController([&](ControllerClient& client) { fetchCompleteConfig(client, config); });
  return config;
}

hub_module::HeadendStatus runningRFInputs() {
  hub_module::HeadendStatus status;
  callController([&](ControllerClient& client) {
    fetchRFInputs(client, status);
    if (!status.__isset.satRFInputs || !status.__isset.tdtRFInputs) {
      throw std::runtime_error("the reply has no RF inputs");
    }
  });
  return status;
}

void send(const hub_module::HeadendConfig& config) {
  callController([&](ControllerClient& client) { sendConfig(client, config); });
}

}  // namespace lineup::ctl
