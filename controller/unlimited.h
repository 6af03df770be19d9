// The library's settings under which a headend's configuration may be of any size.

#pragma once

#include <thrift/TConfiguration.h>

#include <limits>
#include <memory>

namespace lineup {

/// A configuration for a stack of transports: no limit on messages and frames but that of their
/// 31-bit lengths, and the library's nesting limit of 64.
inline std::shared_ptr<apache::thrift::TConfiguration> unlimited() {
  constexpr int kNoLimit = std::numeric_limits<int>::max();
  return std::make_shared<apache::thrift::TConfiguration>(kNoLimit, kNoLimit);
}

}  // namespace lineup
