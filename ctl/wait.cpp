#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <charconv>
#include <chrono>
#include <csignal>
#include <string>
#include <system_error>
#include <thread>

#include "ctl/commands.h"
#include "ctl/controller.h"
#include "support/signal_sets.h"

namespace lineup::ctl {

namespace {

/// What the handler prints. The next line is made in the string that it does not point to.
std::string runOutLines[2];
std::atomic<const std::string*> runOutLine = runOutLines;

void setRunOutLine(const std::string& message) {
  std::string& free = runOutLines[runOutLine == &runOutLines[0] ? 1 : 0];
  free = failureLine(message);
  runOutLine = &free;
}

/// Ends the program when the time is up, whatever it waits for.
void runOut(int /*signal*/) {
  const std::string& line = *runOutLine;
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
  _exit(kDiffers);
}

/// Makes runOut() the handler of SIGALRM, also where the program was started with the signal
/// blocked or pending.
void listenForAlarm() {
  std::signal(SIGALRM, SIG_IGN);  // which discards a pending one
  std::signal(SIGALRM, runOut);
  const sigset_t alarm = signalSet({SIGALRM});
  sigprocmask(SIG_UNBLOCK, &alarm, nullptr);
}

std::string noAnswerWithin(const std::string& seconds) {
  return controllerPlace() + ": no answer within " + seconds + " s";
}

/// Starts the clock for `text`, a number of seconds greater than 0.
void limitTime(const std::string& text) {
  double seconds = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), seconds);
  constexpr double kMost = 1e9;
  if (result.ec != std::errc() || result.ptr != text.data() + text.size() || !(seconds > 0) ||
      seconds > kMost) {
    throw Failure(kUsage, "--timeout: \"" + text + "\" is no number of seconds");
  }
  setRunOutLine(noAnswerWithin(text));
  listenForAlarm();
  const auto whole = static_cast<time_t>(seconds);
  const auto rest = static_cast<suseconds_t>((seconds - static_cast<double>(whole)) * 1e6);
  const itimerval timer{{0, 0}, {whole, whole == 0 && rest == 0 ? 1 : rest}};
  setitimer(ITIMER_REAL, &timer, nullptr);
}

/// Whether the controller answers as it should. If it answers otherwise, that is what is said when
/// the time of `seconds` is over.
bool answers(const std::string& seconds) {
  try {
    runningConfig();
    return true;
  } catch (const Unreachable&) {
    setRunOutLine(noAnswerWithin(seconds));
  } catch (const Failure& failure) {
    setRunOutLine(failure.what() + ("; no better answer within " + seconds + " s"));
  }
  return false;
}

}  // namespace

Status waitForController(const Arguments& arguments) {
  constexpr std::chrono::milliseconds kPause(100);
  const std::string seconds = arguments.value("timeout", "");
  if (arguments.has("timeout")) {
    limitTime(seconds);
  }
  while (!answers(seconds)) {
    std::this_thread::sleep_for(kPause);
  }
  const itimerval none{};
  setitimer(ITIMER_REAL, &none, nullptr);
  return kDone;
}

}  // namespace lineup::ctl
