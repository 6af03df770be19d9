// Texts that the console prints around every command, for a call that fails, or for a command that
// tests of several folders run.

#pragma once

#include <string>

namespace lineup::test {

inline const std::string kGreeting = "Enter 'help' and press return for help\n";
inline const std::string kPending = "(changes to commit) > ";
inline const std::string kNote = "NOTE: Changes have not been committed\n";
inline const std::string kInvalidCommand = "Invalid command. Try 'help'.\n";
/// Begins what is said of a copy of the edits.
inline const std::string kUncommittedIn = "The uncommitted changes are in ";
inline const std::string kFetchFailed = "ERROR: Could not get current config from ControllerTask\n";
inline const std::string kStatusFailed =
    "ERROR: Could not get current status from ControllerTask\n";
inline const std::string kCommitFailed = "ERROR: Could not set LineupConfig to ControllerTask\n";
inline const std::string kTdtFailed = "ERROR: Could not set TDTRFInputConfig to ControllerTask\n";

/// What saving and restoring a file print.
inline std::string savedTo(const std::string& path) {
  return "Saved config to: " + path + "\n";
}
inline std::string restoredFrom(const std::string& path) {
  return "Restored config from: " + path + "\n";
}

/// What "tdtscan" prints for a change.
inline const std::string kScanUpdated =
    "Updated scan type. Please remember to commit the changes.\n";

/// The marks of the two scan types.
inline std::string scanTable(bool cofdm, bool qams) {
  return std::string("\n\n    DVB-T   DVB-C   \n      ") + (cofdm ? "✓" : "✕") + "       " +
         (qams ? "✓" : "✕") + "\n\n\n";
}

/// What "addpls" asks.
inline const std::string kPlsQuestion =
    "Enter the information of the non-standard PLS item:\n"
    " plsType                      plsCode\n"
    " (0 Auto | 1 Gold | 2 Root)   131070 \n";

/// How it refuses an answer of fewer than two words.
inline const std::string kTooFewParameters = "Please enter all the parameters";

/// What "id" prints with another `id` than that of the headend.
inline std::string idChanged(int id) {
  return "Headend id changed to: " + std::to_string(id) +
         ". Please remember to commit the changes.\n";
}

}  // namespace lineup::test
