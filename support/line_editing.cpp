// Line editing with libedit.

#include "support/line_editing.h"

#include <histedit.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <iostream>

#include "support/column_list.h"
#include "support/ending_signals.h"

namespace {

constexpr int kRememberedLines = 1000;
constexpr char kEndOfInputKey = 'D' & 0x1f;

/// Keys that modern terminals send and libedit leaves unbound.
struct KeyBinding {
  const char* key;
  const char* function;
};
constexpr KeyBinding kKeys[] = {
    {"\\e[1;5C", "em-next-word"},       // Ctrl-Right
    {"\\e[1;5D", "ed-prev-word"},       // Ctrl-Left
    {"\\e[1;3C", "em-next-word"},       // Alt-Right
    {"\\e[1;3D", "ed-prev-word"},       // Alt-Left
    {"\\e[3~", "ed-delete-next-char"},  // Delete
    {"\\e[1~", "ed-move-to-beg"},       // Home and End
    {"\\e[4~", "ed-move-to-end"},      {"\\e[7~", "ed-move-to-beg"},
    {"\\e[8~", "ed-move-to-end"},      {"\\e[2~", "ed-ignore"},  // Insert
    {"\\e[5~", "ed-ignore"},                                     // Page Up and Page Down
    {"\\e[6~", "ed-ignore"},
};

/// The signals that concern the terminal and not the program's end. They are read from a descriptor
/// while a line is edited, so that none is acted on while libedit works.
sigset_t terminalSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGWINCH, SIGTSTP, SIGCONT, SIGQUIT}) {
    sigaddset(&signals, signal);
  }
  return signals;
}

class TerminalSignalsHeld {
 public:
  TerminalSignalsHeld() {
    const sigset_t signals = terminalSignals();
    pthread_sigmask(SIG_BLOCK, &signals, &before_);
  }
  ~TerminalSignalsHeld() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  TerminalSignalsHeld(const TerminalSignalsHeld&) = delete;
  TerminalSignalsHeld& operator=(const TerminalSignalsHeld&) = delete;

 private:
  sigset_t before_;
};

