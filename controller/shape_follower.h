// Following a record in its shape while it is read.

#pragma once

#include <thrift/protocol/TProtocol.h>

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "model/config_shape.h"

namespace lineup {

/// Knows what is being read, and which fields have been. A protocol tells it what it reads.
class ShapeFollower {
 public:
  /// A record or container that is being read.
  struct Open {
    const ValueShape* shape;
    const FieldShape* field = nullptr;  ///< of a record, the one that is being read
    std::bitset<64> seen{};             ///< of a record, the ids of the fields read so far
    bool keyIsNext = false;             ///< of a map, for the protocol
    std::set<std::string> keys{};       ///< likewise
  };

  /// `shape` has to outlive this.
  explicit ShapeFollower(const ValueShape& shape) : next_(&shape) {}

  /// The shape of the value that is read next.
  const ValueShape& next() const { return *next_; }

  /// The innermost record or container that is being read.
  Open& innermost() { return open_.back(); }

  void openRecord() { open_.push_back({next_}); }

  /// The field of the record, which is read next; null, and none is, if the record has none of this
  /// id.
  const FieldShape* openField(int16_t id) {
    Open& record = open_.back();
    const auto found = record.shape->fields.find(id);
    record.field = found == record.shape->fields.end() ? nullptr : &found->second;
    if (record.field != nullptr) {
      next_ = &record.field->value;
    }
    return record.field;
  }

  /// The record has no further field.
  void closeField() { open_.back().field = nullptr; }

  /// Notes that the record has the field that is being read. False if it had it before.
  bool noteField() {
    Open& record = open_.back();
    const auto id = static_cast<std::size_t>(record.field->id);
    const bool isFirst = !record.seen.test(id);
    record.seen.set(id);
    return isFirst;
  }

  /// "/a/b lacks the field "c"" of the first field that the record has to have and does not; empty
  /// if it has them all.
  std::string lackedField() const {
    const Open& record = open_.back();
    for (const auto& [id, field] : record.shape->fields) {
      if (!field.isOptional && !record.seen.test(static_cast<std::size_t>(id))) {
        return place() + "lacks the field \"" + field.name + "\"";
      }
    }
    return "";
  }

  void openContainer() {
    open_.push_back({next_});
    next_ = next_->element.get();
  }

  /// The record or container has been read.
  void close() {
    open_.pop_back();
    if (!open_.empty() && open_.back().shape->element != nullptr) {
      next_ = open_.back().shape->element.get();
    }
  }

  bool isAtEnd() const { return open_.empty(); }

  /// The names of the fields that lead to what is being read, each after a slash, and a blank after
  /// them; empty if there are none.
  std::string place() const {
    std::string place;
    for (const Open& open : open_) {
      place += open.field == nullptr ? "" : "/" + open.field->name;
    }
    return place.empty() ? place : place + " ";
  }

 private:
  std::vector<Open> open_;
  const ValueShape* next_;
};

}  // namespace lineup
