#include "controller/controller_client.h"

#include <cstdint>

#include "model/headend_places.h"

namespace lineup {

namespace {

constexpr bool kUnixSocket = false;
constexpr int32_t kConnectTimeoutMs = 1000;
constexpr int32_t kReceiveTimeoutMs = 20000;
constexpr int32_t kSendTimeoutMs = 20000;

}  // namespace

ControllerClient makeControllerClient() {
  return ControllerClient(kControllerAddress, kControllerPort, kUnixSocket, kConnectTimeoutMs,
                          kReceiveTimeoutMs, kSendTimeoutMs);
}

}  // namespace lineup
