#include "controller/controller_client.h"

namespace lineup {

namespace {

constexpr const char* kAddress = "127.0.0.1";
constexpr int32_t kPort = 9190;
constexpr bool kUnixSocket = false;
constexpr int32_t kConnectTimeoutMs = 1000;
constexpr int32_t kReceiveTimeoutMs = 20000;
constexpr int32_t kSendTimeoutMs = 20000;

}  // namespace

ControllerClient makeControllerClient() {
  return ControllerClient(kAddress, kPort, kUnixSocket, kConnectTimeoutMs, kReceiveTimeoutMs,
                          kSendTimeoutMs);
}

}  // namespace lineup
