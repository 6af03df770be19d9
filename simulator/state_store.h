// The simulated headend's state: in memory, and in a file that is written before each change.

#pragma once

#include <string>

#include "simulator/locked_file.h"
#include "state_types.h"

namespace lineup::simulator {

/// Owns the state and its file, a HeadendState in the Thrift JSON protocol. Not thread-safe; while
/// one store is alive, no other process can open the same file.
class StateStore {
 public:
  /// Reads the state at `path`, or writes the initial state there if there is no file. Throws
  /// std::runtime_error naming the path if the file cannot be read or written, is no state file or
  /// belongs to a running process; it is then left as it was.
  explicit StateStore(std::string path);
  /// The initial state, in memory alone.
  StateStore();

  const HeadendState& state() const { return state_; }

  /// Stores `next` and makes it the state. Throws std::runtime_error if it cannot be stored; state
  /// and file are then as they were.
  void replace(HeadendState next);

 private:
  void makeFirst();
  void load();

  std::string path_;
  Descriptor file_;  // holds the flock()
  HeadendState state_;
};

}  // namespace lineup::simulator
