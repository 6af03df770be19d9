// Command lines, with a controller that cannot be reached and a small catalogue. An input is a
// script; one that begins with '+' is run on a headend that has been set up.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

#include "app/commands.h"
#include "catalogue/tables.h"
#include "model/lineup_editor.h"
#include "simulator/catalogue.h"
#include "simulator/initial_state.h"
#include "simulator/status.h"
#include "terminal/line_input.h"
#include "tests/fuzz/memory_limit.h"
#include "tests/fuzz/require.h"
#include "tests/fuzz/surroundings.h"

namespace {

using lineup::LineupEditor;
using lineup::fuzz::require;
using lineup::hub_module::HeadendConfig;

constexpr int kMostLines = 200;

bool execute(const std::string& sql) {
  return sqlite3_exec(lineup::fuzz::catalogue(), sql.c_str(), nullptr, nullptr, nullptr) ==
         SQLITE_OK;
}

/// Of the simulator's catalogue a few services of each kind, as a find takes as long as it has
/// cells.
bool prepare() {
  lineup::fuzz::beQuiet();
  bool made = execute(lineup::simulator::kCatalogueSql);
  for (const korveldb::tTable* table : korveldb::kTables) {
    made = made && execute(std::string("DELETE FROM ") + table->name + " WHERE rowid > 4");
  }
  return made;
}

void setUp(LineupEditor& editor) {
  static const auto state = lineup::simulator::initialState();
  static const auto status = lineup::simulator::statusOf(state, {}, std::chrono::seconds(1));
  editor.config = state.config;
  editor.status = status;
}

/// Runs one line. A refused one changes nothing; nothing but a commit settles pending changes.
/// `before` is the configuration as it is, and is kept so. Returns false when the console would
/// end.
bool runLine(LineupEditor& editor, HeadendConfig& before, const std::string& line) {
  const bool wasPending = editor.pendingChanges;
  bool goOn = true;
  bool refused = false;
  try {
    goOn = editor.dispatchCommand(line, false);
  } catch (const std::runtime_error&) {
    refused = true;
  } catch (const std::invalid_argument&) {  // these two end the console
    refused = true;
    goOn = false;
  } catch (const std::out_of_range&) {
    refused = true;
    goOn = false;
  }
  if (refused) {
    require(editor.config == before, "a refused line leaves the configuration as it was");
    require(editor.pendingChanges == wasPending, "a refused line leaves nothing to commit");
  } else if (editor.config != before) {
    before = editor.config;
  }
  require(editor.pendingChanges || !wasPending, "changes stay pending without a controller");
  return goOn;
}

/// What takes longer than all other lines, so that once is enough.
bool showsConfiguration(const std::string& line) {
  return line.empty() || line == "show";
}

/// Asks for what the last line may become, as Tab does. File names are left out: they are the
/// machine's own.
void completeLastLine(const std::string& script) {
  const std::string line = script.substr(script.rfind('\n') + 1);
  if (line.starts_with("save") || line.starts_with("restore")) {
    return;
  }
  try {
    lineup::completeCommandLine(line, {});
  } catch (const std::exception&) {  // counts as no candidate
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  static const bool prepared = prepare();
  require(prepared, "the catalogue can be filled");
  std::string script(reinterpret_cast<const char*>(data), size);
  const lineup::fuzz::MemoryLimit limit;
  LineupEditor editor;
  if (script.starts_with('+')) {
    script.erase(0, 1);
    setUp(editor);
  }
  completeLastLine(script);
  lineup::fuzz::setInput(script);
  HeadendConfig before = editor.config;
  std::string line;
  bool shown = false;
  for (int count = 0; count < kMostLines && lineup::readAnswer(line); ++count) {
    if (showsConfiguration(line) && std::exchange(shown, true)) {
      continue;
    }
    if (!runLine(editor, before, line)) {
      break;
    }
  }
  lineup::fuzz::removeFiles();
  return 0;
}
