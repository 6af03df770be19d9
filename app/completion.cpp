#include "app/completion.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <system_error>

#include "catalogue/available_names.h"
#include "lineup/encoder_inputs.h"
#include "lineup/rf_input_names.h"
#include "lineup/scan_types.h"
#include "support/state_folder.h"
#include "support/words.h"

namespace lineup {

namespace {

namespace fs = std::filesystem;

void offerInAnyCase(const std::string& word, const std::string& typed,
                    std::vector<Candidate>& candidates) {
  std::string upper = typed;
  upperCase(upper);
  offer(word, upper, candidates);
}

void offerNumber(int32_t number, const std::string& note, const std::string& typed,
                 std::vector<Candidate>& candidates) {
  offer(std::to_string(number), typed, candidates, note);
}

/// `name` as one word that "find" finds it by.
std::string asPattern(std::string name) {
  std::replace_if(
      name.begin(), name.end(),
      [](char byte) {
        return !isOneWord({&byte, 1}) || byte == '\'' || byte == '"';
      },
      '_');
  return name;
}

bool isHidden(std::string_view name) {
  return name.starts_with('.');
}

bool isStateFolder(const fs::path& folder) {
  const std::optional<Folder> state = openStateFolder(IfMissing::Leave);
  std::error_code none;
  return state && fs::equivalent(folder, state->path, none);
}

}  // namespace

void offer(std::string_view word, std::string_view typed, std::vector<Candidate>& candidates,
           const std::string& note) {
  if (word.starts_with(typed)) {
    candidates.push_back({std::string(word), note});
  }
}

std::vector<Candidate> completeChoice(const Setting& setting, const std::string& typed) {
  std::vector<Candidate> candidates;
  for (const Choice& choice : setting.choices) {
    offer(choice.word, typed, candidates);
  }
  return candidates;
}

std::vector<Candidate> completeRFInput(const std::string& typed) {
  std::vector<Candidate> candidates;
  for (const std::string& name : rfInputNames()) {
    offerInAnyCase(name, typed, candidates);
  }
  return candidates;
}

std::vector<Candidate> completeScanType(const std::string& typed) {
  std::vector<Candidate> candidates;
  for (const char* const type : {kCofdmScan, kQamsScan}) {
    offerInAnyCase(type, typed, candidates);
  }
  return candidates;
}

std::vector<Candidate> completeEncoder(std::span<const std::string> words,
                                       const hub_module::HeadendConfig& /*config*/) {
  constexpr NumberRange kSlotAndInput[] = {kEncoderSlots, kHdmiInputs};
  std::vector<Candidate> candidates;
  if (words.size() <= std::size(kSlotAndInput)) {
    const auto [first, last] = kSlotAndInput[words.size() - 1];
    for (int32_t number = first; number <= last; ++number) {
      offerNumber(number, "", words.back(), candidates);
    }
  }
  return candidates;
}

std::vector<Candidate> completeIPInput(std::span<const std::string> words,
                                       const hub_module::HeadendConfig& config) {
  std::map<int32_t, std::string> numbers;  // in their order, each once
  for (const auto& [key, input] : config.ipInputs) {
    if (!input.__isset.slot || !input.__isset.interfaceId) {
      continue;
    }
    if (words.size() == 1) {
      numbers[input.slot] = "";
    } else if (words.size() == 2 && input.slot == readNumber(words[0])) {
      numbers[input.interfaceId] = input.address;
    }
  }
  std::vector<Candidate> candidates;
  for (const auto& [number, note] : numbers) {
    offerNumber(number, note, words.back(), candidates);
  }
  return candidates;
}

std::vector<Candidate> completeFile(const std::string& typed) {
  const std::size_t nameBegin = typed.rfind('/') + 1;
  const std::string folder = typed.substr(0, nameBegin);
  const std::string begun = typed.substr(nameBegin);
  const fs::path place = folder.empty() ? "." : folder;
  const char* const ending = isStateFolder(place) ? ".json" : "";
  std::vector<Candidate> candidates;
  std::error_code error;
  for (fs::directory_iterator entry(place, error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = entry->path().filename();
    if (name.ends_with(ending) && name.starts_with(begun) && isHidden(name) == isHidden(begun) &&
        isOneWord(name)) {
      std::error_code unknown;  // a link that leads nowhere is not a folder
      const char* const slash = fs::is_directory(entry->path(), unknown) ? "/" : "";
      candidates.push_back({folder + name + slash, ""});
    }
  }
  std::sort(candidates.begin(), candidates.end(),
            [](const Candidate& a, const Candidate& b) { return a.word < b.word; });
  return candidates;
}

std::vector<Candidate> completeName(std::string_view input, const std::string& typed) {
  const std::string wanted = asPattern(typed);
  std::set<std::string> beginning;
  std::set<std::string> containing;
  visitAvailableServiceNames(input, [&](const AvailableServiceName& service) {
    const std::string word = asPattern(service.name);
    const char* const place = strcasestr(word.c_str(), wanted.c_str());
    if (place != nullptr && !word.empty()) {
      (place == word.c_str() ? beginning : containing).insert(word);
    }
  });
  std::vector<Candidate> candidates;
  for (const std::string& word : beginning.empty() ? containing : beginning) {
    candidates.push_back({word, ""});
  }
  return candidates;
}

std::vector<Candidate> completeServiceType(const std::string& typed) {
  std::set<int32_t> types;
  visitAvailableServiceNames(
      "", [&types](const AvailableServiceName& service) { types.insert(service.type); });
  std::vector<Candidate> candidates;
  for (const int32_t type : types) {
    offerNumber(type, "", typed, candidates);
  }
  return candidates;
}

std::vector<Candidate> completeService(const std::string& typed) {
  std::vector<Candidate> ids;
  std::vector<Candidate> named;
  for (const auto& [number, service] : readAvailableServiceNames()) {
    const std::string id = std::to_string(number);
    const std::string note = service.name + " (" + service.input + ")";
    if (id.starts_with(typed)) {
      ids.push_back({id, note});
    } else if (strcasestr(service.name.c_str(), typed.c_str()) != nullptr) {
      named.push_back({id, note});
    }
  }
  return ids.empty() ? named : ids;
}

}  // namespace lineup
