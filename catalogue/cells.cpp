#include "catalogue/cells.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace korveldb {

tSqlite3parent::tSqlite3parent(const char* text, std::pmr::memory_resource* memory)
    : value(nullptr), memory_(memory) {
  if (text != nullptr) {
    const std::size_t size = std::strlen(text) + 1;
    value = static_cast<char*>(memory->allocate(size, 1));
    std::memcpy(value, text, size);
  }
}

tSqlite3parent::~tSqlite3parent() {
  if (value != nullptr) {
    memory_->deallocate(value, std::strlen(value) + 1, 1);
  }
}

std::string tSqlite3parent::asString() const {
  return value != nullptr ? value : "";
}

int32_t tSqlite3int::asInt() const {
  return value != nullptr ? static_cast<int32_t>(std::strtol(value, nullptr, 10)) : 0;
}

}  // namespace korveldb
