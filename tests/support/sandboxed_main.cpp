// main() for tests that serve on the controller's port or write the catalogue: each test process
// does so in a sandbox of its own.

#include <gtest/gtest.h>

#include <string_view>

#include "tests/support/sandbox.h"

namespace {

/// Naming the tests, as CTest asks for, runs none: it needs no sandbox and waits for nobody's.
bool runsTests(int argc, char** argv) {
  for (int index = 1; index < argc; ++index) {
    const std::string_view argument = argv[index];
    if (argument == "--gtest_list_tests" || argument == "--help") {
      return false;
    }
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (runsTests(argc, argv)) {
    lineup::test::enterSandbox(argv);
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
