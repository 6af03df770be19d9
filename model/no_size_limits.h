// The Thrift library's limits on size, lifted: a headend's configuration may be of any size.

#pragma once

#include <thrift/TConfiguration.h>

#include <limits>
#include <memory>

namespace lineup {

/// A configuration for a stack of transports: messages and frames of any length that their 31 bits
/// can say, and the library's nesting limit of 64.
inline std::shared_ptr<apache::thrift::TConfiguration> noSizeLimits() {
  constexpr int kLongest = std::numeric_limits<int>::max();
  return std::make_shared<apache::thrift::TConfiguration>(kLongest, kLongest);
}

}  // namespace lineup
