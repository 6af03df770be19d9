// How much memory SQLite may take.

#pragma once

#include <cstdint>

namespace korveldb {

/// Lets SQLite hold at most `bytes` from now on: what would need more fails with SQLITE_NOMEM. Also
/// prepares SQLite, at the first call, for a program that uses it in one thread. Has no effect in a
/// process that opened a connection before.
void limitSqliteMemory(int64_t bytes);

/// The limit set last.
int64_t sqliteMemoryLimit();

}  // namespace korveldb
