// The cells of a catalogue row: text as SQLite delivered it.

#pragma once

#include <cstdint>
#include <memory>
#include <memory_resource>
#include <string>

namespace korveldb {

/// One cell of any column. Owns a copy of the cell's text, or nothing for an SQL NULL.
class tSqlite3parent {
 public:
  /// Copies `text`, null for an SQL NULL, into `memory`, which has to outlive the cell.
  explicit tSqlite3parent(const char* text,
                          std::pmr::memory_resource* memory = std::pmr::get_default_resource());
  /// A copy's text lies on the heap.
  tSqlite3parent(const tSqlite3parent& other) : tSqlite3parent(other.value) {}
  tSqlite3parent& operator=(const tSqlite3parent&) = delete;
  virtual ~tSqlite3parent();

  /// The text; empty for an SQL NULL.
  virtual std::string asString() const;

 protected:
  char* value;  // terminated; null for an SQL NULL

 private:
  std::pmr::memory_resource* memory_;
};

/// One cell of an integer column. Its text need not be a number.
class tSqlite3int : public tSqlite3parent {
 public:
  using tSqlite3parent::tSqlite3parent;

  /// The number that the text begins with, cut to 32 bits; 0 for an SQL NULL or without a number.
  int32_t asInt() const;
};

/// Deleter: runs the destructor only, the memory resource of the row list frees the memory.
struct tEndCell {
  void operator()(tSqlite3parent* cell) const { cell->~tSqlite3parent(); }
};

/// A cell of a row.
using tCell = std::unique_ptr<tSqlite3parent, tEndCell>;

}  // namespace korveldb
