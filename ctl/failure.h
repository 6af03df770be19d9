// How a run of lineupctl ends.

#pragma once

#include <stdexcept>
#include <string>

namespace lineup::ctl {

/// The exit status.
enum Status {
  kDone = 0,
  kDiffers = 1,     ///< or an expectation that does not hold, or a wait that ran out
  kUsage = 2,       ///< the command line is wrong
  kFile = 3,        ///< a file, the output, the catalogue or memory
  kController = 4,  ///< it cannot be reached, refuses or breaks off
  kOtherConfig = 5  ///< the headend runs something else than what was sent
};

/// Ends the run with a status and a line on standard error, which names the program and holds
/// what().
class Failure : public std::runtime_error {
 public:
  Failure(Status status, const std::string& message)
      : std::runtime_error(message), status_(status) {}

  Status status() const { return status_; }

 private:
  Status status_;
};

inline constexpr char kOutOfMemory[] = "out of memory";

/// The line of a failure: control characters and bytes that are not UTF-8 are escaped.
std::string failureLine(const std::string& message);

/// Writes that line on standard error, in one go.
void complain(const std::string& message);

}  // namespace lineup::ctl
