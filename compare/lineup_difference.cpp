#include "compare/lineup_difference.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "compare/described_service.h"
#include "compare/difference_lines.h"
#include "compare/entry_matches.h"
#include "compare/service_matches.h"
#include "model/services.h"
#include "print/printed_text.h"
#include "print/service_words.h"

namespace lineup {

using hub_module::HeadendConfig;
using hub_module::LineupEntryKind;

namespace {

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
        services_(matchServices(from.lineupConfig, to.lineupConfig)),
        duplicates_(duplicatedServices(to.lineupConfig)),
        muxesByUrl_(muxesByUrl(to)) {}

  std::string text() {
    const hub_module::LineupConfig& before = from_.lineupConfig;
    const hub_module::LineupConfig& now = to_.lineupConfig;
    compareEntries("RF lineup: ", before.rfEntries, now.rfEntries);
    compareEntries("IP lineup: ", before.ipEntries, now.ipEntries);
    compareServices(LineupEntryKind::DVB, before.dvbInputServices, now.dvbInputServices);
    compareServices(LineupEntryKind::ENC, before.encInputServices, now.encInputServices);
    compareServices(LineupEntryKind::EMPTY, before.emptyInputServices, now.emptyInputServices);
    return std::move(text_);
  }

 private:
  // ---- entries

  template <class Entry>
  void compareEntries(const char* lineup, const std::vector<Entry>& from,
                      const std::vector<Entry>& to) {
    const std::vector<ServiceReference> before = referencesOf(from);
    const std::vector<ServiceReference> now = referencesOf(to);
    referencedBefore_.insert(before.begin(), before.end());
    referencedNow_.insert(now.begin(), now.end());
    const auto [places, stays] =
        matchEntries(before, from_.lineupConfig, now, to_.lineupConfig, services_);
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
    const ServiceReference service(entry.serviceKind, entry.serviceKey);
    const bool isDuplicated = duplicates_.contains(service);
    const auto& dvb = to_.lineupConfig.dvbInputServices;
    const auto referenced = dvb.find(entry.serviceKey);
    if (service.first == LineupEntryKind::DVB && referenced != dvb.end() &&
        serviceName(referenced->second) == entry.name) {
      saysName_.insert(service);
    }
    say(lineup, "added at " + std::to_string(place + 1), to_, entry,
        (isDuplicated ? ", " + numbered(service.first, service.second) : "") +
            moreOf(entry, replaced));
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
    return entry == expected && entry == before ? "" : otherFields(expected, entry, &before);
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
  static std::vector<ServiceReference> referencesOf(const std::vector<Entry>& entries) {
    std::vector<ServiceReference> references;
    references.reserve(entries.size());
    for (const Entry& entry : entries) {
      references.emplace_back(entry.serviceKind, entry.serviceKey);
    }
    return references;
  }

  // ---- services

  template <class Service>
  void compareServices(int32_t kind, const std::map<int32_t, Service>& from,
                       const std::map<int32_t, Service>& to) {
    const SameServices& same = services_.at(kind);
    for (const auto& [key, before] : from) {
      const auto found = same.nowByBefore.find(key);
      if (found != same.nowByBefore.end()) {
        compareService(kind, key, before, found->second, to.at(found->second));
      } else if (!referencedBefore_.contains({kind, key})) {
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
    return kindWord(kind) + " service " + std::to_string(key);
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

  /// Adds what the lines of the entries that refer to a new service do not show. `replaced` is the
  /// removed service that had its number, or null.
  template <class Service>
  void sayNewService(int32_t kind, int32_t key, const Service& service, const Service* replaced) {
    const bool isReferenced = referencedNow_.contains({kind, key});
    const AlsoDescribed also{!isReferenced || saysName_.contains({kind, key}),
                             urlTellsMux(service)};
    const std::string more = replaced == nullptr ? notDescribed(service, also) : "";
    const std::string where = placeOf(kind, key, service);
    if (!isReferenced) {
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
    const bool wasReferenced = referencedBefore_.contains({kind, keyBefore});
    if (wasReferenced != referencedNow_.contains({kind, keyNow})) {
      text_ += where + (wasReferenced ? "is in no lineup any more\n" : "was in no lineup\n");
    }
    if (before != now) {
      text_ += fieldDifferences(where, before, now);
    }
  }

  const HeadendConfig& from_;
  const HeadendConfig& to_;
  const ServiceMatches services_;
  const std::set<ServiceReference> duplicates_;  // in the newer configuration
  const std::map<std::string, std::size_t> muxesByUrl_;
  std::set<ServiceReference> referencedBefore_;
  std::set<ServiceReference> referencedNow_;
  std::set<ServiceReference> saysName_;  // where a new entry has the service's name
  std::string text_;
};

}  // namespace

std::string lineupDifferences(const HeadendConfig& from, const HeadendConfig& to) {
  return LineupComparison(from, to).text();
}

}  // namespace lineup
