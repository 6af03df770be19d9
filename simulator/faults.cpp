#include "simulator/faults.h"

#include <regex.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
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

std::string namesOfCalls() {
  std::string names;
  for (const char* call : kCalls) {
    names += (names.empty() ? "" : ", ") + std::string(call);
  }
  return names;
}

/// CALL[:N][=SECONDS]; what is left out is empty.
struct Parts {
  std::string call;
  std::string number;
  std::string seconds;
};

/// Nothing if `text` is not of that form.
std::optional<Parts> partsOf(const std::string& text) {
  constexpr char kForm[] = "^([A-Za-z]+)(:([1-9][0-9]{0,8}))?(=([0-9]{1,5}(\\.[0-9]{1,3})?))?$";
  std::array<regmatch_t, 7> matches{};
  regex_t form;
  regcomp(&form, kForm, REG_EXTENDED);
  const int result = regexec(&form, text.c_str(), matches.size(), matches.data(), 0);
  regfree(&form);
  if (result != 0) {
    return {};
  }
  const auto part = [&](const regmatch_t& match) {
    return match.rm_so < 0 ? std::string()
                           : text.substr(static_cast<std::size_t>(match.rm_so),
                                         static_cast<std::size_t>(match.rm_eo - match.rm_so));
  };
  return Parts{part(matches[1]), part(matches[3]), part(matches[5])};
}

}  // namespace

Fault parseFault(const std::string& option, FaultKind kind, const std::string& text) {
  const bool delays = kind == FaultKind::Delay;
  const std::optional<Parts> parts = partsOf(text);
  if (!parts || parts->seconds.empty() == delays) {
    throw std::invalid_argument(option + " needs CALL[:N]" + (delays ? "=SECONDS" : "") +
                                ", not '" + text + "'");
  }
  Fault fault{kind, parts->call};
  if (std::find(kCalls.begin(), kCalls.end(), fault.call) == kCalls.end()) {
    throw std::invalid_argument(option + " needs the name of a call, not '" + fault.call +
                                "'; the names are " + namesOfCalls());
  }
  if (!parts->number.empty()) {
    fault.number = std::stoi(parts->number);
  }
  if (delays) {
    fault.delay = std::chrono::milliseconds(std::lround(std::stod(parts->seconds) * 1000));
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
    if (number == numbers.end() || (fault.number != 0 && fault.number != number->second)) {
      continue;
    }
    delay += fault.delay;
    verdict.refused |= fault.kind == FaultKind::Refuse;
    verdict.broken |= fault.kind == FaultKind::Break;
  }
  if (delay.count() > 0) {  // a wait of no time takes the kernel 50 µs
    ended_.wait_for(lock, delay, [this] { return delaysEnded_; });
  }
  return verdict;
}

void Faults::endDelays() {
  const std::lock_guard lock(mutex_);
  delaysEnded_ = true;
  ended_.notify_all();
}

}  // namespace lineup::simulator
