// The command line of lineupctl.

#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace lineup::ctl {

/// An option of a command, with "--" in front of its name on the command line.
struct Option {
  const char* name;
  bool hasValue = true;
  bool isRepeatable = false;  ///< where one with a value may be given more than once
};

/// The choices of "--format" where a table is shown.
inline constexpr const char* kTableFormats[] = {"text", "json", "csv"};

/// The words after a command.
class Arguments {
 public:
  /// Reads `words`, of which the first is the command. Throws Failure(kUsage) for an option that is
  /// none of `options`, lacks its value, has an empty one or is given twice, and unless there are
  /// `least` to `most` operands. Each command has the option "help" as well, which goes with any
  /// operands.
  Arguments(std::vector<std::string> words, std::span<const Option> options, std::size_t least,
            std::size_t most);

  const std::vector<std::string>& operands() const { return operands_; }

  bool has(const std::string& option) const { return options_.contains(option); }

  /// The value of an option, the last one of a repeatable option; `otherwise` if it is not given.
  std::string value(const std::string& option, const std::string& otherwise) const;

  /// All values of an option, in their order.
  std::vector<std::string> values(const std::string& option) const;

  /// The value of an option as a whole number from 1; 0 if it is not given. Throws Failure(kUsage)
  /// for anything else.
  std::size_t wholeNumber(const std::string& option) const;

  /// The value of an option, which has to be one of `choices`, the first of them if it is not
  /// given. Throws Failure(kUsage) for anything else.
  std::string choice(const std::string& option, std::span<const char* const> choices) const;

 private:
  void readOptions(const std::string& command, std::vector<char*>& words,
                   std::span<const Option> options);
  void add(const std::string& command, const Option& option, const char* value);

  std::map<std::string, std::vector<std::string>> options_;
  std::vector<std::string> operands_;
};

/// The index of `word`, the value of `option`, in `choices`. Throws Failure(kUsage), which names
/// them, if it is none of them.
std::size_t requireOneOf(const std::string& option, const std::string& word,
                         std::span<const char* const> choices);

}  // namespace lineup::ctl
