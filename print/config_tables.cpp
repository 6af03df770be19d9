#include "print/config_tables.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "print/service_words.h"
#include "print/setting_words.h"

namespace lineup {

using hub_module::HeadendConfig;

namespace {

/// A number if the field is set.
std::string ifSet(bool isSet, int32_t number) {
  return isSet ? std::to_string(number) : "";
}

template <class Entry>
TextTable lineupTable(const HeadendConfig& config, const std::vector<Entry>& entries) {
  TextTable table{{"position", "name", "kind", "source", "SID", "type"}};
  table.rows.reserve(entries.size());
  for (const Entry& entry : entries) {
    ServiceWords words = entryWords(config, entry.serviceKind, entry.serviceKey);
    table.rows.push_back(rowOf(std::to_string(table.rows.size() + 1), entry.name,
                               std::move(words.kind), std::move(words.source), std::move(words.sid),
                               std::move(words.serviceType)));
  }
  return table;
}

/// The name that the prompt's "rfinput" takes.
std::string inputName(general::RFInputId::type id) {
  const auto found = general::_RFInputId_VALUES_TO_NAMES.find(id);
  return found == general::_RFInputId_VALUES_TO_NAMES.end() ? std::to_string(id) : found->second;
}

template <class Inputs>
void addInputs(TextTable& table, const Inputs& inputs) {
  for (const auto& [id, input] : inputs) {
    table.rows.push_back({inputName(id), input.config.enabled ? "enabled" : "disabled",
                          input.locked ? "yes" : "no"});
  }
}

}  // namespace

TextTable settingsTable(const HeadendConfig& config) {
  TextTable table{{"setting", "value"}};
  for (const Setting& setting : kSettings) {
    table.rows.push_back({std::string(setting.command), settingWord(setting, config)});
  }
  return table;
}

TextTable rfLineupTable(const HeadendConfig& config) {
  return lineupTable(config, config.lineupConfig.rfEntries);
}

TextTable ipLineupTable(const HeadendConfig& config) {
  return lineupTable(config, config.lineupConfig.ipEntries);
}

TextTable reservedSlotsTable(const HeadendConfig& config) {
  std::map<int32_t, std::size_t> positions;
  std::size_t position = 0;
  for (const auto& entry : config.lineupConfig.rfEntries) {
    ++position;
    if (entry.serviceKind == hub_module::LineupEntryKind::EMPTY) {
      positions.emplace(entry.serviceKey, position);
    }
  }
  TextTable table{{"slot", "type", "position"}};
  for (const auto& [key, reserved] : config.lineupConfig.emptyInputServices) {
    const auto found = positions.find(key);
    table.rows.push_back({std::to_string(key), std::to_string(reserved.service.serviceType),
                          found == positions.end() ? "" : std::to_string(found->second)});
  }
  return table;
}

TextTable ipInputsTable(const HeadendConfig& config) {
  TextTable table{{"input", "slot", "interface", "address", "mux", "URL", "name"}};
  for (const auto& [name, input] : config.ipInputs) {
    const std::vector<std::string> row = {name, ifSet(input.__isset.slot, input.slot),
                                          ifSet(input.__isset.interfaceId, input.interfaceId),
                                          input.address};
    if (input.muxes.empty()) {
      table.rows.push_back({row[0], row[1], row[2], row[3], "", "", ""});
    }
    for (const auto& [uuid, mux] : input.muxes) {
      table.rows.push_back({row[0], row[1], row[2], row[3], uuid, mux.url, mux.name});
    }
  }
  return table;
}

TextTable rfInputsTable(const hub_module::HeadendStatus& status) {
  TextTable table{{"input", "state", "locked"}};
  addInputs(table, status.tdtRFInputs);
  addInputs(table, status.satRFInputs);
  return table;
}

TextTable scanTable(const HeadendConfig& config) {
  TextTable table{{"item", "PLS type", "PLS code"}};
  for (const hub_module::PLSItem& item : config.rfInputsScanConfig.plsItemList) {
    table.rows.push_back({std::to_string(table.rows.size() + 1), plsTypeWord(item.plsType),
                          std::to_string(item.plsCode)});
  }
  return table;
}

}  // namespace lineup
