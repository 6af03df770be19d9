#include "compare/service_matches.h"

#include <string>
#include <vector>

#include "model/services.h"
#include "print/service_words.h"

namespace lineup {

using hub_module::LineupConfig;
using hub_module::LineupEntryKind;

namespace {

std::string identityOf(const hub_module::DVBInputServiceConfig& config) {
  const hub_module::DVBInputService& service = config.service;
  std::string identity = std::to_string(service.inputType) + ' ' + std::to_string(service.sid);
  visitMuxes(service, [&](const InputType& type, auto mux, auto /*setMux*/) {
    identity += std::string(" ") + type.name + ' ' + muxPlace(service.*mux);
  });
  return identity;
}

std::string identityOf(const hub_module::ENCInputServiceConfig& config) {
  return std::to_string(config.address.slot) + '/' + std::to_string(config.address.port);
}

std::string identityOf(const hub_module::EmptyInputServiceConfig& config) {
  return std::to_string(config.service.serviceType);
}

/// Services under the same key first, then the others by their identity, in the order of their
/// keys.
template <class Service>
SameServices sameServices(const std::map<int32_t, Service>& from,
                          const std::map<int32_t, Service>& to) {
  SameServices same;
  for (const auto& [key, before] : from) {
    const auto now = to.find(key);
    if (now != to.end() &&
        (before == now->second || identityOf(before) == identityOf(now->second))) {
      same.add(key, key);
    }
  }
  std::map<std::string, std::vector<int32_t>> others;  // their keys by identity, the smallest last
  for (auto now = to.rbegin(); now != to.rend(); ++now) {
    if (!same.beforeByNow.contains(now->first)) {
      others[identityOf(now->second)].push_back(now->first);
    }
  }
  for (const auto& [key, before] : from) {
    if (same.nowByBefore.contains(key)) {
      continue;
    }
    const auto found = others.find(identityOf(before));
    if (found != others.end() && !found->second.empty()) {
      same.add(key, found->second.back());
      found->second.pop_back();
    }
  }
  return same;
}

template <class Service>
void addDuplicated(int32_t kind, const std::map<int32_t, Service>& services,
                   std::set<ServiceReference>& duplicated) {
  std::map<std::string, int32_t> firstByIdentity;
  for (const auto& [key, service] : services) {
    const auto [first, isNew] = firstByIdentity.emplace(identityOf(service), key);
    if (!isNew) {
      duplicated.insert({{kind, first->second}, {kind, key}});
    }
  }
}

}  // namespace

ServiceMatches matchServices(const LineupConfig& from, const LineupConfig& to) {
  return {{LineupEntryKind::DVB, sameServices(from.dvbInputServices, to.dvbInputServices)},
          {LineupEntryKind::ENC, sameServices(from.encInputServices, to.encInputServices)},
          {LineupEntryKind::EMPTY, sameServices(from.emptyInputServices, to.emptyInputServices)}};
}

std::set<ServiceReference> duplicatedServices(const LineupConfig& lineup) {
  std::set<ServiceReference> duplicated;
  addDuplicated(LineupEntryKind::DVB, lineup.dvbInputServices, duplicated);
  addDuplicated(LineupEntryKind::ENC, lineup.encInputServices, duplicated);
  addDuplicated(LineupEntryKind::EMPTY, lineup.emptyInputServices, duplicated);
  return duplicated;
}

}  // namespace lineup
