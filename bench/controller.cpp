// bench-controller: a controller that does nothing but keep the configuration in memory, so that a
// measurement of the console measures the console.

#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/server/TSimpleServer.h>
#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TServerSocket.h>

#include <limits>
#include <memory>
#include <utility>

#include "WebSrv.h"

namespace {

using apache::thrift::TConfiguration;
using apache::thrift::protocol::TBinaryProtocolFactory;
using apache::thrift::server::TSimpleServer;
using apache::thrift::transport::TFramedTransport;
using apache::thrift::transport::TServerSocket;
using apache::thrift::transport::TTransport;
using apache::thrift::transport::TTransportFactory;
using korvel::thrift::hub_module::HeadendConfig;
using korvel::thrift::hub_module::HeadendStatus;

class Controller : public korvel::thrift::hub_module::WebSrvNull {
 public:
  void getHeadendConfig(HeadendConfig& result) override { result = config_; }

  void setHeadendConfig(HeadendStatus& /*status*/, const HeadendConfig& config) override {
    config_ = config;
  }

 private:
  HeadendConfig config_;
};

class UnlimitedFrames : public TTransportFactory {
 public:
  std::shared_ptr<TTransport> getTransport(std::shared_ptr<TTransport> socket) override {
    constexpr int kNoLimit = std::numeric_limits<int>::max();
    return std::make_shared<TFramedTransport>(std::move(socket),
                                              std::make_shared<TConfiguration>(kNoLimit, kNoLimit));
  }
};

}  // namespace

int main() {
  TSimpleServer server(
      std::make_shared<korvel::thrift::hub_module::WebSrvProcessor>(std::make_shared<Controller>()),
      std::make_shared<TServerSocket>("127.0.0.1", 9190), std::make_shared<UnlimitedFrames>(),
      std::make_shared<TBinaryProtocolFactory>());
  server.serve();
}