/// Raises `signal` as if nobody held it: the program stops here, and goes on when it is continued,
/// or ends.
void raiseUnheld(int signal) {
  sigset_t one;
  sigset_t before;
  sigemptyset(&one);
  sigaddset(&one, signal);
  pthread_sigmask(SIG_UNBLOCK, &one, &before);
  raise(signal);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

/// The mode of the terminal, kept over the editing of a line.
class TerminalMode {
 public:
  void keep() { kept_ = tcgetattr(STDIN_FILENO, &mode_) == 0; }

  /// Nothing that was typed is discarded. Output comes first, unless it does not get away.
  void restore() {
    if (kept_ && tcsetattr(STDIN_FILENO, TCSADRAIN, &mode_) != 0) {
      tcsetattr(STDIN_FILENO, TCSANOW, &mode_);
    }
    kept_ = false;
  }

 private:
  termios mode_{};
  bool kept_ = false;
};

bool equalIgnoringCase(char a, char b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  return lower(a) == lower(b);
}

bool beginsWith(const std::string& word, const std::string& beginning) {
  return word.size() >= beginning.size() &&
         std::equal(beginning.begin(), beginning.end(), word.begin(), equalIgnoringCase);
}

std::string commonBeginning(const std::vector<Possibility>& possibilities) {
  std::string common = possibilities.front().word;
  for (const Possibility& possibility : possibilities) {
    const std::string& word = possibility.word;
    const auto end = std::mismatch(common.begin(), common.end(), word.begin(), word.end()).first;
    common.erase(end, common.end());
  }
  while (!common.empty() && std::mbstowcs(nullptr, common.c_str(), 0) == std::string::npos) {
    common.pop_back();  // never a part of a letter
  }
  return common;
}

class LineEditor {
 public:
  /// Null if there is no terminal to edit on.
  static LineEditor* start();

  Edited edit(const std::string& prompt, Completer complete, std::string& line);
  void remember(const std::string& line);

 private:
  LineEditor() = default;
  bool prepare();

  static LineEditor& of(EditLine* lib);
  int readCharacter(wchar_t& character);
  bool readByte(char& byte);
  void waitForByte();
  void handleTerminalSignals();
  void passOn(int signal);
  void startAgain();
  void redrawResized();

  unsigned char completeWord();
  unsigned char tryToCompleteWord();
  void replaceWord(const std::string& typed, const std::string& word);
  void list(const std::string& typed, const std::vector<Possibility>& possibilities);

  std::size_t size(const char* capability) const;
  std::size_t rowOf(const wchar_t* position) const;
  void leaveLine() const;

  EditLine* lib_ = nullptr;
  History* history_ = nullptr;
  int signals_ = -1;
  std::string prompt_;
  Completer complete_ = nullptr;
  TerminalMode mode_;
  int endedBy_ = 0;       ///< the signal that ended the line, 0 for none
  bool started_ = false;  ///< whether a byte of the line has been waited for
  int typedAhead_ = 0;    ///< the bytes still to be read that were typed before the line began
  bool atEnd_ = false;
};

// Never ended: that would discard what was typed ahead for the program that comes next.
LineEditor* LineEditor::start() {
  const char* const terminal = std::getenv("TERM");
  if (terminal == nullptr || *terminal == '\0' || std::strcmp(terminal, "dumb") == 0 ||
      isatty(STDIN_FILENO) != 1 || isatty(STDOUT_FILENO) != 1) {
    return nullptr;
  }
  static LineEditor editor;
  return editor.prepare() ? &editor : nullptr;
}

bool LineEditor::prepare() {
  std::setlocale(LC_CTYPE, "");
  if (std::strcmp(std::setlocale(LC_CTYPE, nullptr), "C") == 0) {
    std::setlocale(LC_CTYPE, "C.UTF-8");  // no language is set, as on a board; letters are letters
  }
  const sigset_t signals = terminalSignals();
  signals_ = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
  history_ = history_init();
  // What libedit has to say about a terminal that it does not know would disturb the prompt.
  std::FILE* const nowhere = std::fopen("/dev/null", "we");
  if (signals_ < 0 || history_ == nullptr || nowhere == nullptr) {
    return false;
  }
  mode_.keep();
  lib_ = el_init("lineup-console", stdin, stdout, nowhere);
  mode_.restore();
  char* clearToEndOfLine = nullptr;
  if (lib_ == nullptr || el_get(lib_, EL_GETTC, "ce", &clearToEndOfLine) != 0 ||
      clearToEndOfLine == nullptr) {
    return false;
  }

  HistEvent event;
  history(history_, &event, H_SETSIZE, kRememberedLines);
  history(history_, &event, H_SETUNIQUE, 1);
  el_set(lib_, EL_CLIENTDATA, this);
  el_set(lib_, EL_HIST, history, history_);
  el_set(lib_, EL_EDITOR, "emacs");
  el_set(
      lib_, EL_PROMPT, +[](EditLine* lib) { return of(lib).prompt_.data(); });
  el_set(
      lib_, EL_GETCFN,
      +[](EditLine* lib, wchar_t* character) { return of(lib).readCharacter(*character); });
  el_wset(
      lib_, EL_ADDFN, L"complete-word", L"Complete the word before the cursor",
      +[](EditLine* lib, wint_t) { return of(lib).completeWord(); });
  // A line feed stays one for the program that reads on when this one has ended.
  el_set(lib_, EL_SETTY, "-d", "-inlcr", nullptr);
  el_set(lib_, EL_BIND, "^I", "complete-word", nullptr);
  for (const KeyBinding& binding : kKeys) {
    el_set(lib_, EL_BIND, binding.key, binding.function, nullptr);
  }
  return true;
}

LineEditor& LineEditor::of(EditLine* lib) {
  void* editor = nullptr;
  el_get(lib, EL_CLIENTDATA, &editor);
  return *static_cast<LineEditor*>(editor);
}

Edited LineEditor::edit(const std::string& prompt, Completer complete, std::string& line) {
  line.clear();
  if (atEnd_) {
    return Edited::End;
  }
  prompt_ = prompt;
  complete_ = complete;
  endedBy_ = 0;
  started_ = false;
  std::cout.flush();

  const TerminalSignalsHeld held;
  mode_.keep();
  // Before the prompt, so that what is typed on seeing it is not echoed twice.
  el_set(lib_, EL_PREP_TERM, 1);
  int length = 0;
  const char* const text = el_gets(lib_, &length);
  mode_.restore();
  if (text != nullptr) {
    line = text;
    if (!line.empty() && line.back() == '\n') {
      line.pop_back();
    }
    return Edited::Line;
  }
  if (endedBy_ != 0) {
    std::fputs(endedBy_ == SIGINT ? "^C" : "", stdout);
    leaveLine();
    std::fflush(stdout);
  }
  if (endedBy_ == SIGINT) {
    forgetInterrupt();
    return Edited::Dropped;
  }
  if (endedBy_ != 0) {
    throw EndedBySignal{endedBy_};
  }
  endIfSignalled();
  endIfHungUp(STDIN_FILENO);
  atEnd_ = true;
  return Edited::End;
}

void LineEditor::remember(const std::string& line) {
  HistEvent event;
  if (!line.empty()) {
    history(history_, &event, H_ENTER, line.c_str());
  }
}

// ---- reading

/// Returns what libedit expects: 1 for a character, else 0 or -1.
int LineEditor::readCharacter(wchar_t& character) {
  try {
    std::mbstate_t state{};
    char byte = 0;
    while (readByte(byte)) {
      const bool begun = std::mbsinit(&state) == 0;
      std::size_t result = std::mbrtowc(&character, &byte, 1, &state);
      if (result == static_cast<std::size_t>(-1) && begun) {
        state = {};  // the letter broke off; the byte may begin the next one
        result = std::mbrtowc(&character, &byte, 1, &state);
      }
      if (result == static_cast<std::size_t>(-1)) {
        state = {};
      } else if (result != static_cast<std::size_t>(-2)) {
        return 1;
      }
    }
    return 0;
  } catch (const EndedBySignal& end) {
    endedBy_ = end.signal;
    return -1;
  }
}

bool LineEditor::readByte(char& byte) {
  if (!started_) {
    started_ = true;
    ioctl(STDIN_FILENO, FIONREAD, &typedAhead_);
  }
  while (true) {
    waitForByte();
    const ssize_t count = read(STDIN_FILENO, &byte, 1);
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
      continue;
    }
    if (count <= 0) {
      return false;
    }
    // Ctrl-D that is typed while a command runs is kept by the kernel as a zero.
    if (typedAhead_ > 0 && byte == '\0') {
      byte = kEndOfInputKey;
    }
    --typedAhead_;
    return true;
  }
}

