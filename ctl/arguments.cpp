#include "ctl/arguments.h"

#include <getopt.h>

#include <algorithm>
#include <charconv>
#include <system_error>

#include "ctl/failure.h"

namespace lineup::ctl {

namespace {

[[noreturn]] void refuse(const std::string& message) {
  throw Failure(kUsage, message);
}

std::vector<option> longOptions(std::span<const Option> options) {
  std::vector<option> result;
  for (const Option& named : options) {
    result.push_back({named.name, named.hasValue ? required_argument : no_argument, nullptr, 0});
  }
  result.push_back({"help", no_argument, nullptr, 0});
  result.push_back({nullptr, 0, nullptr, 0});
  return result;
}

/// The words as getopt_long() takes them, which puts them in another order.
std::vector<char*> pointersTo(std::vector<std::string>& words) {
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) {
    pointers.push_back(word.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

/// The word that getopt_long() reads next if it finds an option.
std::string nextOption(const std::vector<char*>& words) {
  for (auto next = static_cast<std::size_t>(std::max(optind, 1)); words[next] != nullptr; ++next) {
    std::string word = words[next];
    if (word.size() > 1 && word[0] == '-') {
      return word;
    }
  }
  return "";
}

}  // namespace

Arguments::Arguments(std::vector<std::string> words, std::span<const Option> options,
                     std::size_t least, std::size_t most) {
  const std::string command = words.at(0);
  std::vector<char*> pointers = pointersTo(words);
  readOptions(command, pointers, options);
  if (has("help")) {
    return;
  }
  for (auto next = static_cast<std::size_t>(optind); next < words.size(); ++next) {
    operands_.emplace_back(pointers[next]);
  }
  if (operands_.size() < least) {
    refuse(command + ": an operand is missing");
  }
  if (operands_.size() > most) {
    refuse(command + ": \"" + operands_[most] + "\" is one operand too many");
  }
}

/// Reads the options among `words`, which end with null, and moves the operands after them, from
/// `optind` on.
void Arguments::readOptions(const std::string& command, std::vector<char*>& words,
                            std::span<const Option> options) {
  const std::vector<option> known = longOptions(options);
  const auto count = static_cast<int>(words.size() - 1);
  optind = 0;  // a parse starts afresh, whatever was parsed before
  opterr = 0;
  const Option help = {"help", false};
  while (true) {
    const std::string word = nextOption(words);
    int index = 0;
    // The colon tells a missing value from an unknown option.
    const int found = getopt_long(count, words.data(), ":", known.data(), &index);
    if (found == -1) {
      return;
    }
    if (found == ':' || found == '?') {
      refuse(command + ": " +
             (found == ':' ? word + " needs a value" : "there is no option " + word));
    }
    const auto number = static_cast<std::size_t>(index);
    add(command, number < options.size() ? options[number] : help, optarg);
  }
}

/// `value` is null for an option without one.
void Arguments::add(const std::string& command, const Option& option, const char* value) {
  const std::string name = std::string("--") + option.name;
  if (value != nullptr && *value == '\0') {
    refuse(command + ": " + name + " needs a value");
  }
  if (value != nullptr && !option.isRepeatable && has(option.name)) {
    refuse(command + ": " + name + " is given twice");
  }
  options_[option.name].emplace_back(value == nullptr ? "" : value);
}

std::string Arguments::value(const std::string& option, const std::string& otherwise) const {
  const auto found = options_.find(option);
  return found == options_.end() ? otherwise : found->second.back();
}

std::vector<std::string> Arguments::values(const std::string& option) const {
  const auto found = options_.find(option);
  return found == options_.end() ? std::vector<std::string>() : found->second;
}

std::size_t Arguments::wholeNumber(const std::string& option) const {
  if (!has(option)) {
    return 0;
  }
  const std::string text = value(option, "");
  std::size_t number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size() || number == 0) {
    refuse("--" + option + ": \"" + text + "\" is no whole number from 1");
  }
  return number;
}

std::size_t requireOneOf(const std::string& option, const std::string& word,
                         std::span<const char* const> choices) {
  const auto found = std::find(choices.begin(), choices.end(), word);
  if (found == choices.end()) {
    std::string known;
    for (const char* const one : choices) {
      known += known.empty() ? one : std::string(", ") + one;
    }
    refuse("--" + option + ": \"" + word + "\" is none of " + known);
  }
  return static_cast<std::size_t>(found - choices.begin());
}

std::string Arguments::choice(const std::string& option,
                              std::span<const char* const> choices) const {
  return choices[requireOneOf(option, value(option, choices[0]), choices)];
}

}  // namespace lineup::ctl
