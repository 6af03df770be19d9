// Entries of the RF and IP lineups.

#pragma once

#include <cstdint>
#include <string>

#include "hub_module_types.h"

namespace lineup::test {

template <class Entry>
Entry lineupEntry(int32_t key, korvel::thrift::hub_module::LineupEntryKind::type kind,
                  const std::string& name) {
  Entry entry;
  entry.serviceKey = key;
  entry.serviceKind = kind;
  entry.name = name;
  return entry;
}

inline constexpr auto rfEntry = lineupEntry<korvel::thrift::hub_module::LineupRFEntryConfig>;
inline constexpr auto ipEntry = lineupEntry<korvel::thrift::hub_module::LineupIPEntryConfig>;

}  // namespace lineup::test
