// Reading standard input by lines: command lines, and the line that "addpls" asks for. On a
// terminal that can do it, lines are edited; everything else is read as it comes.

#pragma once

#include <poll.h>

#include <functional>
#include <span>
#include <string>
#include <vector>

namespace lineup {

/// A word that the one being typed may become.
struct Candidate {
  std::string word;  ///< a '_' may stand for another character that was typed
  std::string note;  ///< shown after the word; may be empty
};

/// Returns what the last word of `begun`, a line up to its cursor, may become. Words are separated
/// by blanks; the last one is empty after a blank. Whatever it throws counts as no candidate.
using Completer = std::function<std::vector<Candidate>(const std::string& begun)>;

/// What helps a person who edits a command line.
struct LineAids {
  Completer complete;
  /// What F2 and F3 show below the line, which is then edited on. An interrupt ends them alone. F2
  /// may wait: the terminal is in the mode in which it was found then, as while a command runs.
  std::function<std::string()> f2;
  std::function<std::string()> f3;
};

/// Reads one line of standard input up to a line feed, which is not stored, after `prompt` on
/// standard output. A last line without a line feed counts. Returns false at the end of input or on
/// a read error, and from then on. Throws EndedBySignal if a signal ends the wait, or if the
/// terminal that standard input is has hung up. Nothing else may read standard input.
///
/// On a terminal the line can be edited with `aids` and found again later. SIGINT then drops the
/// line and asks for another one.
bool readCommandLine(const std::string& prompt, const LineAids& aids, std::string& line);

/// Reads a line likewise, without prompt and aids, and does not remember it. Where lines
/// are edited, SIGINT makes it an empty one.
bool readAnswer(std::string& line);

/// Sets what is called where there is time for a little work: before a command line is waited for,
/// when it has been read, and, on a terminal, when nothing has been typed for half a second. If
/// `hook` returns true then, it is called again half a second later.
void whenThereIsTime(std::function<bool()> hook);

/// Waits for one of `inputs` as waitForInput() does, and calls that hook when it takes long.
void waitForTyping(std::span<pollfd> inputs);

}  // namespace lineup
