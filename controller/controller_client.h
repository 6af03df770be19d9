// How the console connects to ControllerTask (address and port: model/headend_places.h).

#pragma once

#include <chrono>

#include "WebSrv.h"
#include "controller/simple_client.h"
#include "model/namespaces.h"

namespace lineup {

using ControllerClient = korvel::thrift::utils::SimpleClient<hub_module::WebSrvClient>;

/// A client connected to this board's ControllerTask, for one call. Throws TTransportException if
/// ControllerTask cannot be reached within a second; each later wait is at most 20 seconds.
ControllerClient makeControllerClient();

/// The time that such a call gets once a signal is to end the program: a second to connect, one
/// wait each to send and to receive, and some more.
inline constexpr std::chrono::seconds kLongestCall{45};

}  // namespace lineup
