#include "terminal/line_editing.h"

#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <optional>
#include <string_view>
#include <vector>

#include "support/ending_signals.h"
#include "support/signal_sets.h"
#include "terminal/letters.h"
#include "terminal/libedit_line.h"
#include "terminal/line_completion.h"
#include "terminal/line_display.h"
#include "terminal/line_motions.h"
#include "terminal/line_overview.h"
#include "terminal/line_recall.h"
#include "terminal/line_search.h"
#include "terminal/line_undo.h"
#include "terminal/terminal_input.h"
#include "terminal/terminal_keys.h"

namespace lineup {

namespace {

/// Reads each key from the terminal, does what it means to the line, and shows that. What libedit
/// is left with are letters, and what ends the line or the input.
class TerminalLineEditor {
 public:
  /// Null if there is no terminal to edit on.
  static TerminalLineEditor* start();

  Edited edit(const std::string& prompt, const LineAids& aids, std::string& line);
  void remember(const std::string& line) { recall_.remember(line); }

 private:
  TerminalLineEditor() = default;
  bool prepare(const char* terminal);
  bool wasInterrupted() const;
  Edited endWithoutLine();

  int giveKey(wchar_t& key);
  bool readKey(wchar_t& key, bool escapeAlone = false);
  bool search(wchar_t& key);
  bool handle(wchar_t key);
  bool moveOrErase(wchar_t key);
  bool act(wchar_t key);
  void complete();
  void keepForUndo(wchar_t key);
  void replaceOrRing(const std::optional<EditedLine>& line);

  void handleSignals();
  void letStop();
  void startAgain();

  LibeditLine line_{[this](wchar_t& key) { return giveKey(key); }};
  LineDisplay display_{line_};
  TerminalInput input_{[this] {
                         display_.draw();  // not before: a paste is shown at once
                         display_.markPastes(true);
                       },
                       [this] { handleSignals(); }};
  LineRecall recall_{};
  LineUndo undo_{};
  std::wstring erased_{};  ///< what was erased last
  bool atEnd_ = false;

