#include "tests/support/sandbox.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

namespace lineup::test {

void enterSandbox(char** argv) {
  const char* const way = std::getenv("HEADEND_SANDBOX");
  if (way != nullptr && std::strcmp(way, "inside") == 0) {
    return;
  }
  std::string sandbox = HEADEND_SANDBOX_PROGRAM;
  std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
  std::vector<char*> command = {sandbox.data(), self.data()};
  for (char** argument = argv + 1; *argument != nullptr; ++argument) {
    command.push_back(*argument);
  }
  command.push_back(nullptr);
  execv(sandbox.c_str(), command.data());
  std::cerr << sandbox << ": " << std::strerror(errno) << std::endl;
  std::exit(125);
}

}  // namespace lineup::test
