#include "simulator/state_store.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thrift/protocol/TJSONProtocol.h>
#include <thrift/transport/TBufferTransports.h>

#include <cerrno>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "model/no_size_limits.h"
#include "simulator/initial_state.h"

namespace lineup::simulator {

using apache::thrift::protocol::TJSONProtocol;
using apache::thrift::transport::TMemoryBuffer;

namespace {

std::string toJson(const HeadendState& state) {
  const auto buffer = std::make_shared<TMemoryBuffer>(noSizeLimits());
  TJSONProtocol protocol(buffer);
  state.write(&protocol);
  return buffer->getBufferAsString();
}

HeadendState fromJson(std::string text) {
  auto* const bytes = reinterpret_cast<uint8_t*>(text.data());
  const auto size = static_cast<uint32_t>(text.size());
  const auto buffer =
      std::make_shared<TMemoryBuffer>(bytes, size, TMemoryBuffer::OBSERVE, noSizeLimits());
  TJSONProtocol protocol(buffer);
  HeadendState state;
  state.read(&protocol);
  if (buffer->available_read() != 0) {
    throw std::runtime_error("there is more after its end");
  }
  return state;
}

std::string contentsOf(int file) {
  std::optional<std::string> text = readAll(file);
  if (!text) {
    throw std::runtime_error("it cannot be read");
  }
  return *std::move(text);
}

/// Whether it has no name any more: another process has put a new one in its place.
bool isReplaced(int file) {
  struct stat status {};
  fstat(file, &status);
  return status.st_nlink == 0;
}

}  // namespace

StateStore::StateStore(std::string path) : path_(std::move(path)) {
  if (fileExists(path_)) {
    load();
  } else {
    makeFirst();
  }
}

StateStore::StateStore() : state_(initialState()) {}

void StateStore::makeFirst() {
  try {
    replace(initialState());
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(std::string(error.what()) +
                             "; --state names another file, --in-memory does without one");
  }
}

void StateStore::load() {
  file_ = Descriptor(open(path_.c_str(), O_RDONLY | O_CLOEXEC));
  if (file_.number() < 0) {
    throw std::runtime_error("cannot open " + path_ + ": " +
                             std::generic_category().message(errno));
  }
  if (flock(file_.number(), LOCK_EX | LOCK_NB) != 0 || isReplaced(file_.number())) {
    throw std::runtime_error("the state file " + path_ + " is in use by another process");
  }
  try {
    state_ = fromJson(contentsOf(file_.number()));
  } catch (const std::exception& error) {
    throw std::runtime_error("the state file " + path_ + " is damaged or no state file (" +
                             error.what() + "); move it away to begin with a new headend");
  }
}

void StateStore::replace(HeadendState next) {
  if (!path_.empty()) {
    file_ = replaceLocked(path_, toJson(next));
  }
  state_ = std::move(next);
}

}  // namespace lineup::simulator
