#include <sys/time.h>
#include <unistd.h>

#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>
#include <system_error>
#include <thread>

#include "ctl/commands.h"
#include "ctl/sources.h"
#include "support/signal_sets.h"

namespace lineup::ctl {

namespace {

char runOutLine[128];

/// Ends the program at the end of the time, whatever it waits in.
void runOut(int /*signal*/) {
  [[maybe_unused]] const ssize_t written =
      write(STDERR_FILENO, runOutLine, std::strlen(runOutLine));
  _exit(kDiffers);
}

/// Has SIGALRM end the program by runOut(), also where it was started with the signal blocked or
/// pending.
void listenForAlarm() {
  std::signal(SIGALRM, SIG_IGN);  // which discards a pending one
  std::signal(SIGALRM, runOut);
  const sigset_t alarm = signalSet({SIGALRM});
  sigprocmask(SIG_UNBLOCK, &alarm, nullptr);
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
  std::snprintf(runOutLine, sizeof(runOutLine), "lineupctl: %s: no answer within %.40s s\n",
                controllerPlace().c_str(), text.c_str());
  listenForAlarm();
  const auto whole = static_cast<time_t>(seconds);
  const auto rest = static_cast<suseconds_t>((seconds - static_cast<double>(whole)) * 1e6);
  const itimerval timer{{0, 0}, {whole, whole == 0 && rest == 0 ? 1 : rest}};
  setitimer(ITIMER_REAL, &timer, nullptr);
}

bool answers() {
  try {
    runningConfig();
    return true;
  } catch (const Failure&) {
    return false;
  }
}

}  // namespace

Status waitForController(const Arguments& arguments) {
  constexpr std::chrono::milliseconds kPause(100);
  if (arguments.has("timeout")) {
    limitTime(arguments.value("timeout", ""));
  }
  while (!answers()) {
    std::this_thread::sleep_for(kPause);
  }
  return kDone;
}

}  // namespace lineup::ctl
