#include "compare/entry_matches.h"

#include <algorithm>
#include <compare>
#include <cstdint>
#include <iterator>
#include <map>

#include "model/services.h"

namespace lineup {

using hub_module::LineupConfig;

namespace {

enum class Presence { Both, Before, Now, Missing };

/// The service that an entry refers to: its kind, and its key in the newer configuration if it is
/// there. Entries that refer to the same one are counted.
struct Reference {
  int32_t kind;
  Presence presence;
  int32_t key;
  std::size_t count;

  auto operator<=>(const Reference&) const = default;  // NOLINT(modernize-use-nullptr): no pointer
};

bool hasService(const LineupConfig& lineup, const ServiceReference& service) {
  return visitService(lineup, service.first, service.second, [](const auto& /*service*/) {});
}

/// `alone` says in which of the two configurations `lineup` is.
Reference referenceOf(const ServiceReference& service, const LineupConfig& lineup, Presence alone,
                      const ServiceMatches& matches) {
  const auto& [kind, key] = service;
  if (!hasService(lineup, service)) {
    return {kind, Presence::Missing, key, 0};
  }
  const SameServices& same = matches.at(kind);
  if (alone == Presence::Now) {
    return {kind, same.beforeByNow.contains(key) ? Presence::Both : alone, key, 0};
  }
  const auto now = same.nowByBefore.find(key);
  return now == same.nowByBefore.end() ? Reference{kind, alone, key, 0}
                                       : Reference{kind, Presence::Both, now->second, 0};
}

std::vector<Reference> referencesOf(const std::vector<ServiceReference>& services,
                                    const LineupConfig& lineup, Presence alone,
                                    const ServiceMatches& matches) {
  std::map<Reference, std::size_t> counts;
  std::vector<Reference> result;
  result.reserve(services.size());
  for (const ServiceReference& service : services) {
    Reference reference = referenceOf(service, lineup, alone, matches);
    reference.count = counts[reference]++;
    result.push_back(reference);
  }
  return result;
}

/// Where each of `wanted` is in `entries`.
std::vector<std::optional<std::size_t>> placesIn(const std::vector<Reference>& entries,
                                                 const std::vector<Reference>& wanted) {
  std::map<Reference, std::size_t> index;
  for (std::size_t place = 0; place < entries.size(); ++place) {
    index.emplace(entries[place], place);
  }
  std::vector<std::optional<std::size_t>> places;
  for (const Reference& reference : wanted) {
    const auto found = index.find(reference);
    places.push_back(found == index.end() ? std::nullopt : std::optional(found->second));
  }
  return places;
}

/// Marks a longest subsequence of `places` that rises: the entries that need not be moved.
std::vector<bool> longestRising(const std::vector<std::optional<std::size_t>>& places) {
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

}  // namespace

EntryMatches matchEntries(const std::vector<ServiceReference>& from, const LineupConfig& fromLineup,
                          const std::vector<ServiceReference>& to, const LineupConfig& toLineup,
                          const ServiceMatches& services) {
  EntryMatches matches;
  matches.places = placesIn(referencesOf(to, toLineup, Presence::Now, services),
                            referencesOf(from, fromLineup, Presence::Before, services));
  matches.stays = longestRising(matches.places);
  return matches;
}

}  // namespace lineup
