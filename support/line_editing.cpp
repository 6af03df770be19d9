#include "support/line_editing.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <clocale>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <cwctype>
#include <exception>
#include <functional>
#include <iostream>
#include <iterator>
#include <optional>
#include <string_view>
#include <vector>

#include "support/column_list.h"
#include "support/ending_signals.h"
#include "support/letters.h"
#include "support/libedit_line.h"
#include "support/line_completion.h"
#include "support/line_motions.h"
#include "support/line_recall.h"
#include "support/line_screen.h"
#include "support/line_search.h"
#include "support/line_undo.h"
#include "support/pager.h"
#include "support/signal_sets.h"
#include "support/terminal_keys.h"
#include "support/terminal_mode.h"
#include "support/typed_ahead.h"

namespace lineup {

namespace {

/// The signals that concern the terminal and not the program's end. They are blocked while a line
/// is edited, so that none is acted on while libedit works.
sigset_t terminalSignals() {
  return signalSet({SIGWINCH, SIGTSTP, SIGCONT, SIGQUIT});
}

/// Accepts `signal` if it is pending; returns whether it was.
bool acceptPending(int signal) {
  const sigset_t one = signalSet({signal});
  const timespec atOnce{};
  return sigtimedwait(&one, nullptr, &atOnce) == signal;
}

/// Has `signal`, which is pending, delivered: the program stops here, and goes on when it is
/// continued, or ends. If it has been continued already, the system has discarded the stop.
void deliverPending(int signal) {
  const sigset_t one = signalSet({signal});
  sigset_t before;
  pthread_sigmask(SIG_UNBLOCK, &one, &before);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

class TerminalLineEditor {
 public:
  /// Null if there is no terminal to edit on.
  static TerminalLineEditor* start();

  Edited edit(const std::string& prompt, const LineAids& aids, std::string& line);
  void remember(const std::string& line) { recall_.remember(line); }

 private:
  TerminalLineEditor() = default;
  bool prepare(const char* terminal);

  void beginEditing();
  void endEditing();
  bool wasInterrupted() const;
  bool isAnswer() const { return aids_->complete == nullptr; }  // only command lines have aids
  Edited endWithoutLine();

  int readCharacter(wchar_t& character);
  bool handle(wchar_t key);
  void readTypedAheadLine();
  bool readByte(char& byte);
  bool readNext(char& byte);
  bool readKey(wchar_t& key, bool escapeAlone = false);
  void readPasteEnd();
  static bool comesWithin(std::chrono::milliseconds time);
  bool moreFollows() const;
  static int bytesToBeRead();
  bool waitForByte();
  void handleTerminalSignals();
  void letStop(int signal);
  void startAgain();

  bool act(wchar_t key);
  bool search(wchar_t& key);
  bool moveOrErase(wchar_t key);
  void keepForUndo(wchar_t key);

  class AsForACommand;
  void showOverview(const std::function<std::string()>& overview, bool mayWait);
  void show(const std::string& overview);

  void completeWord();
  void list(const std::vector<std::string>& items);

  void replaceOrRing(const std::optional<EditedLine>& line);

  TerminalSize size() const;
  void draw();
  void leave();
  static void put(const std::string& output) { std::cout << output << std::flush; }
  void askForPasteMarks(bool on);

  LibeditLine line_{[this](wchar_t& key) { return readCharacter(key); }};
  int signals_ = -1;
  TerminalMode mode_;
  TerminalDescription terminal_{};
  bool marksPastes_ = false;  ///< whether the terminal is asked to
  LineScreen screen_{{}};
  std::wstring erased_{};  ///< what was erased last
  KeyReader keys_{[this](char& byte) { return readByte(byte); }, comesWithin};
  LineRecall recall_{};
  TypedAhead typedAhead_{};
  LineEnds lineEnds_{};
  std::string typedAheadLine_{};  ///< read in canonical mode
  bool atEnd_ = false;
  bool cameInUsualMode_ = false;  ///< the byte that was read last
  bool cameAtOnce_ = false;       ///< likewise

  // The line being edited.
  std::wstring prompt_{};
  std::wstring note_{};  ///< shown below it
  const LineAids* aids_ = nullptr;
  LineUndo undo_{};
  bool endTyped_ = false;       ///< whether a key has ended the input
  std::exception_ptr ended_{};  ///< what ended it
};

// ---- starting

// Never ended: that would discard what was typed ahead for the program that comes next.
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
  const sigset_t signals = terminalSignals();
  signals_ = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
  const auto description = signals_ < 0 ? std::nullopt : line_.start(terminal);
  if (!description) {
    return false;
  }
  terminal_ = *description;
  screen_ = LineScreen(terminal_.abilities);
  recall_.readEarlierLines();
  return true;
}

// ---- a line

Edited TerminalLineEditor::edit(const std::string& prompt, const LineAids& aids,
                                std::string& line) {
  line.clear();
  if (atEnd_) {
    return Edited::End;
  }
  prompt_ = lettersOf(prompt);
  aids_ = &aids;
  recall_.begin();
  undo_.begin();
  endTyped_ = false;
  ended_ = nullptr;
  std::cout.flush();

  const BlockedSignals blocked(terminalSignals());
  beginEditing();  // before the prompt, so that what is typed on seeing it is not echoed twice
  screen_.begin(size().rows, size().columns);
  const char* const result = line_.read();
  askForPasteMarks(false);
  note_.clear();  // of a search that it has ended
  if (result != nullptr) {
    line.assign(result, std::string_view(result).find('\n'));
    leave();
  } else if (ended_ != nullptr) {
    draw();
    put(wasInterrupted() ? "^C" : "");
    put(screen_.leave());
  } else if (endTyped_) {
    draw();
    put("^D");
  }
  endEditing();
  return result != nullptr ? Edited::Line : endWithoutLine();
}

/// Changes the mode. A line that was typed ahead while a command ran, in canonical mode, is read
/// before: there Ctrl-D on an empty line is an end of file, and in the other mode a zero like one
/// that was typed as such. Further lines are left, as they may be for another program.
void TerminalLineEditor::beginEditing() {
  if (TerminalMode::isCanonical() && typedAhead_.count() == 0 &&
      comesWithin(std::chrono::milliseconds(0))) {
    readTypedAheadLine();
    if (comesWithin(std::chrono::milliseconds(0)) && bytesToBeRead() == 0) {
      readTypedAheadLine();  // nothing but an end of file
    }
  }
  mode_.change();
  typedAhead_.thereAre(bytesToBeRead(), true);
}

void TerminalLineEditor::readTypedAheadLine() {
  std::array<char, 4096> line{};  // the longest that Linux has
  const ssize_t count = read(STDIN_FILENO, line.data(), line.size());
  if (count == 0) {
    typedAheadLine_ += static_cast<char>(key::kEndOfInput);
  } else if (count > 0) {
    typedAheadLine_.append(line.data(), static_cast<std::size_t>(count));
  }
}

void TerminalLineEditor::endEditing() {
  askForPasteMarks(false);
  typedAhead_.thereAre(bytesToBeRead(), false);
  mode_.restore();
}

/// Whether the line was, and not the program.
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
    lineEnds_.setInPaste(false);  // the key has discarded the rest
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

// ---- reading

/// Returns what libedit expects: 1 for a character, 0 at the end, or -1. Nothing may be thrown
/// through libedit.
int TerminalLineEditor::readCharacter(wchar_t& character) {
  try {
    while (readKey(character)) {
      if (character == key::kSearch && !search(character)) {
        return 0;
      }
      if (!handle(character)) {
        line_.makeRoomForKey();
        endTyped_ = character == key::kEndOfInput && line_.length() == 0;
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
    lineEnds_.ended({static_cast<char>(key), cameInUsualMode_, cameAtOnce_, moreFollows()});
    readPasteEnd();
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
      completeWord();
      return true;
    case key::kF2:
      showOverview(aids_->f2, true);
      return true;
    case key::kF3:
      showOverview(aids_->f3, false);
      return true;
    case key::kClearScreen:
      put(screen_.clear());
      return true;
    default:
      return false;
  }
}

/// Waits for a key. Where a paste begins and ends is only noted: its lines run as if typed. A tab
/// in it is a blank.
bool TerminalLineEditor::readKey(wchar_t& key, bool escapeAlone) {
  while (keys_.read(key, escapeAlone)) {
    if (key != key::kPasteBegins && key != key::kPasteEnds) {
      key = key == key::kTab && lineEnds_.inPaste() ? L' ' : key;
      return true;
    }
    lineEnds_.setInPaste(key == key::kPasteBegins);
    undo_.endRow();  // one undoes what was pasted apart from what was typed
  }
  return false;
}

/// Reads the mark behind the last line of a paste, if that is all there is: the line may be the one
/// that leaves the terminal to another program.
void TerminalLineEditor::readPasteEnd() {
  constexpr std::string_view kMark = "\x1b[201~";
  if (!lineEnds_.inPaste() || !typedAheadLine_.empty() || !moreFollows()) {
    return;
  }
  std::string rest(static_cast<std::size_t>(bytesToBeRead()), '\0');
  if (rest.size() < kMark.size() || rest.size() > kMark.size() + 1) {
    return;
  }
  const ssize_t count = read(STDIN_FILENO, rest.data(), rest.size());
  rest.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  for (std::size_t byte = 0; byte < rest.size(); ++byte) {
    typedAhead_.take();
  }
  if (rest == kMark || rest == "\r" + std::string(kMark) || rest == "\n" + std::string(kMark)) {
    lineEnds_.setInPaste(false);
    lineEnds_.forget();
  } else {
    typedAheadLine_ = rest;
  }
}

bool TerminalLineEditor::readByte(char& byte) {
  while (true) {
    const bool atOnce = !typedAheadLine_.empty() || waitForByte();
    const bool isAhead = !typedAheadLine_.empty();
    if (!readNext(byte)) {
      return false;
    }
    const bool usualMode = isAhead || typedAhead_.take();
    if (usualMode && isAnswer() && !lineEnds_.inPaste()) {
      lineEnds_.forget();  // an answer is not to be guessed
    }
    // The line feed is left until here: behind the last line it may be for another program.
    if (!lineEnds_.areCompletedBy(byte, usualMode, [this] { return moreFollows(); })) {
      cameInUsualMode_ = usualMode;
      cameAtOnce_ = atOnce;
      return true;
    }
  }
}

/// Reads the byte that is there.
bool TerminalLineEditor::readNext(char& byte) {
  if (!typedAheadLine_.empty()) {
    byte = typedAheadLine_.front();
    typedAheadLine_.erase(0, 1);
    return true;
  }
  while (true) {
    const ssize_t count = read(STDIN_FILENO, &byte, 1);
    if (count >= 0 || (errno != EINTR && errno != EAGAIN)) {
      return count > 0;
    }
    waitForByte();
  }
}

/// Whether something is there to be read, or comes within `time`.
bool TerminalLineEditor::comesWithin(std::chrono::milliseconds time) {
  pollfd input{STDIN_FILENO, POLLIN, 0};
  return poll(&input, 1, static_cast<int>(time.count())) == 1;
}

/// Whether something comes at once, as the rest of a paste does.
bool TerminalLineEditor::moreFollows() const {
  constexpr std::chrono::milliseconds kBetweenBytesOfAPaste(10);  // on a slow line
  return !typedAheadLine_.empty() || comesWithin(kBetweenBytesOfAPaste);
}

int TerminalLineEditor::bytesToBeRead() {
  int count = 0;
  ioctl(STDIN_FILENO, FIONREAD, &count);
  return count;
}

/// Returns whether it was there at once. A paste does not pause for long: its end was lost then, as
/// when an interrupt has discarded it.
bool TerminalLineEditor::waitForByte() {
  constexpr std::chrono::seconds kLongestPauseInAPaste(1);
  const auto begin = std::chrono::steady_clock::now();
  pollfd input{STDIN_FILENO, POLLIN, 0};
  const bool atOnce = poll(&input, 1, 0) == 1;
  if (!atOnce) {
    draw();  // not before: a paste is shown at once
  }
  while (true) {
    askForPasteMarks(marksPastes_ || !atOnce);  // not between lines that are there already
    std::array<pollfd, 2> inputs{{{STDIN_FILENO, POLLIN, 0}, {signals_, POLLIN, 0}}};
    waitForTyping(inputs);
    if (std::chrono::steady_clock::now() - begin > kLongestPauseInAPaste) {
      lineEnds_.setInPaste(false);
    }
    if (inputs[1].revents == 0) {
      return atOnce;
    }
    handleTerminalSignals();
    if (!typedAheadLine_.empty()) {
      return false;  // typed while the program was stopped
    }
  }
}

void TerminalLineEditor::handleTerminalSignals() {
  if (acceptPending(SIGWINCH)) {
    put(screen_.resize(size().rows, size().columns));
    draw();
  }
  if (acceptPending(SIGCONT)) {
    startAgain();
  }
  for (const int signal : {SIGTSTP, SIGQUIT}) {
    if (isPending(signal)) {
      letStop(signal);
    }
  }
}

/// Lets `signal` stop or end the program, with the terminal in the mode in which it was found.
void TerminalLineEditor::letStop(int signal) {
  endEditing();
  deliverPending(signal);
  throwIfSignalled();
  startAgain();
}

/// Edits on after the program was stopped: whoever had the terminal meanwhile may have changed it.
void TerminalLineEditor::startAgain() {
  beginEditing();
  screen_.begin(size().rows, size().columns);
  put("\r");
  draw();
}

// ---- earlier lines

/// Lets the person look for an earlier line by a part of it. Returns false at the end of input;
/// else `key` is the one with which to go on.
bool TerminalLineEditor::search(wchar_t& key) {
  keepForUndo(key);
  const std::size_t from = recall_.place();
  const std::wstring line = line_.text();
  recall_.leave(line);
  LineSearch search(recall_.history());
  note_ = search.note();
  while (readKey(key, true)) {
    if (!search.take(key)) {
      note_.clear();
      if (key == key::kGiveUp) {
        recall_.goTo(from);
        line_.replace({line, line.size()});
      }
      line_.refresh();
      return true;
    }
    note_ = search.note();
    if (search.place()) {
      recall_.goTo(search.place()->line);
      line_.replace({recall_.history()[search.place()->line], search.place()->column});
    }
  }
  return false;
}

// ---- moving and erasing

/// Returns whether `key` is one that does so.
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

// ---- looking

/// For its lifetime, the terminal is as it is while a command runs: its keys interrupt and stop the
/// program, and it shows what is typed ahead.
class TerminalLineEditor::AsForACommand {
 public:
  explicit AsForACommand(TerminalLineEditor& editor) : editor_(editor) {
    editor_.endEditing();
    const sigset_t signals = terminalSignals();
    pthread_sigmask(SIG_UNBLOCK, &signals, &blocked_);
  }
  ~AsForACommand() {
    pthread_sigmask(SIG_SETMASK, &blocked_, nullptr);
    editor_.beginEditing();
  }
  AsForACommand(const AsForACommand&) = delete;
  AsForACommand& operator=(const AsForACommand&) = delete;

 private:
  TerminalLineEditor& editor_;
  sigset_t blocked_{};
};

/// Shows what `overview` returns below the line, and the line below it.
void TerminalLineEditor::showOverview(const std::function<std::string()>& overview, bool mayWait) {
  if (overview == nullptr) {
    put("\a");
    return;
  }
  askForPasteMarks(false);
  draw();
  put(screen_.leave());
  try {
    std::string text;
    {
      std::optional<AsForACommand> whileItWaits;
      if (mayWait) {
        whileItWaits.emplace(*this);
      }
      text = overview();
      throwIfSignalled();
    }
    show(text);
  } catch (const EndedBySignal&) {
    if (!isInterrupted()) {
      throw;
    }
    forgetInterrupt();
    put("\n");
  } catch (const std::exception&) {
    put("\a");  // no memory for it
  }
  screen_.begin(size().rows, size().columns);
}

/// Shows an overview as it is, or in a pager if the screen has no room for it and the line.
void TerminalLineEditor::show(const std::string& overview) {
  const TerminalSize screen = size();
  std::size_t rows = rowsOf(prompt_ + line_.text() + L' ', screen.columns);  // and the cursor
  for (std::size_t begin = 0; begin < overview.size();) {
    const std::size_t end = std::min(overview.find('\n', begin), overview.size());
    rows += rowsOf(lettersOf(overview.substr(begin, end - begin)), screen.columns);
    begin = end + 1;
  }
  if (rows > screen.rows) {
    const TerminalLent lent(mode_);
    if (showInPager(overview)) {
      return;
    }
  }
  put(overview);
}

// ---- completing

void TerminalLineEditor::completeWord() {
  const std::wstring line = line_.text();
  const std::string begun = bytesOf(line.substr(0, line_.cursor()));
  std::vector<Candidate> candidates;
  try {
    candidates = aids_->complete == nullptr ? candidates : aids_->complete(begun);
  } catch (const std::exception&) {
    candidates.clear();
  }
  if (candidates.empty()) {
    put("\a");
    return;
  }
  const bool blankFollows = line_.cursor() < line.size() && line[line_.cursor()] == L' ';
  const Completion completion = lineup::completeWord(begun, blankFollows, candidates);
  if (!completion.listed.empty()) {
    list(completion.listed);
  }
  line_.eraseBefore(completion.erased);
  line_.insert(completion.inserted);
}

/// Shows `items` below the line, and the line below them.
void TerminalLineEditor::list(const std::vector<std::string>& items) {
  constexpr std::size_t kLeastLines = 5;
  const std::size_t height = std::max(kLeastLines + 2, screen_.rows()) - 2;
  const std::size_t width = std::max<std::size_t>(screen_.columns(), 2) - 1;
  draw();
  put(screen_.leave());
  put(listInColumns(items, width, height));
}

void TerminalLineEditor::replaceOrRing(const std::optional<EditedLine>& line) {
  if (line) {
    line_.replace(*line);
  } else {
    put("\a");
  }
}

// ---- the screen

TerminalSize TerminalLineEditor::size() const {
  TerminalSize size = terminalSize(terminal_.usualSize);
  size.columns -= terminal_.sparesLastColumn && size.columns > 1 ? 1 : 0;
  return size;
}

/// Has the terminal mark what is pasted ("bracketed paste"), or no longer.
void TerminalLineEditor::askForPasteMarks(bool on) {
  if (terminal_.canMarkPastes && on != marksPastes_) {
    marksPastes_ = on;
    put(on ? "\x1b[?2004h" : "\x1b[?2004l");
  }
}

void TerminalLineEditor::draw() {
  put(screen_.show(prompt_ + line_.text(), prompt_.size() + line_.cursor(), note_));
}

/// Shows the line as it was entered, and leaves it.
void TerminalLineEditor::leave() {
  std::wstring line = line_.text();
  if (!line.empty() && line.back() == L'\n') {
    line.pop_back();
  }
  put(screen_.show(prompt_ + line, prompt_.size() + line.size()));
  put(screen_.leave());
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
