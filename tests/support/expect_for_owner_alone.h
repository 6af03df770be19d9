// Files that nobody else may read.

#pragma once

#include <gtest/gtest.h>

#include <filesystem>

namespace lineup::test {

/// Expects that the file's owner may read and write it, and nobody else anything.
inline void expectForOwnerAlone(const std::filesystem::path& file) {
  using std::filesystem::perms;
  EXPECT_EQ(std::filesystem::status(file).permissions(), perms::owner_read | perms::owner_write);
}

}  // namespace lineup::test
