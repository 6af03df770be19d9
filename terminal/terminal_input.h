// Reading keys from the terminal that standard input is: what was typed ahead, pastes, line ends.

#pragma once

#include <functional>
#include <string>

#include "terminal/terminal_keys.h"
#include "terminal/terminal_mode.h"
#include "terminal/typed_ahead.h"

namespace lineup {

/// The keys that are typed or pasted. Where lines end with Return and line feed, the two are one.
class TerminalInput {
 public:
  /// `beforeWaiting` is called, perhaps more than once, where nothing is there to be read yet.
  /// `handleSignals` is called when one of terminalSignals() is pending while input is waited for;
  /// it may end editing and begin it again. Both may throw, through readKey().
  TerminalInput(std::function<void()> beforeWaiting, std::function<void()> handleSignals);
  TerminalInput(const TerminalInput&) = delete;
  TerminalInput& operator=(const TerminalInput&) = delete;

  /// To be called once, before anything else. Returns whether signals can be waited for.
  bool start();

  /// Changes the terminal's mode to that for editing. Nothing that was typed ahead is lost.
  void begin();

  /// Restores the mode in which begin() found the terminal.
  void end();

  /// What is read now is a line of this kind. An answer is not to be guessed: a line feed that was
  /// typed ahead is one.
  void setReadsAnswer(bool readsAnswer) { readsAnswer_ = readsAnswer; }

  /// Waits for a key; false at the end of input. kPasteBegins and kPasteEnds are among them: the
  /// lines between run as if typed, but a tab there is a blank. For `escapeAlone` see
  /// KeyReader::read(). Throws EndedBySignal as soon as a signal is caught.
  bool readKey(wchar_t& key, bool escapeAlone);

  /// The key that was read last, a Return or a line feed, ends a line. Reads the mark after a
  /// paste that ends with it.
  void lineEnded(wchar_t key);

  /// What is read next is not pasted.
  void forgetPaste() { lineEnds_.setInPaste(false); }

  /// The mode in which begin() has found the terminal.
  const TerminalMode& mode() const { return mode_; }

 private:
  void readTypedAheadLine();
  bool readByte(char& byte);
  bool readNext(char& byte);
  bool waitForByte();
  bool moreFollows() const;
  void readPasteEnd();

  std::function<void()> beforeWaiting_;
  std::function<void()> handleSignals_;
  int signals_ = -1;  ///< can be read when one is pending
  TerminalMode mode_{};
  TypedAhead typedAhead_{};
  std::string typedAheadLine_{};  ///< read in canonical mode
  LineEnds lineEnds_{};
  KeyReader keys_;
  bool readsAnswer_ = false;
  bool cameInUsualMode_ = false;  ///< the byte that was read last
  bool cameAtOnce_ = false;       ///< likewise
};

}  // namespace lineup