void LineEditor::waitForByte() {
  while (true) {
    std::array<pollfd, 2> inputs{{{STDIN_FILENO, POLLIN, 0}, {signals_, POLLIN, 0}}};
    waitForInput(inputs);
    if (inputs[1].revents == 0) {
      return;
    }
    handleTerminalSignals();
  }
}

void LineEditor::handleTerminalSignals() {
  signalfd_siginfo info{};
  while (read(signals_, &info, sizeof info) == sizeof info) {
    const auto signal = static_cast<int>(info.ssi_signo);
    switch (signal) {
      case SIGWINCH:
        redrawResized();
        break;
      case SIGCONT:
        startAgain();
        break;
      default:
        passOn(signal);
        break;
    }
  }
}

/// Lets `signal` stop or end the program, with the terminal in the mode in which it was found.
void LineEditor::passOn(int signal) {
  el_set(lib_, EL_PREP_TERM, 0);
  mode_.restore();
  raiseUnheld(signal);
  endIfSignalled();
  mode_.keep();
  el_set(lib_, EL_PREP_TERM, 1);
}

/// Edits on after the program was stopped: whoever had the terminal meanwhile may have changed it.
void LineEditor::startAgain() {
  el_set(lib_, EL_PREP_TERM, 0);
  el_set(lib_, EL_PREP_TERM, 1);
  el_resize(lib_);
  std::fputc('\r', stdout);
  el_set(lib_, EL_REFRESH);
}

/// Draws the line anew where it began, which is elsewhere now if the terminal has wrapped it for
/// its new width.
void LineEditor::redrawResized() {
  el_resize(lib_);
  for (std::size_t row = rowOf(el_wline(lib_)->cursor); row > 0; --row) {
    el_set(lib_, EL_ECHOTC, "up", nullptr);
  }
  std::fputc('\r', stdout);
  el_set(lib_, EL_ECHOTC, "cd", nullptr);
  el_set(lib_, EL_REFRESH);
}

