#include "catalogue/sqlite_memory.h"

#include <sqlite3.h>

#include <cstddef>

namespace korveldb {

namespace {

sqlite3_mem_methods heap;  // SQLite's own
int64_t held = 0;
int64_t limit = 0;

/// What a block takes, with what the C library keeps in front of it.
int64_t sizeOf(void* block) {
  return heap.xSize(block) + static_cast<int64_t>(sizeof(std::size_t));
}

void* allocate(int size) {
  void* const block = held + size <= limit ? heap.xMalloc(size) : nullptr;
  held += block != nullptr ? sizeOf(block) : 0;
  return block;
}

void release(void* block) {
  held -= sizeOf(block);
  heap.xFree(block);
}

void* resize(void* block, int size) {
  const int64_t before = sizeOf(block);
  void* const resized = held - before + size <= limit ? heap.xRealloc(block, size) : nullptr;
  held += resized != nullptr ? sizeOf(resized) - before : 0;
  return resized;
}

// SQLite has a limit of its own, but only together with statistics and locks, which make the
// listing of a big catalogue a fifth slower.
void prepareSqlite() {
  sqlite3_config(SQLITE_CONFIG_SINGLETHREAD);
  sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
  sqlite3_config(SQLITE_CONFIG_GETMALLOC, &heap);
  sqlite3_mem_methods limited = heap;
  limited.xMalloc = allocate;
  limited.xFree = release;
  limited.xRealloc = resize;
  sqlite3_config(SQLITE_CONFIG_MALLOC, &limited);
}

}  // namespace

void limitSqliteMemory(int64_t bytes) {
  [[maybe_unused]] static const bool prepared = (prepareSqlite(), true);
  limit = bytes;
}

int64_t sqliteMemoryLimit() {
  return limit;
}

}  // namespace korveldb
