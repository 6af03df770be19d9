#include "support/descriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cstddef>

#include "tests/support/file_content.h"

namespace lineup::test {
namespace {

TEST(Descriptor, ThatNothingTakesOverIsClosed) {
  const std::size_t before = openDescriptors();
  { const Descriptor descriptor(open("/dev/null", O_RDONLY | O_CLOEXEC)); }
  EXPECT_EQ(openDescriptors(), before);
}

}  // namespace
}  // namespace lineup::test