  // The line being edited.
  const LineAids* aids_ = nullptr;
  bool endTyped_ = false;       ///< whether a key has ended the input
  std::exception_ptr ended_{};  ///< what ended it
};

TerminalLineEditor* TerminalLineEditor::start() {
  const char* const value = std::getenv("TERM");
  const std::string_view terminal = value == nullptr ? "" : value;
  // libedit does not edit in emacs.
  if (terminal.empty() || terminal == "dumb" || terminal == "emacs" || isatty(STDIN_FILENO) != 1 ||
      isatty(STDOUT_FILENO) != 1) {
    return nullptr;
  }
  static TerminalLineEditor editor;
  return editor.prepare(value) ? &editor : nullptr;
}

bool TerminalLineEditor::prepare(const char* terminal) {
  std::setlocale(LC_CTYPE, "");
  if (std::string_view(std::setlocale(LC_CTYPE, nullptr)) == "C") {
    std::setlocale(LC_CTYPE, "C.UTF-8");  // no language is set, as on a board; letters are letters
  }
  const auto description = input_.start() ? line_.start(terminal) : std::nullopt;
  if (!description) {
    return false;
  }
  display_.start(*description);
  recall_.readEarlierLines();
  return true;
}

Edited TerminalLineEditor::edit(const std::string& prompt, const LineAids& aids,
                                std::string& line) {
  line.clear();
  if (atEnd_) {
    return Edited::End;
  }
  display_.setPrompt(prompt);
  aids_ = &aids;
  input_.setReadsAnswer(aids.complete == nullptr);  // only command lines have aids
  recall_.begin();
  undo_.begin();
  endTyped_ = false;
  ended_ = nullptr;
  std::cout.flush();

  const SignalMask blocked(SIG_BLOCK, terminalSignals());
  input_.begin();  // before the prompt, so that what is typed on seeing it is not echoed twice
  display_.begin();
  const char* const result = line_.read();
  display_.markPastes(false);
  display_.setNote({});  // of a search that it has ended
  if (result != nullptr) {
    line.assign(result, std::string_view(result).find('\n'));
    display_.leaveEntered();
  } else if (ended_ != nullptr) {
    display_.leave(wasInterrupted() ? "^C" : "");
  } else if (endTyped_) {
    display_.draw();
    LineDisplay::put("^D");
  }
  input_.end();
  return result != nullptr ? Edited::Line : endWithoutLine();
}

/// Whether it was the line that was ended, and not the program.
bool TerminalLineEditor::wasInterrupted() const {
  try {
    std::rethrow_exception(ended_);
  } catch (const EndedBySignal&) {
    return isInterrupted();
  } catch (...) {  // COVERAGE_EXCL_LINE: only without memory
    return false;  // COVERAGE_EXCL_LINE
  }
}

Edited TerminalLineEditor::endWithoutLine() {
  if (ended_ != nullptr && wasInterrupted()) {
    forgetInterrupt();
    input_.forgetPaste();  // the key has discarded the rest
    return Edited::Dropped;
  }
  if (ended_ != nullptr) {
    std::rethrow_exception(ended_);
  }
  throwIfSignalled();
  throwIfHungUp(STDIN_FILENO);
  atEnd_ = true;
  return Edited::End;
}

/// Returns what LibeditLine::ReadKey does.
int TerminalLineEditor::giveKey(wchar_t& key) {
  try {
    while (readKey(key)) {
      if (key == key::kSearch && !search(key)) {
        return 0;
      }
      if (!handle(key)) {
        line_.makeRoomForKey();
        endTyped_ = key == key::kEndOfInput && line_.length() == 0;
        return 1;
      }
      line_.refresh();  // or its screen would not be that of the line
    }
    return 0;
  } catch (...) {
    ended_ = std::current_exception();
    return -1;
  }
}

/// Does what libedit does not; returns whether `key` was of that kind. A zero would have libedit
/// take the next key literally.
bool TerminalLineEditor::handle(wchar_t key) {
  if (key == L'\0') {
    return true;
  }
  if (key == key::kUndo) {
    replaceOrRing(undo_.undo(line_.text()));
    return true;
  }
  keepForUndo(key);
  if (key == key::kReturn || key == key::kLineFeed) {
    input_.lineEnded(key);
    return false;
  }
  const bool endsInput = key == key::kEndOfInput && line_.length() == 0;
  return !endsInput && (moveOrErase(key) || act(key));
}

/// Does what a key does that neither moves nor erases; returns whether `key` is one.
bool TerminalLineEditor::act(wchar_t key) {
  switch (key) {
    case key::kUp:
      replaceOrRing(recall_.older(line_.text()));
      return true;
    case key::kDown:
      replaceOrRing(recall_.newer(line_.text()));
      return true;
    case key::kTranspose:
      replaceOrRing(transpose(line_.line()));
      return true;
    case key::kYank:
      line_.insert(erased_);
      return true;
    case key::kTab:
      complete();
      return true;
    case key::kF2:
      showOverview(aids_->f2, true, display_, input_);
      return true;
    case key::kF3:
      showOverview(aids_->f3, false, display_, input_);
      return true;
    case key::kClearScreen:
      display_.clear();
      return true;
    default:
      return false;
  }
}

/// Waits for a key. Where a paste begins and ends is only noted.
bool TerminalLineEditor::readKey(wchar_t& key, bool escapeAlone) {
  while (input_.readKey(key, escapeAlone)) {
    if (key != key::kPasteBegins && key != key::kPasteEnds) {
      return true;
    }
    undo_.endRun();  // one undoes what was pasted apart from what was typed
  }
  return false;
}

/// Lets the person look for an earlier line by a part of it. Returns false at the end of input;
/// else `key` is the one with which to go on.
bool TerminalLineEditor::search(wchar_t& key) {
  keepForUndo(key);
  const std::size_t from = recall_.place();
  const std::wstring line = line_.text();
  recall_.leave(line);
  LineSearch search(recall_.history());
  display_.setNote(search.note());
  while (readKey(key, true)) {
    if (!search.take(key)) {
      display_.setNote({});
      if (key == key::kGiveUp) {
        recall_.goTo(from);
        line_.replace({line, line.size()});
      }
      line_.refresh();
      return true;
    }
    display_.setNote(search.note());
    if (search.place()) {
      recall_.goTo(search.place()->line);
      line_.replace({recall_.history()[search.place()->line], search.place()->column});
    }
  }
  return false;
}

/// Moves the cursor or erases if `key` does so; returns whether it does.
bool TerminalLineEditor::moveOrErase(wchar_t key) {
  const LineMotion* const motion = motionOf(key);
  if (motion == nullptr) {
    return false;
  }
  const std::wstring line = line_.text();
  const std::size_t from = line_.cursor();
  const std::size_t to = motion->to(line, from);
  const auto [begin, end] = std::minmax(from, to);
  const bool erases = motion->does != LineMotion::Does::Move;
  line_.moveTo(erases ? end : to);
  if (erases) {
    line_.eraseBefore(end - begin);
  }
  if (motion->does == LineMotion::Does::EraseAndKeep && end > begin) {
    erased_ = line.substr(begin, end - begin);
  }
  return true;
}

/// Keeps the line as it is before `key`, if that is a step of its own.
void TerminalLineEditor::keepForUndo(wchar_t key) {
  if (undo_.beginsStep(key)) {
    undo_.keep(line_.line());
  }
}

void TerminalLineEditor::complete() {
  const std::wstring line = line_.text();
  const std::string begun = bytesOf(line.substr(0, line_.cursor()));
  std::vector<Candidate> candidates;
  try {
    candidates = aids_->complete == nullptr ? candidates : aids_->complete(begun);
  } catch (const std::exception&) {
    candidates.clear();
  }
  if (candidates.empty()) {
    LineDisplay::ring();
    return;
  }
  const bool blankFollows = line_.cursor() < line.size() && line[line_.cursor()] == L' ';
  const Completion completion = completeWord(begun, blankFollows, candidates);
  if (!completion.listed.empty()) {
    display_.list(completion.listed);
  }
  line_.eraseBefore(completion.erased);
  line_.insert(completion.inserted);
}

void TerminalLineEditor::replaceOrRing(const std::optional<EditedLine>& line) {
  if (line) {
    line_.replace(*line);
  } else {
    LineDisplay::ring();
  }
}

void TerminalLineEditor::handleSignals() {
  if (acceptPending(SIGWINCH)) {
    display_.resize();
  }
  if (acceptPending(SIGCONT)) {
    startAgain();
  }
  if (isPending(SIGTSTP)) {
    letStop();
  }
}

/// Lets SIGTSTP stop the program, with the terminal in the mode in which it was found.
void TerminalLineEditor::letStop() {
  display_.markPastes(false);
  input_.end();
  {  // stops here, unless it was continued already: the system has discarded the stop then
    const SignalMask delivered(SIG_UNBLOCK, signalSet({SIGTSTP}));
  }
  throwIfSignalled();
  startAgain();
}

/// Edits on after the program was stopped: whoever had the terminal meanwhile may have changed it.
void TerminalLineEditor::startAgain() {
  input_.begin();
  display_.begin();
  LineDisplay::put("\r");
  display_.draw();
}

TerminalLineEditor* lineEditor() {
  static TerminalLineEditor* const editor = TerminalLineEditor::start();
  return editor;
}

}  // namespace

bool canEditLines() {
  return lineEditor() != nullptr;
}

Edited editLine(const std::string& prompt, const LineAids& aids, std::string& line) {
  return lineEditor()->edit(prompt, aids, line);
}

void rememberLine(const std::string& line) {
  lineEditor()->remember(line);
}

}  // namespace lineup
