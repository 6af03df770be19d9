#include "app/function_keys.h"

#include "compare/config_difference.h"
#include "model/lineup_editor.h"
#include "print/config_tables.h"

namespace lineup {

std::string changesToCommit(const hub_module::HeadendConfig& edited) {
  LineupEditor running;
  running.fetchHeadendConfig();
  if (running.fetches == 0) {
    return "";
  }
  const std::string difference = configDifference(running.config, edited);
  return difference.empty() ? "Nothing to commit: the headend runs this configuration\n"
                            : difference;
}

std::string lineupTables(const hub_module::HeadendConfig& edited) {
  return titledText("RF lineup", rfLineupTable(edited)) + "\n" +
         titledText("IP lineup", ipLineupTable(edited));
}

}  // namespace lineup
