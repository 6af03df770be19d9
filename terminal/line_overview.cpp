#include "terminal/line_overview.h"

#include <exception>
#include <optional>

#include "support/ending_signals.h"
#include "support/signal_sets.h"
#include "terminal/pager.h"
#include "terminal/terminal_mode.h"

namespace lineup {

namespace {

/// For its lifetime, `input` is not read.
class InputEnded {
 public:
  explicit InputEnded(TerminalInput& input) : input_(input) { input_.end(); }
  ~InputEnded() { input_.begin(); }
  InputEnded(const InputEnded&) = delete;
  InputEnded& operator=(const InputEnded&) = delete;

 private:
  TerminalInput& input_;
};

std::string textOf(const std::function<std::string()>& overview, bool mayWait,
                   TerminalInput& input) {
  std::optional<InputEnded> ended;
  std::optional<SignalMask> unblocked;
  if (mayWait) {
    ended.emplace(input);
    unblocked.emplace(SIG_UNBLOCK, terminalSignals());
  }
  std::string text = overview();
  throwIfSignalled();
  return text;
}

bool showInPagerOf(const TerminalMode& mode, const std::string& text) {
  const ModeBeforeEditing modeOfThePager(mode);
  return showInPager(text);
}

}  // namespace

void showOverview(const std::function<std::string()>& overview, bool mayWait, LineDisplay& display,
                  TerminalInput& input) {
  if (overview == nullptr) {
    LineDisplay::ring();
    return;
  }
  display.markPastes(false);
  display.leave();
  try {
    const std::string text = textOf(overview, mayWait, input);
    if (display.hasRoomFor(text) || !showInPagerOf(input.mode(), text)) {
      LineDisplay::put(text);
    }
  } catch (const EndedBySignal&) {
    if (!isInterrupted()) {
      throw;
    }
    forgetInterrupt();
    LineDisplay::put("\n");
  } catch (const std::exception&) {
    LineDisplay::ring();  // COVERAGE_EXCL_LINE: no memory for it
  }
  display.begin();
}

}  // namespace lineup
