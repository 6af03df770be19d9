#include "simulator/faults.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <regex>
#include <stdexcept>

namespace lineup::simulator {
namespace {

constexpr const char* kAll = "all";
constexpr std::array kCalls = {"getHeadendConfig",
                               "getHeadendStatus",
                               "setHeadendConfig",
                               "setTDTRFInputConfig",
                               "setSATRFInputConfig",
                               "setLineupConfig",
                               "setHeadendGlobalConfig",
                               "setRFInputsScanConfig",
                               "validateHeadendConfig",
                               "orderRFInputsScan",
                               "resetHeadend",
                               "resetFactoryDefaults",
                               kAll};

}  // namespace

Fault parseFault(const std::string& option, FaultKind kind, const std::string& text) {
  static const std::regex kForm(R"(([A-Za-z]+)(:([1-9]\d{0,8}))?(=(\d{1,5}(\.\d{1,3})?))?)");
  std::smatch parts;
  const bool delays = kind == FaultKind::DELAY;
  if (!std::regex_match(text, parts, kForm) || parts[5].matched != delays) {
    throw std::invalid_argument(option + " needs CALL[:N]" + (delays ? "=SECONDS" : "") +
                                ", not '" + text + "'");
  }
  Fault fault{kind, parts[1]};
  if (std::find(kCalls.begin(), kCalls.end(), fault.call) == kCalls.end()) {
    throw std::invalid_argument(option + " needs the name of a call or 'all', not '" + fault.call +
                                "'");
  }
  if (parts[3].matched) fault.number = std::stoi(parts[3]);
  if (delays) {
    fault.delay = std::chrono::milliseconds(static_cast<int>(std::stod(parts[5]) * 1000 + 0.5));
  }
  return fault;
}

Faults::Verdict Faults::begin(const std::string& call) {
  std::unique_lock lock(mutex_);
  std::map<std::string, int> numbers{{call, ++calls_[call]}, {kAll, ++calls_[kAll]}};
  Verdict verdict;
  std::chrono::milliseconds delay{0};
  for (const Fault& fault : faults_) {
    const auto number = numbers.find(fault.call);
    if (number == numbers.end() || (fault.number != 0 && fault.number != number->second)) continue;
    delay += fault.delay;
    verdict.refused |= fault.kind == FaultKind::REFUSE;
    verdict.broken |= fault.kind == FaultKind::BREAK;
  }
  ended_.wait_for(lock, delay, [this] { return delaysEnded_; });
  return verdict;
}

void Faults::endDelays() {
  const std::lock_guard lock(mutex_);
  delaysEnded_ = true;
  ended_.notify_all();
}

}  // namespace lineup::simulator
