// The Thrift library's size limits, lifted.

#pragma once

#include <thrift/TConfiguration.h>

#include <limits>
#include <memory>

namespace lineup::simulator {

/// A configuration for transports that take frames and messages of any size: a headend's whole
/// configuration may be larger than the library's defaults allow.
inline std::shared_ptr<apache::thrift::TConfiguration> unlimited() {
  constexpr int kAny = std::numeric_limits<int>::max();
  return std::make_shared<apache::thrift::TConfiguration>(kAny, kAny);
}

}  // namespace lineup::simulator
