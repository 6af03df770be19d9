#include "terminal/line_completion.h"

#include <algorithm>
#include <cstdlib>

#include "terminal/letters.h"

namespace lineup {

namespace {

/// In any case, and where the word has '_' in the place of what was typed.
bool standsFor(char typed, char inWord) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  return lower(typed) == lower(inWord) || inWord == '_';
}

bool beginsWith(const std::string& word, const std::string& typed) {
  return word.size() >= typed.size() &&
         std::equal(typed.begin(), typed.end(), word.begin(), standsFor);
}

std::string commonBeginning(const std::vector<Candidate>& candidates) {
  std::string common = candidates.front().word;
  for (const Candidate& candidate : candidates) {
    const std::string& word = candidate.word;
    const auto end = std::mismatch(common.begin(), common.end(), word.begin(), word.end()).first;
    common.erase(end, common.end());
  }
  while (!common.empty() && std::mbstowcs(nullptr, common.c_str(), 0) == std::string::npos) {
    common.pop_back();  // never a part of a letter
  }
  return common;
}

std::vector<std::string> listOf(const std::vector<Candidate>& candidates,
                                const std::string& typed) {
  const std::size_t folder = typed.rfind('/') + 1;  // not repeated for each
  std::vector<std::string> items;
  for (const Candidate& candidate : candidates) {
    const std::string& word = candidate.word;
    const std::string shown = beginsWith(word, typed) ? word.substr(folder) : word;
    items.push_back(candidate.note.empty() ? shown : shown + "  " + candidate.note);
  }
  return items;
}

void replaceWord(const std::string& typed, const std::string& word, Completion& completion) {
  const bool goesOn = word.starts_with(typed);
  completion.erased = goesOn ? 0 : charactersOf(typed).size();
  completion.inserted = charactersOf(goesOn ? word.substr(typed.size()) : word);
}

}  // namespace

Completion completeWord(const std::string& begun, bool blankFollows,
                        const std::vector<Candidate>& candidates) {
  const std::string typed = begun.substr(begun.rfind(' ') + 1);
  Completion completion;
  if (candidates.size() > 1) {
    const std::string common = commonBeginning(candidates);
    if (common.size() > typed.size() && beginsWith(common, typed)) {
      replaceWord(typed, common, completion);
    } else {
      completion.listed = listOf(candidates, typed);
    }
    return completion;
  }
  const auto& [word, note] = candidates.front();
  if (!note.empty()) {
    completion.listed = listOf(candidates, typed);
  }
  replaceWord(typed, blankFollows || word.ends_with('/') ? word : word + ' ', completion);
  return completion;
}

}  // namespace lineup
