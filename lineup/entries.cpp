#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "model/lineup_editor.h"
#include "model/services.h"

namespace lineup {

namespace {

using hub_module::LineupEntryKind;

/// Stores `service` under the smallest free key and returns the key.
template <class Service>
int32_t storeUnderFreeKey(LineupEditor& editor, std::map<int32_t, Service>& services,
                          std::type_identity_t<Service> service) {
  const int32_t key = LineupEditor::allocateServiceKey(services);
  services[key] = std::move(service);  // its lists can be long
  editor.pendingChanges = true;
  return key;
}

template <class Entry>
void appendEntry(const LineupEditor& editor, std::vector<Entry>& entries, int32_t key,
                 LineupEntryKind::type kind) {
  Entry& entry = entries.emplace_back();
  entry.serviceKey = key;
  entry.serviceKind = kind;
  editor.entryName(entry);
}

/// The name of an entry for the service, empty if there is no such service.
std::string nameOfEntry(const hub_module::LineupConfig& lineup, int32_t key,
                        LineupEntryKind::type kind) {
  std::string name;
  visitService(lineup, kind, key, [&](const auto& service) { name = serviceName(service); });
  return name;
}

/// The first slot of the RF lineup reserved for services of `serviceType`, or null.
hub_module::LineupRFEntryConfig* firstReservedSlot(LineupEditor& editor, int32_t serviceType) {
  // Most lineups reserve nothing: without a reservation of the type only an EMPTY entry whose
  // reservation is missing, which counts as type 0, can match. Walking the lineup at each addition
  // would make a long script slow.
  const auto& reservations = editor.config.lineupConfig.emptyInputServices;
  if (serviceType != 0 &&
      std::none_of(reservations.begin(), reservations.end(), [serviceType](const auto& reserved) {
        return reserved.second.service.serviceType == serviceType;
      })) {
    return nullptr;
  }
  auto& entries = editor.config.lineupConfig.rfEntries;
  const auto slot = std::find_if(entries.begin(), entries.end(), [&](const auto& entry) {
    return entry.serviceKind == LineupEntryKind::EMPTY &&
           editor.entryServiceType(entry.serviceKey, LineupEntryKind::EMPTY) == serviceType;
  });
  return slot == entries.end() ? nullptr : &*slot;
}

}  // namespace

int32_t LineupEditor::storeDVBService(hub_module::DVBInputServiceConfig service) {
  return storeUnderFreeKey(*this, config.lineupConfig.dvbInputServices, std::move(service));
}

int32_t LineupEditor::addEncService(const hub_module::ENCInputServiceConfig& enc) {
  return storeUnderFreeKey(*this, config.lineupConfig.encInputServices, enc);
}

int32_t LineupEditor::addEmptyService(int32_t serviceType) {
  hub_module::EmptyInputServiceConfig empty;
  empty.service.serviceType = serviceType;
  return storeUnderFreeKey(*this, config.lineupConfig.emptyInputServices, std::move(empty));
}

int32_t LineupEditor::entryServiceType(int32_t key, LineupEntryKind::type kind) const {
  int32_t type = kind == LineupEntryKind::ENC ? 1 : 0;  // where there is no such service
  visitService(config.lineupConfig, kind, key,
               [&](const auto& service) { type = serviceType(service); });
  return type;
}

void LineupEditor::entryName(hub_module::LineupRFEntryConfig& entry) const {
  entry.name = nameOfEntry(config.lineupConfig, entry.serviceKey, entry.serviceKind);
}

void LineupEditor::entryName(hub_module::LineupIPEntryConfig& entry) const {
  entry.name = nameOfEntry(config.lineupConfig, entry.serviceKey, entry.serviceKind);
}

void LineupEditor::addIPEntry(int32_t key, LineupEntryKind::type kind) {
  appendEntry(*this, config.lineupConfig.ipEntries, key, kind);
  pendingChanges = true;
}

void LineupEditor::addRFEntry(int32_t key, LineupEntryKind::type kind) {
  pendingChanges = true;
  if (kind != LineupEntryKind::EMPTY) {
    if (auto* slot = firstReservedSlot(*this, entryServiceType(key, kind))) {
      config.lineupConfig.emptyInputServices.erase(slot->serviceKey);
      slot->serviceKey = key;
      slot->serviceKind = kind;
      return;
    }
  }
  appendEntry(*this, config.lineupConfig.rfEntries, key, kind);
}

void LineupEditor::clearLineup() {
  auto& lineup = config.lineupConfig;
  if (lineup.ipEntries.empty() && lineup.rfEntries.empty() && lineup.dvbInputServices.empty() &&
      lineup.encInputServices.empty()) {
    return;
  }
  lineup.ipEntries.clear();
  lineup.rfEntries.clear();
  lineup.dvbInputServices.clear();
  lineup.encInputServices.clear();
  pendingChanges = true;
}

}  // namespace lineup
