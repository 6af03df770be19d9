#include "terminal/terminal_mode.h"

#include <unistd.h>

#include <algorithm>

namespace lineup {

namespace {

constexpr unsigned short kMost = 1000;

bool isSame(const termios& a, const termios& b) {
  return a.c_iflag == b.c_iflag && a.c_oflag == b.c_oflag && a.c_lflag == b.c_lflag;
}

}  // namespace

void TerminalMode::keep() {
  kept_ = tcgetattr(STDIN_FILENO, &mode_) == 0;
}

void TerminalMode::change() {
  termios now{};
  if (!kept_ || tcgetattr(STDIN_FILENO, &now) != 0 || !isSame(now, forEditing())) {
    keep();
  }
  set(forEditing());
}

bool TerminalMode::isCanonical() {
  termios now{};
  return tcgetattr(STDIN_FILENO, &now) == 0 && (now.c_lflag & ICANON) != 0;
}

termios TerminalMode::forEditing() const {
  termios editing = mode_;
  editing.c_iflag &= ~static_cast<tcflag_t>(ICRNL | INLCR | IGNCR | ISTRIP);
  editing.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | ECHONL | IEXTEN);
  editing.c_cc[VMIN] = 1;
  editing.c_cc[VTIME] = 0;
  return editing;
}

void TerminalMode::restore() {
  set(mode_);
  kept_ = false;
}

/// Output comes first, unless it does not get away.
void TerminalMode::set(const termios& mode) const {
  if (kept_ && tcsetattr(STDIN_FILENO, TCSADRAIN, &mode) != 0) {
    tcsetattr(STDIN_FILENO, TCSANOW, &mode);
  }
}

ModeBeforeEditing::ModeBeforeEditing(const TerminalMode& mode) : mode_(mode) {
  mode_.set(mode_.mode_);
}

ModeBeforeEditing::~ModeBeforeEditing() {
  mode_.set(mode_.forEditing());
}

TerminalSize terminalSize(const TerminalSize& otherwise) {
  winsize size{};
  ioctl(STDIN_FILENO, TIOCGWINSZ, &size);
  return {size.ws_row == 0 ? otherwise.rows : std::min(size.ws_row, kMost),
          size.ws_col == 0 ? otherwise.columns : std::min(size.ws_col, kMost)};
}

TerminalSizeBounded::TerminalSizeBounded() {
  beyond_ = ioctl(STDIN_FILENO, TIOCGWINSZ, &size_) == 0 &&
            (size_.ws_row > kMost || size_.ws_col > kMost);
  if (beyond_) {
    winsize bounded = size_;
    bounded.ws_row = std::min(size_.ws_row, kMost);
    bounded.ws_col = std::min(size_.ws_col, kMost);
    ioctl(STDIN_FILENO, TIOCSWINSZ, &bounded);
  }
}

TerminalSizeBounded::~TerminalSizeBounded() {
  if (beyond_) {
    ioctl(STDIN_FILENO, TIOCSWINSZ, &size_);
  }
}

}  // namespace lineup
