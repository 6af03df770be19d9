#include "controller/config_file.h"
#include "ctl/commands.h"
#include "ctl/controller.h"
#include "ctl/files.h"

namespace lineup::ctl {

Status save(const Arguments& arguments) {
  if (arguments.operands()[0] == "-") {
    throw Failure(kUsage, "save: \"-\" is no file; one of that name is \"./-\"");
  }
  writeFile(arguments.operands()[0], configFileContent(runningConfig()));
  return kDone;
}

}  // namespace lineup::ctl
