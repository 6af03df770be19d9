#include "compare/lineup_difference.h"

#include <algorithm>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "compare/described_service.h"
#include "compare/difference_lines.h"
#include "compare/lineup_services.h"
#include "compare/printed_text.h"
#include "model/input_types.h"
#include "model/service_name.h"

namespace lineup {

namespace hub_module = korvel::thrift::hub_module;
using hub_module::HeadendConfig;
using hub_module::LineupEntryKind;

namespace {

// ---- which service of one configuration is which of the other

// What makes a service the same one, whatever its key and its other fields.

template <class Mux>
std::string muxIdentity(const Mux& mux) {
  return std::to_string(mux.frequency);
}

std::string muxIdentity(const std::string& uuid) {
  return uuid;
}

std::string identityOf(const hub_module::DVBInputServiceConfig& config) {
  const hub_module::DVBInputService& service = config.service;
  std::string identity = std::to_string(service.inputType) + ' ' + std::to_string(service.sid);
  visitMuxes(service, [&](const InputType& type, auto mux, auto /*setMux*/) {
    identity += std::string(" ") + type.name + ' ' + muxIdentity(service.*mux);
  });
  return identity;
}

std::string identityOf(const hub_module::ENCInputServiceConfig& config) {
  return std::to_string(config.address.slot) + '/' + std::to_string(config.address.port);
}

std::string identityOf(const hub_module::EmptyInputServiceConfig& config) {
  return std::to_string(config.service.serviceType);
}

/// The services that both configurations have: their keys in each, by those in the other.
struct SameServices {
  std::map<int32_t, int32_t> nowByBefore;
  std::map<int32_t, int32_t> beforeByNow;

