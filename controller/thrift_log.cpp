#include "controller/thrift_log.h"

#include <thrift/Thrift.h>

#include "support/log.h"

namespace lineup {

void routeThriftOutputToLog() {
  apache::thrift::GlobalOutput.setOutputFunction(
      [](const char* message) { log_function(LOG_LEVEL_ERROR, "thrift", "%s", message); });
}

}  // namespace lineup
