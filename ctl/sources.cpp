#include "ctl/sources.h"

#include "ctl/controller.h"
#include "ctl/files.h"

namespace lineup::ctl {

bool isController(const std::string& source) {
  return source == kRunning;
}

hub_module::HeadendConfig configIn(const std::string& source) {
  return isController(source) ? runningConfig() : configInFile(source);
}

}  // namespace lineup::ctl
