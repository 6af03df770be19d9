// How the console reaches ControllerTask. Nothing else knows address, port and time-outs.

#pragma once

#include "WebSrv.h"
#include "controller/simple_client.h"

namespace lineup {

using ControllerClient =
    korvel::thrift::utils::SimpleClient<korvel::thrift::hub_module::WebSrvClient>;

/// A client connected to this board's ControllerTask, for one call. Throws TTransportException if
/// ControllerTask cannot be reached within a second; each later wait is at most 20 seconds.
ControllerClient makeControllerClient();

}  // namespace lineup
