// The mode and the size of the terminal that standard input is.

#pragma once

#include <sys/ioctl.h>
#include <termios.h>

#include <cstddef>

namespace lineup {

/// The mode in which the terminal was found.
class TerminalMode {
 public:
  /// Keeps the mode that the terminal has now. If standard input is no terminal, this and the
  /// functions below do nothing.
  void keep();

  /// Keeps the mode, unless it is still the one that this has set, and changes it to one in which
  /// keys arrive as they are typed, Return and line feed apart, and are not shown. Signals are
  /// still sent by their keys.
  void change();

  /// Whether the terminal is in canonical mode now.
  static bool isCanonical();

  /// Goes back to the mode that was kept. Nothing that was typed is discarded.
  void restore();

 private:
  friend class ModeBeforeEditing;
  termios forEditing() const;
  void set(const termios& mode) const;

  termios mode_{};
  bool kept_ = false;
};

/// For its lifetime, the terminal is in the mode that was kept, for another program. The
/// mode that the other program leaves is not kept.
class ModeBeforeEditing {
 public:
  /// `mode` has to outlive it.
  explicit ModeBeforeEditing(const TerminalMode& mode);
  ~ModeBeforeEditing();
  ModeBeforeEditing(const ModeBeforeEditing&) = delete;
  ModeBeforeEditing& operator=(const ModeBeforeEditing&) = delete;

 private:
  const TerminalMode& mode_;
};

struct TerminalSize {
  std::size_t rows;
  std::size_t columns;
};

/// The terminal's size, at least 1 by 1 and at most 1000 by 1000: a larger one is a mistake. Where
/// the terminal does not know, `otherwise`.
TerminalSize terminalSize(const TerminalSize& otherwise);

/// A terminal of more than 1000 rows or columns has that size for its lifetime, for code that would
/// take memory for each of them.
class TerminalSizeBounded {
 public:
  TerminalSizeBounded();
  ~TerminalSizeBounded();
  TerminalSizeBounded(const TerminalSizeBounded&) = delete;
  TerminalSizeBounded& operator=(const TerminalSizeBounded&) = delete;

 private:
  winsize size_{};
  bool beyond_ = false;
};

}  // namespace lineup
