// The controller's service on the simulated headend.

#pragma once

#include <chrono>
#include <mutex>
#include <set>

#include "WebSrv.h"
#include "model/namespaces.h"
#include "simulator/faults.h"
#include "simulator/state_store.h"

namespace lineup::simulator {

/// Thrown out of a call whose connection is to be closed without an answer. Not a
/// std::exception: to those the generated code sends an answer.
struct BrokenOff {};

/// Answers every call and prints one line for it on standard output: the call's name and what it
/// changed. Calls from several threads take turns. A change that cannot be stored is refused with
/// an error that the client sees, and changes nothing.
class HeadendService : public hub_module::WebSrvIf {
 public:
  using HeadendConfig = hub_module::HeadendConfig;
  using HeadendStatus = hub_module::HeadendStatus;
  using RFInputId = general::RFInputId;

  /// Serves the headend in `store`, without the RF inputs `absentInputs` and with `faults`. Until
  /// `startupTime` has passed, every call is refused with ControllerTaskIsNotReady.
  HeadendService(StateStore& store, Faults& faults, std::set<RFInputId::type> absentInputs,
                 std::chrono::seconds startupTime);

  void getHeadendConfig(HeadendConfig& result) override;
  void getHeadendStatus(HeadendStatus& result) override;
  void setHeadendConfig(HeadendStatus& result, const HeadendConfig& config) override;
  void setTDTRFInputConfig(const hub_module::TDTRFInputConfig& tdt1,
                           const hub_module::TDTRFInputConfig& tdt2) override;
  void setSATRFInputConfig(RFInputId::type id, const hub_module::SATRFInputConfig& config) override;
  void setLineupConfig(HeadendStatus& result, const hub_module::LineupConfig& config) override;
  void setHeadendGlobalConfig(HeadendStatus& result,
                              const hub_module::HeadendGlobalConfig& config) override;
  void setRFInputsScanConfig(HeadendStatus& result,
                             const hub_module::RFInputsScanConfig& config) override;
  /// True if every lineup entry has its service and the headend id is in its range.
  bool validateHeadendConfig(const HeadendConfig& config) override;
  /// A simulated scan finds at once what was there before.
  void orderRFInputsScan() override;
  /// Starts the headend anew: the state stays, the start-up time begins again.
  void resetHeadend() override;
  /// Makes the state the initial one again.
  void resetFactoryDefaults() override;

 private:
  using Lock = std::unique_lock<std::mutex>;

  Lock begin(const char* call);
  void replaceState(const char* call, HeadendState next);
  void replaceConfig(const char* call, HeadendStatus& result, HeadendConfig config);
  /// The whole of a call that replaces one part of the configuration.
  template <class Part>
  void replacePart(const char* call, HeadendStatus& result, Part HeadendConfig::*part,
                   const Part& value);
  HeadendStatus status() const;

  std::mutex mutex_;
  StateStore& store_;
  Faults& faults_;
  const std::set<RFInputId::type> absentInputs_;
  const std::chrono::seconds startupTime_;
  std::chrono::steady_clock::time_point start_;
};

}  // namespace lineup::simulator
