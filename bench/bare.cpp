// bench-bare CALL [TIMES [ARGUMENT]]: does TIMES times what a command of the console does, in the
// plainest way that the libraries allow: the generated client, protocols and sqlite3_get_table,
// with nothing of the console's own but the controller's address and the size limits. The measure
// for what the console adds.

#include <fcntl.h>
#include <sqlite3.h>
#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/protocol/TDebugProtocol.h>
#include <thrift/protocol/TJSONProtocol.h>
#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TFDTransport.h>
#include <thrift/transport/TSocket.h>

#include <cstddef>
#include <exception>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

#include "WebSrv.h"
#include "model/headend_places.h"
#include "model/no_size_limits.h"

namespace {

using apache::thrift::protocol::TBinaryProtocol;
using apache::thrift::protocol::TJSONProtocol;
using apache::thrift::transport::TBufferedTransport;
using apache::thrift::transport::TFDTransport;
using apache::thrift::transport::TFramedTransport;
using apache::thrift::transport::TMemoryBuffer;
using apache::thrift::transport::TSocket;
using korvel::thrift::hub_module::HeadendConfig;
using korvel::thrift::hub_module::HeadendStatus;
using korvel::thrift::hub_module::WebSrvClient;

/// One call over a connection of its own.
template <class Call>
void call(Call make) {
  const auto socket = std::make_shared<TSocket>(lineup::kControllerAddress, lineup::kControllerPort,
                                                lineup::noSizeLimits());
  const auto transport = std::make_shared<TFramedTransport>(socket, lineup::noSizeLimits());
  WebSrvClient client(std::make_shared<TBinaryProtocol>(transport));
  transport->open();
  make(client);
}

HeadendConfig fetch() {
  HeadendConfig config;
  call([&](WebSrvClient& client) { client.getHeadendConfig(config); });
  return config;
}

void commit(const HeadendConfig& config) {
  call([&](WebSrvClient& client) {
    HeadendStatus status;
    client.setHeadendConfig(status, config);
  });
}

/// The console's stack of transports over a file.
template <class Work>
void withFile(const std::string& path, int flags, Work work) {
  const int descriptor = open(path.c_str(), flags, 0600);
  const auto file = std::make_shared<TFDTransport>(descriptor, TFDTransport::CLOSE_ON_DESTROY,
                                                   lineup::noSizeLimits());
  const auto buffered = std::make_shared<TBufferedTransport>(file, 512, lineup::noSizeLimits());
  TJSONProtocol protocol(buffered);
  work(protocol);
  buffered->flush();
}

void save(const std::string& path, const HeadendConfig& config) {
  withFile(path, O_WRONLY | O_CREAT | O_TRUNC, [&](auto& protocol) { config.write(&protocol); });
}

HeadendConfig load(const std::string& path) {
  HeadendConfig config;
  withFile(path, O_RDONLY, [&](auto& protocol) { config.read(&protocol); });
  return config;
}

/// The number of bytes of the configuration in a reply.
void printSize() {
  const auto buffer = std::make_shared<TMemoryBuffer>();
  TBinaryProtocol protocol(buffer);
  fetch().write(&protocol);
  std::cout << buffer->available_read() << std::endl;
}

/// The satellite services whose name contains `part`, in the lines of "findsat".
void find(const std::string& part) {
  sqlite3* handle = nullptr;
  sqlite3_open(lineup::kCataloguePath, &handle);
  const std::string statement =
      "SELECT * FROM availableSatService WHERE service_name LIKE '%" + part + "%'";
  char** cells = nullptr;
  int rows = 0;
  int columns = 0;
  sqlite3_get_table(handle, statement.c_str(), &cells, &rows, &columns, nullptr);
  constexpr int kId = 15;
  constexpr int kName = 16;
  constexpr int kFrequency = 7;
  constexpr int kSid = 17;
  constexpr int kLanguages = 23;
  for (int row = 1; row <= rows; ++row) {
    char** const cell = cells + static_cast<std::ptrdiff_t>(row) * columns;
    std::cout << cell[kId] << '\t' << cell[kName] << " FR: " << cell[kFrequency]
              << " MHz SID: " << cell[kSid] << " L: " << cell[kLanguages] << std::endl;
  }
  sqlite3_free_table(cells);
  sqlite3_close(handle);
}

void run(const std::string& name, int times, const std::string& argument) {
  const auto repeat = [times](auto work) {
    for (int i = 0; i < times; ++i) {
      work();
    }
  };
  if (name == "size") {
    printSize();
  } else if (name == "fetch") {
    repeat([] { fetch(); });
  } else if (name == "commit") {
    repeat([config = fetch()] { commit(config); });
  } else if (name == "show") {
    repeat([config = fetch()] {
      std::cout << apache::thrift::ThriftDebugString(config) << std::endl;
    });
  } else if (name == "save") {
    repeat([config = fetch(), argument] { save(argument, config); });
  } else if (name == "restore") {
    repeat([argument] { commit(load(argument)); });
  } else if (name == "read") {
    repeat([argument] { load(argument); });
  } else if (name == "find") {
    repeat([argument] { find(argument); });
  } else {
    throw std::invalid_argument("no such call: " + name);
  }
}

}  // namespace

int main(int argc, char* argv[]) {
  if (argc < 2) {
    std::cerr << "usage: bench-bare CALL [TIMES [ARGUMENT]]" << std::endl;
    return 1;
  }
  try {
    run(argv[1], argc > 2 ? std::stoi(argv[2]) : 1, argc > 3 ? argv[3] : "");
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "bench-bare: " << error.what() << std::endl;
    return 1;
  }
}
