// How much memory the program may take.

#pragma once

namespace lineup {

/// Limits the memory that the process allocates (RLIMIT_DATA) to half of the machine's, unless a
/// lower limit is in force: beyond it allocations fail, std::bad_alloc in our own code,
/// SQLITE_NOMEM in SQLite, instead of a machine that runs out of memory. Does nothing in a build
/// with AddressSanitizer, whose shadow memory counts as allocated.
void limitMemory();

}  // namespace lineup
