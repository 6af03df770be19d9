// Where a headend's controller is found.

#pragma once

namespace lineup {

/// ControllerTask's Thrift service.
inline constexpr const char* kControllerAddress = "127.0.0.1";
inline constexpr int kControllerPort = 9190;

}  // namespace lineup
