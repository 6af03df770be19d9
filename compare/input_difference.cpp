#include "compare/input_difference.h"

#include <map>
#include <optional>
#include <string>

#include "compare/difference_lines.h"
#include "compare/json_difference.h"
#include "print/printed_text.h"
#include "print/setting_words.h"

namespace lineup {

using hub_module::HeadendConfig;
using hub_module::IPInput;
using hub_module::IPMux;
using nlohmann::json;

namespace {

// ---- IP muxes

/// The input as "addipmux" takes it, SLOT/INTERFACE, or by its key if it has no such place.
std::string inputWords(const std::string& key, const IPInput& input) {
  const bool hasPlace = input.__isset.slot && input.__isset.interfaceId;
  return "IP input " + (hasPlace
                            ? std::to_string(input.slot) + "/" + std::to_string(input.interfaceId)
                            : printable(key));
}

std::string muxWords(const std::string& uuid, const IPMux& mux) {
  return "mux " + inQuotes(mux.url) + ", UUID " + printable(uuid);
}

/// What a mux has that "addipmux" does not give it.
std::string moreOf(const std::string& uuid, const IPMux& mux) {
  IPMux expected;
  expected.uuid = uuid;
  expected.url = mux.url;
  return otherFields(expected, mux);
}

std::string muxDifferences(const std::string& input, const std::map<std::string, IPMux>& from,
                           const std::map<std::string, IPMux>& to) {
  std::string text;
  for (const auto& [uuid, before] : from) {
    const auto now = to.find(uuid);
    if (now == to.end()) {
      text += input + ": removed " + muxWords(uuid, before) + "\n";
    } else if (before != now->second) {
      text +=
          fieldDifferences(input + ", " + muxWords(uuid, now->second) + ": ", before, now->second);
    }
  }
  for (const auto& [uuid, now] : to) {
    if (!from.contains(uuid)) {
      text += input + ": added " + muxWords(uuid, now) + moreOf(uuid, now) + "\n";
    }
  }
  return text;
}

/// The muxes of an input that one of the two configurations lacks are all removed, or added.
std::string ipMuxDifferences(const HeadendConfig& from, const HeadendConfig& to) {
  std::string text;
  for (const auto& [key, before] : from.ipInputs) {
    const auto now = to.ipInputs.find(key);
    const bool isThere = now != to.ipInputs.end();
    text += muxDifferences(inputWords(key, isThere ? now->second : before), before.muxes,
                           isThere ? now->second.muxes : std::map<std::string, IPMux>());
  }
  for (const auto& [key, now] : to.ipInputs) {
    if (!from.ipInputs.contains(key)) {
      text += muxDifferences(inputWords(key, now), {}, now.muxes);
    }
  }
  return text;
}

// ---- the PLS list

std::optional<std::string> itemText(const json* item) {
  return item == nullptr ? std::nullopt : std::optional(item->get<std::string>());
}

/// The items in the words of "addpls", in a JSON array.
json plsItems(const HeadendConfig& config) {
  json items = json::array();
  if (config.rfInputsScanConfig.__isset.plsItemList) {
    for (const hub_module::PLSItem& item : config.rfInputsScanConfig.plsItemList) {
      items.push_back(plsTypeWord(item.plsType) + " " + std::to_string(item.plsCode));
    }
  }
  return items;
}

std::string plsDifferences(const HeadendConfig& from, const HeadendConfig& to) {
  std::string text;
  compareJson(plsItems(from), plsItems(to),
              [&](const std::string& path, const json* before, const json* now) {
                text += "PLS item " + std::to_string(std::stoul(path.substr(1)) + 1) + ": " +
                        changeLine(itemText(before), itemText(now));
              });
  return text;
}

}  // namespace

std::string inputDifferences(const HeadendConfig& from, const HeadendConfig& to) {
  return ipMuxDifferences(from, to) + plsDifferences(from, to);
}

}  // namespace lineup
