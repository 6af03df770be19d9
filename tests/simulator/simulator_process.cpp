#include "tests/simulator/simulator_process.h"

#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TSocket.h>

#include <utility>

#include "model/no_size_limits.h"

namespace lineup::test {

const char* const kSimulatorProgram = HEADEND_SIMULATOR;

Connection::Connection(int port) {
  using namespace apache::thrift;
  const auto socket = std::make_shared<transport::TSocket>("127.0.0.1", port, noSizeLimits());
  socket->setRecvTimeout(60000);
  const auto framed = std::make_shared<transport::TFramedTransport>(socket, noSizeLimits());
  client_ = std::make_unique<korvel::thrift::hub_module::WebSrvClient>(
      std::make_shared<protocol::TBinaryProtocol>(framed));
  framed->open();
}

namespace {

Start startOf(const TemporaryFolder& folder, std::vector<std::string> options, int port) {
  Start start;
  start.program = kSimulatorProgram;
  start.arguments = {"--port",      std::to_string(port),
                     "--state",     folder.file("state.json"),
                     "--catalogue", folder.file("catalogue.sqlite")};
  start.arguments.insert(start.arguments.end(), options.begin(), options.end());
  return start;
}

}  // namespace

SimulatorProcess::SimulatorProcess(const TemporaryFolder& folder, std::vector<std::string> options,
                                   int port)
    : process_(startOf(folder, std::move(options), port)) {
  process_.readUntil("headend-simulator: ready on 127.0.0.1:");
  port_ = std::stoi(process_.readUntil("\n"));
}

std::string SimulatorProcess::nextLine() {
  std::string line = process_.readUntil("\n");
  line.pop_back();
  return line;
}

Outcome runSimulator(const std::vector<std::string>& arguments) {
  Start start;
  start.program = kSimulatorProgram;
  start.arguments = arguments;
  return run(start);
}

}  // namespace lineup::test
