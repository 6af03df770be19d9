// Where the Thrift library's own messages go.

#pragma once

namespace lineup {

/// Sends what the library would print on standard error, such as the reason why a connection
/// failed, to the log as errors of the module "thrift". Call it once logging is set up.
void routeThriftOutputToLog();

}  // namespace lineup
