#include "terminal/terminal_input.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <string_view>
#include <utility>

#include "support/signal_sets.h"
#include "terminal/line_input.h"

namespace lineup {

namespace {

using std::chrono::milliseconds;

/// Whether something is there to be read, or comes within `time`.
bool comesWithin(milliseconds time) {
  pollfd input{STDIN_FILENO, POLLIN, 0};
  return poll(&input, 1, static_cast<int>(time.count())) == 1;
}

int bytesToBeRead() {
  int count = 0;
  ioctl(STDIN_FILENO, FIONREAD, &count);
  return count;
}

}  // namespace

TerminalInput::TerminalInput(std::function<void()> beforeWaiting,
                             std::function<void()> handleSignals)
    : beforeWaiting_(std::move(beforeWaiting)),
      handleSignals_(std::move(handleSignals)),
      keys_([this](char& byte) { return readByte(byte); }, comesWithin) {}

bool TerminalInput::start() {
  const sigset_t signals = terminalSignals();
  signals_ = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
  return signals_ >= 0;
}

/// A line that was typed ahead while a command ran, in canonical mode, is read before the mode
/// changes: there Ctrl-D on an empty line is an end of file, and in the other mode a zero like one
/// that was typed as such. Further lines are left, as they may be for another program.
void TerminalInput::begin() {
  if (TerminalMode::isCanonical() && typedAhead_.count() == 0 && comesWithin(milliseconds(0))) {
    readTypedAheadLine();
    if (comesWithin(milliseconds(0)) && bytesToBeRead() == 0) {
      readTypedAheadLine();  // nothing but an end of file
    }
  }
  mode_.change();
  typedAhead_.thereAre(bytesToBeRead(), true);
}

void TerminalInput::readTypedAheadLine() {
  std::array<char, 4096> line{};  // the longest that Linux has
  const ssize_t count = read(STDIN_FILENO, line.data(), line.size());
  if (count == 0) {
    typedAheadLine_ += static_cast<char>(key::kEndOfInput);
  } else if (count > 0) {
    typedAheadLine_.append(line.data(), static_cast<std::size_t>(count));
  }
}

void TerminalInput::end() {
  typedAhead_.thereAre(bytesToBeRead(), false);
  mode_.restore();
}

bool TerminalInput::readKey(wchar_t& key, bool escapeAlone) {
  if (!keys_.read(key, escapeAlone)) {
    return false;
  }
  if (key == key::kPasteBegins || key == key::kPasteEnds) {
    lineEnds_.setInPaste(key == key::kPasteBegins);
  } else if (key == key::kTab && lineEnds_.inPaste()) {
    key = L' ';
  }
  return true;
}

bool TerminalInput::readByte(char& byte) {
  while (true) {
    const bool atOnce = !typedAheadLine_.empty() || waitForByte();
    const bool isAhead = !typedAheadLine_.empty();
    if (!readNext(byte)) {
      return false;
    }
    const bool usualMode = isAhead || typedAhead_.take();
    if (usualMode && readsAnswer_ && !lineEnds_.inPaste()) {
      lineEnds_.forget();
    }
    // The line feed is left until here: after the last line it may be for another program.
    if (!lineEnds_.areCompletedBy(byte, usualMode, [this] { return moreFollows(); })) {
      cameInUsualMode_ = usualMode;
      cameAtOnce_ = atOnce;
      return true;
    }
  }
}

/// Reads the byte that is there.
bool TerminalInput::readNext(char& byte) {
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

/// Returns whether it was there at once. Where a paste pauses for long its end was lost, as when an
/// interrupt has discarded it. A bad line over SSH pauses for seconds within a paste, whose rest
/// would be taken for typed; waiting longer costs only that a lost end is noticed later.
bool TerminalInput::waitForByte() {
  constexpr std::chrono::seconds kLongestPauseInAPaste(5);
  const auto begin = std::chrono::steady_clock::now();
  const bool atOnce = comesWithin(milliseconds(0));
  while (true) {
    if (!atOnce) {
      beforeWaiting_();
    }
    std::array<pollfd, 2> inputs{{{STDIN_FILENO, POLLIN, 0}, {signals_, POLLIN, 0}}};
    waitForTyping(inputs);
    if (std::chrono::steady_clock::now() - begin > kLongestPauseInAPaste) {
      lineEnds_.setInPaste(false);
    }
    if (inputs[1].revents == 0) {
      return atOnce;
    }
    handleSignals_();
    if (!typedAheadLine_.empty()) {
      return false;  // typed while the program was stopped
    }
  }
}

/// Whether something comes at once, as the rest of a paste does.
bool TerminalInput::moreFollows() const {
  constexpr milliseconds kBetweenBytesOfAPaste(10);  // on a slow line
  return !typedAheadLine_.empty() || comesWithin(kBetweenBytesOfAPaste);
}

void TerminalInput::lineEnded(wchar_t key) {
  lineEnds_.ended({static_cast<char>(key), cameInUsualMode_, cameAtOnce_, moreFollows()});
  readPasteEnd();
}

/// Reads the mark after the last line of a paste, if that is all there is: the line may be the one
/// that leaves the terminal to another program.
void TerminalInput::readPasteEnd() {
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

}  // namespace lineup
