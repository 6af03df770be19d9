// Where the Thrift library's own messages go.

#pragma once

namespace lineup {

/// Redirects what the library would print on standard error, such as the reason why a connection
/// failed, to the log as errors of the module "thrift". Call it after log_setup().
void routeThriftOutputToLog();

}  // namespace lineup
