// Faults injected into the simulated headend: calls that are answered late, are refused or lose
// their connection.

#pragma once

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace lineup::simulator {

enum class FaultKind { Delay, Refuse, Break };

struct Fault {
  FaultKind kind;
  std::string call;  ///< the call's name in the interface definition, or "all"
  int number = 0;    ///< which call of that name, from 1 on; 0 for each
  std::chrono::milliseconds delay{0};
};

/// Reads "CALL", "CALL:N" and, for a delay, "CALL=SECONDS" and "CALL:N=SECONDS". Throws
/// std::invalid_argument, which names `option`, for any other text.
Fault parseFault(const std::string& option, FaultKind kind, const std::string& text);

/// Applies faults to calls that it counts. Its operations may be called from several threads.
class Faults {
 public:
  struct Verdict {
    bool refused = false;
    bool broken = false;
  };

  explicit Faults(std::vector<Fault> faults = {}) : faults_(std::move(faults)) {}

  /// Counts a call, waits as long as it is to be delayed, and says what becomes of it.
  Verdict begin(const std::string& call);
  /// Ends the delays, now and from now on.
  void endDelays();

 private:
  const std::vector<Fault> faults_;
  std::mutex mutex_;
  std::condition_variable ended_;
  bool delaysEnded_ = false;
  std::map<std::string, int> calls_;
};

}  // namespace lineup::simulator
