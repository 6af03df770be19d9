#include "model/lineup_from_status.h"

namespace lineup {

hub_module::LineupConfig lineupFromStatus(const hub_module::LineupStatus& status) {
  hub_module::LineupConfig config;
  config.globalConfig = status.globalConfig;
  config.ipConfig = status.ipStatus.config;
  config.rfConfig = status.rfStatus.config;
  config.rfEntries.reserve(status.rfEntries.size());
  for (const hub_module::LineupRFEntryStatus& entry : status.rfEntries) {
    config.rfEntries.push_back(entry.config);
  }
  config.dvbInputServices = status.dvbInputServices;
  config.encInputServices = status.encInputServices;
  return config;
}

}  // namespace lineup
