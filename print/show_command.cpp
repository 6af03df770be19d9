#include "print/show_command.h"

#include <thrift/protocol/TDebugProtocol.h>
#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TVirtualTransport.h>

#include <cstdint>
#include <iostream>
#include <memory>

#include "model/lineup_editor.h"
#include "support/ending_signals.h"

namespace lineup {

namespace {

using apache::thrift::transport::TMemoryBuffer;
using apache::thrift::transport::TTransport;
using apache::thrift::transport::TVirtualTransport;

/// Writes to standard output; output errors are ignored. Throws when interrupted.
class StandardOutput : public TVirtualTransport<StandardOutput> {
 public:
  void write(const uint8_t* bytes, uint32_t count) {
    throwIfInterrupted();
    std::cout.write(reinterpret_cast<const char*>(bytes), count);
  }
};

void dump(const hub_module::HeadendConfig& config, const std::shared_ptr<TTransport>& transport) {
  apache::thrift::protocol::TDebugProtocol protocol(transport);
  config.write(&protocol);
}

}  // namespace

std::string configDebugString(const hub_module::HeadendConfig& config) {
  const auto buffer = std::make_shared<TMemoryBuffer>();
  dump(config, buffer);
  return buffer->getBufferAsString();
}

// Prints the text while producing it: it may be fifty times as long as the reply or the file that
// the configuration came from.
void LineupEditor::showLineup() const {
  std::cout << "Current lineup:" << std::endl;
  dump(config, std::make_shared<StandardOutput>());
  std::cout << std::endl;
}

}  // namespace lineup
