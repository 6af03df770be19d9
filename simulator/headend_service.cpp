#include "simulator/headend_service.h"

#include <cstdint>
#include <exception>
#include <utility>

#include "simulator/config_summary.h"
#include "simulator/initial_state.h"
#include "simulator/messages.h"
#include "simulator/status.h"

namespace lineup::simulator {

namespace {

void report(const char* call, const std::string& text) {
  say(std::string(call) + ": " + text);
}

std::string inputName(general::RFInputId::type id) {
  const auto name = general::_RFInputId_VALUES_TO_NAMES.find(id);
  return name != general::_RFInputId_VALUES_TO_NAMES.end() ? name->second : std::to_string(id);
}

template <class Entry>
bool hasService(const hub_module::LineupConfig& lineup, const Entry& entry) {
  switch (entry.serviceKind) {
    case hub_module::LineupEntryKind::DVB:
      return lineup.dvbInputServices.contains(entry.serviceKey);
    case hub_module::LineupEntryKind::ENC:
      return lineup.encInputServices.contains(entry.serviceKey);
    case hub_module::LineupEntryKind::EMPTY:
      return lineup.emptyInputServices.contains(entry.serviceKey);
  }
  return false;
}

/// What is wrong with `config`; empty if it is in order.
std::string whyInvalid(const hub_module::HeadendConfig& config) {
  const hub_module::LineupConfig& lineup = config.lineupConfig;
  for (const hub_module::LineupRFEntryConfig& entry : lineup.rfEntries) {
    if (!hasService(lineup, entry)) {
      return "an RF entry without a service";
    }
  }
  for (const hub_module::LineupIPEntryConfig& entry : lineup.ipEntries) {
    if (!hasService(lineup, entry)) {
      return "an IP entry without a service";
    }
  }
  const int32_t id = config.headendGlobalConfig.headendId;
  return id < 1 || id > 10 ? "headend id " + std::to_string(id) : "";
}

hub_module::ControllerTaskIsNotReady notReady(const char* reason) {
  hub_module::ControllerTaskIsNotReady exception;
  exception.reason = reason;
  return exception;
}

}  // namespace

HeadendService::HeadendService(StateStore& store, Faults& faults,
                               std::set<RFInputId::type> absentInputs,
                               std::chrono::seconds startupTime)
    : store_(store),
      faults_(faults),
      absentInputs_(std::move(absentInputs)),
      startupTime_(startupTime),
      start_(std::chrono::steady_clock::now()) {}

void HeadendService::getHeadendConfig(HeadendConfig& result) {
  const Lock lock = begin("getHeadendConfig");
  result = store_.state().config;
  report("getHeadendConfig", summary(result));
}

void HeadendService::getHeadendStatus(HeadendStatus& result) {
  const Lock lock = begin("getHeadendStatus");
  result = status();
  report("getHeadendStatus", std::to_string(result.tdtRFInputs.size()) + " TDT, " +
                                 std::to_string(result.satRFInputs.size()) + " SAT, " +
                                 std::to_string(result.ipInputs.size()) + " IP inputs");
}

void HeadendService::setHeadendConfig(HeadendStatus& result, const HeadendConfig& config) {
  const Lock lock = begin("setHeadendConfig");
  replaceConfig("setHeadendConfig", result, config);
}

template <class Part>
void HeadendService::replacePart(const char* call, HeadendStatus& result, Part HeadendConfig::*part,
                                 const Part& value) {
  const Lock lock = begin(call);
  HeadendConfig next = store_.state().config;
  next.*part = value;
  replaceConfig(call, result, std::move(next));
}

void HeadendService::setTDTRFInputConfig(const hub_module::TDTRFInputConfig& tdt1,
                                         const hub_module::TDTRFInputConfig& tdt2) {
  const Lock lock = begin("setTDTRFInputConfig");
  HeadendState next = store_.state();
  std::string told;
  for (const auto& [id, config] :
       {std::pair(general::RFInputId::TDT1, tdt1), std::pair(general::RFInputId::TDT2, tdt2)}) {
    if (!told.empty()) {
      told += ", ";
    }
    if (absentInputs_.contains(id)) {
      told += inputName(id) + " is not present";
      continue;
    }
    next.tdtRFInputs[id].config = config;
    told += inputName(id) + ' ' + onOff(config.enabled);
  }
  replaceState("setTDTRFInputConfig", std::move(next));
  report("setTDTRFInputConfig", told);
}

void HeadendService::setSATRFInputConfig(RFInputId::type id,
                                         const hub_module::SATRFInputConfig& config) {
  const Lock lock = begin("setSATRFInputConfig");
  HeadendState next = store_.state();
  const auto input = next.satRFInputs.find(id);
  if (input == next.satRFInputs.end() || absentInputs_.contains(id)) {
    report("setSATRFInputConfig", inputName(id) + " is not present");
    return;
  }
  input->second.config = config;
  replaceState("setSATRFInputConfig", std::move(next));
  report("setSATRFInputConfig", inputName(id) + ' ' + onOff(config.enabled));
}

void HeadendService::setLineupConfig(HeadendStatus& result,
                                     const hub_module::LineupConfig& config) {
  replacePart("setLineupConfig", result, &HeadendConfig::lineupConfig, config);
}

void HeadendService::setHeadendGlobalConfig(HeadendStatus& result,
                                            const hub_module::HeadendGlobalConfig& config) {
  replacePart("setHeadendGlobalConfig", result, &HeadendConfig::headendGlobalConfig, config);
}

void HeadendService::setRFInputsScanConfig(HeadendStatus& result,
                                           const hub_module::RFInputsScanConfig& config) {
  replacePart("setRFInputsScanConfig", result, &HeadendConfig::rfInputsScanConfig, config);
}

bool HeadendService::validateHeadendConfig(const HeadendConfig& config) {
  const Lock lock = begin("validateHeadendConfig");
  const std::string fault = whyInvalid(config);
  report("validateHeadendConfig", fault.empty() ? "valid" : "invalid, " + fault);
  return fault.empty();
}

void HeadendService::orderRFInputsScan() {
  const Lock lock = begin("orderRFInputsScan");
  report("orderRFInputsScan", "scanned, no change");
}

void HeadendService::resetHeadend() {
  const Lock lock = begin("resetHeadend");
  start_ = std::chrono::steady_clock::now();
  report("resetHeadend", "started anew, no change");
}

void HeadendService::resetFactoryDefaults() {
  const Lock lock = begin("resetFactoryDefaults");
  replaceState("resetFactoryDefaults", initialState());
  report("resetFactoryDefaults", summary(store_.state().config));
}

/// Takes the turn of a call; refuses it while the headend starts, or as a fault asks.
HeadendService::Lock HeadendService::begin(const char* call) {
  const Faults::Verdict verdict = faults_.begin(call);
  Lock lock(mutex_);
  if (verdict.broken) {
    report(call, "broken off, as asked");
    throw BrokenOff();
  }
  if (verdict.refused) {
    report(call, "refused, as asked");
    throw notReady("refused");
  }
  if (std::chrono::steady_clock::now() - start_ < startupTime_) {
    report(call, "refused, not ready");
    throw notReady("starting");
  }
  return lock;
}

void HeadendService::replaceState(const char* call, HeadendState next) {
  try {
    store_.replace(std::move(next));
  } catch (const std::exception& error) {
    report(call, std::string("refused, ") + error.what());
    throw;
  }
}

void HeadendService::replaceConfig(const char* call, HeadendStatus& result, HeadendConfig config) {
  const HeadendState& current = store_.state();
  const std::string told = summaryOfChange(current.config, config);
  HeadendState next;
  next.config = std::move(config);
  next.tdtRFInputs = current.tdtRFInputs;
  next.satRFInputs = current.satRFInputs;
  replaceState(call, std::move(next));
  result = status();
  report(call, told);
}

HeadendService::HeadendStatus HeadendService::status() const {
  const auto uptime = std::chrono::steady_clock::now() - start_;
  return statusOf(store_.state(), absentInputs_,
                  std::chrono::duration_cast<std::chrono::seconds>(uptime));
}

}  // namespace lineup::simulator
