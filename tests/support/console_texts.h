// Texts that the console prints around every command, or for a call that fails.

#pragma once

#include <string>

namespace lineup::test {

inline constexpr char kGreeting[] = "Enter 'help' and press return for help\n";
inline constexpr char kPending[] = "(changes to commit) > ";
inline constexpr char kNote[] = "NOTE: Changes have not been committed\n";
/// What "id 7" prints.
inline constexpr char kIdChanged[] =
    "Headend id changed to: 7. Please remember to commit the changes.\n";
/// Begins what is said of a copy of the edits.
inline const std::string kUncommittedIn = "The uncommitted changes are in ";
inline constexpr char kFetchFailed[] = "ERROR: Could not get current config from ControllerTask\n";
inline constexpr char kStatusFailed[] = "ERROR: Could not get current status from ControllerTask\n";
inline constexpr char kCommitFailed[] = "ERROR: Could not set LineupConfig to ControllerTask\n";
inline constexpr char kTdtFailed[] = "ERROR: Could not set TDTRFInputConfig to ControllerTask\n";

}  // namespace lineup::test
