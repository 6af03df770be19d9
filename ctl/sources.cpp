#include "ctl/sources.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "controller/config_calls.h"
#include "controller/whole_config_file.h"
#include "model/headend_places.h"
#include "support/blocked_signals.h"
#include "support/descriptor.h"
#include "support/replace_file.h"

namespace lineup::ctl {

namespace hub_module = korvel::thrift::hub_module;

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
    throw Refused(controllerPlace() + ": the controller is not ready" +
                  (error.reason.empty() ? "" : ": " + error.reason));
  } catch (const std::exception& error) {
    const std::string message = controllerPlace() + ": " + error.what();
    if (isConnected) {
      throw Failure(kController, message);
    }
    throw Refused(message);
  }
}

}  // namespace

std::string controllerPlace() {
  return std::string(kControllerAddress) + ":" + std::to_string(kControllerPort);
}

hub_module::HeadendConfig runningConfig() {
  hub_module::HeadendConfig config;
  callController([&](ControllerClient& client) {
    fetchConfig(client, config);
    const auto& has = config.__isset;
    if (!has.lineupConfig || !has.headendGlobalConfig || !has.installerInfo ||
        !has.rfInputsScanConfig || !has.ipInputs) {
      throw std::runtime_error("the reply is no complete configuration");
    }
  });
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

hub_module::HeadendConfig configInFile(const std::string& path) {
  try {
    return readWholeConfigFile(path);
  } catch (const std::runtime_error& error) {
    throw Failure(kFile, (path == "-" ? "standard input" : path) + ": " + error.what());
  }
}

bool isRunning(const std::string& source) {
  return source == "running";
}

hub_module::HeadendConfig configIn(const std::string& source) {
  return isRunning(source) ? runningConfig() : configInFile(source);
}

void writeFile(const std::string& path, const std::string& content) {
  const BlockedEndingSignals uninterrupted;
  try {
    replaceFile(path, content);
  } catch (const std::runtime_error& error) {
    throw Failure(kFile, path + ": " + error.what());
  }
}

void print(const std::string& text) {
  if (!writeAll(STDOUT_FILENO, text)) {
    throw Failure(kFile, std::string("standard output: ") + std::strerror(errno));
  }
}

}  // namespace lineup::ctl