  void add(int32_t before, int32_t now) {
    nowByBefore.emplace(before, now);
    beforeByNow.emplace(now, before);
  }
};

/// Services under the same key first, then the others by their identity, in the order of their
/// keys.
template <class Service>
SameServices matchServices(const std::map<int32_t, Service>& from,
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

// ---- what an entry names

enum class Presence { Both, Before, Now, Missing };

/// The service that an entry names: its kind, and its key in the newer configuration if it is
/// there. Entries that name the same one are counted.
struct Named {
  int32_t kind;
  Presence presence;
  int32_t key;
  std::size_t count;

  auto operator<=>(const Named&) const = default;  // NOLINT(modernize-use-nullptr): no pointer
};

const char* kindWord(int32_t kind) {
  return kind == LineupEntryKind::DVB ? "DVB" : kind == LineupEntryKind::ENC ? "ENC" : "EMPTY";
}

/// The keys of the services that are the same as another one of their configuration.
template <class Service>
std::set<int32_t> servicesWithALike(const std::map<int32_t, Service>& services) {
  std::map<std::string, int32_t> firstByIdentity;
  std::set<int32_t> alike;
  for (const auto& [key, service] : services) {
    const auto [first, isNew] = firstByIdentity.emplace(identityOf(service), key);
    if (!isNew) {
      alike.insert({first->second, key});
    }
  }
  return alike;
}

/// How many muxes of the IP inputs have each URL.
std::map<std::string, std::size_t> muxesByUrl(const HeadendConfig& config) {
  std::map<std::string, std::size_t> counts;
  for (const auto& [key, input] : config.ipInputs) {
    for (const auto& [uuid, mux] : input.muxes) {
      ++counts[mux.url];
    }
  }
  return counts;
}

/// Compares two configurations; the text grows with each difference.
class LineupComparison {
 public:
  LineupComparison(const HeadendConfig& from, const HeadendConfig& to)
      : from_(from),
        to_(to),
        dvb_(matchServices(from.lineupConfig.dvbInputServices, to.lineupConfig.dvbInputServices)),
        enc_(matchServices(from.lineupConfig.encInputServices, to.lineupConfig.encInputServices)),
        empty_(matchServices(from.lineupConfig.emptyInputServices,
                             to.lineupConfig.emptyInputServices)),
        alike_{{LineupEntryKind::DVB, servicesWithALike(to.lineupConfig.dvbInputServices)},
               {LineupEntryKind::ENC, servicesWithALike(to.lineupConfig.encInputServices)},
               {LineupEntryKind::EMPTY, servicesWithALike(to.lineupConfig.emptyInputServices)}},
        muxesByUrl_(muxesByUrl(to)) {}

  std::string text() {
    const hub_module::LineupConfig& before = from_.lineupConfig;
    const hub_module::LineupConfig& now = to_.lineupConfig;
    compareEntries("RF lineup: ", before.rfEntries, now.rfEntries);
    compareEntries("IP lineup: ", before.ipEntries, now.ipEntries);
    compareServices(LineupEntryKind::DVB, before.dvbInputServices, now.dvbInputServices, dvb_);
    compareServices(LineupEntryKind::ENC, before.encInputServices, now.encInputServices, enc_);
    compareServices(LineupEntryKind::EMPTY, before.emptyInputServices, now.emptyInputServices,
                    empty_);
    return std::move(text_);
  }

 private:
  // ---- entries

  template <class Entry>
  void compareEntries(const char* lineup, const std::vector<Entry>& from,
                      const std::vector<Entry>& to) {
    noteNamed(from, namedBefore_);
    noteNamed(to, namedNow_);
    const std::vector<Named> before = namedBy(from, from_, Presence::Before);
    const std::vector<Named> now = namedBy(to, to_, Presence::Now);
    const std::vector<std::optional<std::size_t>> places = placesIn(now, before);
    const std::vector<bool> stays = longestRising(places);
    for (std::size_t index = 0; index < from.size(); ++index) {
      if (!places[index]) {
        say(lineup, "removed from " + std::to_string(index + 1), from_, from[index]);
      }
    }
    std::vector<bool> isNew(to.size(), true);
    for (std::size_t index = 0; index < from.size(); ++index) {
      if (const auto place = places[index]) {
        isNew[*place] = false;
        if (!stays[index]) {
          say(lineup,
              "moved from " + std::to_string(index + 1) + " to " + std::to_string(*place + 1), to_,
              to[*place]);
        }
        compareFields(lineup, *place, from[index], to[*place]);
      }
    }
    for (std::size_t index = 0; index < to.size(); ++index) {
      if (isNew[index]) {
        const bool replaces = index < from.size() && !places[index];
        sayNew(lineup, index, to[index], replaces ? &from[index] : nullptr);
      }
    }
  }

  template <class Entry>
  void say(const char* lineup, const std::string& what, const HeadendConfig& config,
           const Entry& entry, const std::string& more = "") {
    const ServiceWords words = entryWords(config, entry.serviceKind, entry.serviceKey);
    text_ += lineup + what + ": " + described(words, entry.name) + more + "\n";
  }

  /// Adds the line of a new entry. `replaced` is the removed one at its position, or null.
  template <class Entry>
  void sayNew(const char* lineup, std::size_t place, const Entry& entry, const Entry* replaced) {
    const std::pair<int32_t, int32_t> service(entry.serviceKind, entry.serviceKey);
    const auto alike = alike_.find(service.first);
    const bool hasALike = alike != alike_.end() && alike->second.contains(service.second);
    const auto& dvb = to_.lineupConfig.dvbInputServices;
    const auto named = dvb.find(entry.serviceKey);
    if (service.first == LineupEntryKind::DVB && named != dvb.end() &&
        serviceName(named->second) == entry.name) {
      saysName_.insert(service);
    }
    say(lineup, "added at " + std::to_string(place + 1), to_, entry,
        (hasALike ? ", " + numbered(service.first, service.second) : "") + moreOf(entry, replaced));
  }

  /// The fields of a new entry that are not as the record has them by default, or as `replaced`
  /// has them.
  template <class Entry>
  static std::string moreOf(const Entry& entry, const Entry* replaced) {
    const auto withService = [&](Entry other) {
      other.name = entry.name;
      other.serviceKey = entry.serviceKey;
      other.serviceKind = entry.serviceKind;
      return other;
    };
    const Entry expected = withService(Entry());
    if (replaced == nullptr) {
      return entry == expected ? "" : otherFields(expected, entry);
    }
    const Entry before = withService(*replaced);
    return entry == expected && entry == before ? "" : otherFields(expected, &before, entry);
  }

  /// What differs besides the service.
  template <class Entry>
  void compareFields(const char* lineup, std::size_t place, Entry from, const Entry& to) {
    from.serviceKey = to.serviceKey;
    from.serviceKind = to.serviceKind;
    if (from == to) {
      return;
    }
    const std::string where =
        lineup + ("changed at " + std::to_string(place + 1)) + ", " + inQuotes(to.name) + ": ";
    text_ += fieldDifferences(where, from, to);
  }

  template <class Entry>
  static void noteNamed(const std::vector<Entry>& entries,
                        std::set<std::pair<int32_t, int32_t>>& named) {
    for (const Entry& entry : entries) {
      named.emplace(entry.serviceKind, entry.serviceKey);
    }
  }

  template <class Entry>
  std::vector<Named> namedBy(const std::vector<Entry>& entries, const HeadendConfig& config,
                             Presence alone) const {
    std::map<Named, std::size_t> counts;
    std::vector<Named> result;
    result.reserve(entries.size());
    for (const Entry& entry : entries) {
      Named named = nameOf(entry.serviceKind, entry.serviceKey, config, alone);
      named.count = counts[named]++;
      result.push_back(named);
    }
    return result;
  }

  Named nameOf(int32_t kind, int32_t key, const HeadendConfig& config, Presence alone) const {
    switch (kind) {
      case LineupEntryKind::DVB:
        return nameOf(kind, key, config.lineupConfig.dvbInputServices, dvb_, alone);
      case LineupEntryKind::ENC:
        return nameOf(kind, key, config.lineupConfig.encInputServices, enc_, alone);
      case LineupEntryKind::EMPTY:
        return nameOf(kind, key, config.lineupConfig.emptyInputServices, empty_, alone);
      default:
        return {kind, Presence::Missing, key, 0};
    }
  }

  template <class Services>
  static Named nameOf(int32_t kind, int32_t key, const Services& services, const SameServices& same,
                      Presence alone) {
    if (!services.contains(key)) {
      return {kind, Presence::Missing, key, 0};
    }
    if (alone == Presence::Now) {
      return {kind, same.beforeByNow.contains(key) ? Presence::Both : alone, key, 0};
    }
    const auto now = same.nowByBefore.find(key);
    return now == same.nowByBefore.end() ? Named{kind, alone, key, 0}
                                         : Named{kind, Presence::Both, now->second, 0};
  }

  /// Where each of `wanted` is in `entries`.
  static std::vector<std::optional<std::size_t>> placesIn(const std::vector<Named>& entries,
                                                          const std::vector<Named>& wanted) {
    std::map<Named, std::size_t> index;
    for (std::size_t place = 0; place < entries.size(); ++place) {
      index.emplace(entries[place], place);
    }
    std::vector<std::optional<std::size_t>> places;
    for (const Named& named : wanted) {
      const auto found = index.find(named);
      places.push_back(found == index.end() ? std::nullopt : std::optional(found->second));
    }
    return places;
  }

  /// Marks a longest subsequence of `places` that rises: the entries that need not be moved.
  static std::vector<bool> longestRising(const std::vector<std::optional<std::size_t>>& places) {
    constexpr std::size_t kNone = static_cast<std::size_t>(-1);
    std::vector<std::size_t> ends;  // of the rising sequences of each length, the lowest end
    std::vector<std::size_t> before(places.size(), kNone);
    for (std::size_t index = 0; index < places.size(); ++index) {
      if (!places[index]) {
        continue;
      }
      const auto end = std::lower_bound(
          ends.begin(), ends.end(), *places[index],
          [&](std::size_t other, std::size_t place) { return *places[other] < place; });
      before[index] = end == ends.begin() ? kNone : *std::prev(end);
      if (end == ends.end()) {
        ends.push_back(index);
      } else {
        *end = index;
      }
    }
    std::vector<bool> rises(places.size(), false);
    for (std::size_t index = ends.empty() ? kNone : ends.back(); index != kNone;
         index = before[index]) {
      rises[index] = true;
    }
    return rises;
  }

  // ---- services

  template <class Service>
  void compareServices(int32_t kind, const std::map<int32_t, Service>& from,
                       const std::map<int32_t, Service>& to, const SameServices& same) {
    for (const auto& [key, before] : from) {
      const auto found = same.nowByBefore.find(key);
      if (found != same.nowByBefore.end()) {
        compareService(kind, key, before, found->second, to.at(found->second));
      } else if (!namedBefore_.contains({kind, key})) {
        sayService(kind, key, "removed, was in no lineup", before, from_);
      }
    }
    for (const auto& [key, now] : to) {
      if (!same.beforeByNow.contains(key)) {
        const auto before = from.find(key);
        const bool replaces = before != from.end() && !same.nowByBefore.contains(key);
        sayNewService(kind, key, now, replaces ? &before->second : nullptr);
      }
    }
  }

  static std::string numbered(int32_t kind, int32_t key) {
    return std::string(kindWord(kind)) + " service " + std::to_string(key);
  }

  template <class Service>
  static std::string placeOf(int32_t kind, int32_t key, const Service& service) {
    return numbered(kind, key) + ", " + inQuotes(serviceName(service)) + ": ";
  }

  template <class Service>
  void sayService(int32_t kind, int32_t key, const char* what, const Service& service,
                  const HeadendConfig& config, const std::string& more = "") {
    text_ += numbered(kind, key) + " " + what + ": " +
             described(wordsOf(service, config), serviceName(service)) + more + "\n";
  }

  /// Adds what the lines of the entries that name a new service do not show. `replaced` is the
  /// removed service that had its number, or null.
  template <class Service>
  void sayNewService(int32_t kind, int32_t key, const Service& service, const Service* replaced) {
    const bool isNamed = namedNow_.contains({kind, key});
    const AlsoDescribed also{!isNamed || saysName_.contains({kind, key}), urlTellsMux(service)};
    const std::string more = replaced == nullptr ? notDescribed(service, also) : "";
    const std::string where = placeOf(kind, key, service);
    if (!isNamed) {
      sayService(kind, key, "added, in no lineup", service, to_, more);
    } else if (!more.empty()) {
      text_ += where + "added" + more + "\n";
    }
    if (replaced != nullptr) {
      Service before = *replaced;
      copyDescribedFields(before, service, also);
      text_ += fieldDifferences(where, before, service);
    }
  }

  /// Whether the words for a service tell its IP mux from all others.
  bool urlTellsMux(const hub_module::DVBInputServiceConfig& service) const {
    const std::string& uuid = service.service.ipMuxUUID;
    const std::string url = muxUrl(to_, uuid);
    const auto found = muxesByUrl_.find(url);
    return found == muxesByUrl_.end() || (url != uuid && found->second == 1);
  }
  template <class Service>
  static bool urlTellsMux(const Service& /*service*/) {
    return true;
  }

  template <class Service>
  void compareService(int32_t kind, int32_t keyBefore, const Service& before, int32_t keyNow,
                      const Service& now) {
    const std::string where = placeOf(kind, keyNow, now);
    if (keyBefore != keyNow) {
      text_ += where + "its number was " + std::to_string(keyBefore) + "\n";
    }
    const bool wasNamed = namedBefore_.contains({kind, keyBefore});
    if (wasNamed != namedNow_.contains({kind, keyNow})) {
      text_ += where + (wasNamed ? "is in no lineup any more\n" : "was in no lineup\n");
    }
    if (before != now) {
      text_ += fieldDifferences(where, before, now);
    }
  }

  const HeadendConfig& from_;
  const HeadendConfig& to_;
  const SameServices dvb_;
  const SameServices enc_;
  const SameServices empty_;
  const std::map<int32_t, std::set<int32_t>> alike_;  // by kind, in the newer configuration
  const std::map<std::string, std::size_t> muxesByUrl_;
  std::set<std::pair<int32_t, int32_t>> namedBefore_;  // kind and key
  std::set<std::pair<int32_t, int32_t>> namedNow_;
  std::set<std::pair<int32_t, int32_t>> saysName_;  // where a new entry has the service's name
  std::string text_;
};

}  // namespace

std::string lineupDifferences(const HeadendConfig& from, const HeadendConfig& to) {
  return LineupComparison(from, to).text();
}

}  // namespace lineup