// ---- completing

unsigned char LineEditor::completeWord() {
  try {
    return tryToCompleteWord();
  } catch (...) {     // GCOVR_EXCL_LINE: only without memory
    return CC_ERROR;  // GCOVR_EXCL_LINE: nothing may be thrown through libedit
  }
}

unsigned char LineEditor::tryToCompleteWord() {
  const LineInfo* const info = el_line(lib_);
  const std::string begun(info->buffer, info->cursor);
  const bool blankFollows = info->cursor != info->lastchar && *info->cursor == ' ';
  const std::string typed = begun.substr(begun.rfind(' ') + 1);
  const std::vector<Possibility> possible =
      complete_ == nullptr ? std::vector<Possibility>() : complete_(begun);
  if (possible.empty()) {
    return CC_ERROR;
  }
  if (possible.size() > 1) {
    const std::string common = commonBeginning(possible);
    if (common.size() > typed.size() && beginsWith(common, typed)) {
      replaceWord(typed, common);
    } else {
      list(typed, possible);
    }
    return CC_REFRESH;
  }
  if (!possible.front().note.empty()) {
    list(typed, possible);
  }
  const std::string& word = possible.front().word;
  replaceWord(typed, blankFollows || word.ends_with('/') ? word : word + ' ');
  return CC_REFRESH;
}

void LineEditor::replaceWord(const std::string& typed, const std::string& word) {
  if (word.starts_with(typed)) {
    el_insertstr(lib_, word.c_str() + typed.size());
    return;
  }
  el_deletestr(lib_, static_cast<int>(std::mbstowcs(nullptr, typed.c_str(), 0)));
  el_insertstr(lib_, word.c_str());
}

/// Shows the possibilities below the line, and the line below them.
void LineEditor::list(const std::string& typed, const std::vector<Possibility>& possibilities) {
  const std::size_t folder = typed.rfind('/') + 1;  // not repeated for each
  std::vector<std::string> items;
  for (const Possibility& possibility : possibilities) {
    const std::string& word = possibility.word;
    const std::string shown = beginsWith(word, typed) ? word.substr(folder) : word;
    items.push_back(possibility.note.empty() ? shown : shown + "  " + possibility.note);
  }
  constexpr std::size_t kLeastLines = 5;
  const std::size_t height = std::max(kLeastLines, size("li") - 2);
  leaveLine();
  std::fputs(listInColumns(items, size("co") - 1, height).c_str(), stdout);
  el_set(lib_, EL_REFRESH);
}

// ---- the screen

/// The number of lines ("li") or columns ("co") of the terminal.
std::size_t LineEditor::size(const char* capability) const {
  int value = 0;
  el_get(lib_, EL_GETTC, capability, &value);
  return static_cast<std::size_t>(std::max(value, 2));
}

/// The row, from 0, in which `position` of libedit's line is on the screen.
std::size_t LineEditor::rowOf(const wchar_t* position) const {
  const std::size_t columns = size("co");
  std::size_t column = prompt_.size();
  for (const wchar_t* letter = el_wline(lib_)->buffer; letter < position; ++letter) {
    if (*letter == L'\n') {
      column += columns - column % columns;
    } else {
      constexpr int kControlCharacter = 2;  // as in ^A
      const int width = wcwidth(*letter);
      column += static_cast<std::size_t>(width < 0 ? kControlCharacter : width);
    }
  }
  return column / columns;
}

/// Moves the terminal's cursor below the line.
void LineEditor::leaveLine() const {
  const LineInfoW* const line = el_wline(lib_);
  const std::size_t rows = rowOf(line->lastchar) - rowOf(line->cursor) + 1;
  std::fputs(std::string(rows, '\n').c_str(), stdout);
}

LineEditor* lineEditor() {
  static LineEditor* const editor = LineEditor::start();
  return editor;
}

}  // namespace

bool canEditLines() {
  return lineEditor() != nullptr;
}

Edited editLine(const std::string& prompt, Completer complete, std::string& line) {
  return lineEditor()->edit(prompt, complete, line);
}

void rememberLine(const std::string& line) {
  lineEditor()->remember(line);
}
