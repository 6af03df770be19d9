// Reading and writing a configuration file through the Thrift library's transports.

#pragma once

#include <thrift/transport/TBufferTransports.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "controller/bounded_protocol.h"
#include "support/descriptor.h"

namespace lineup {

/// A TBufferedTransport over a TFDTransport, with buffers of 512 bytes. It adds what the
/// library's JSON protocol lacks: a check that the file is as long as it claims, one that a number
/// has digits, and JSON that other writers produce: white space between values, escapes with
/// upper-case hexadecimal digits, and the escapes of NUL and of the slash.
class ConfigFileTransport : public apache::thrift::transport::TBufferedTransport,
                            public BoundedSource {
 public:
  /// Takes ownership of `descriptor`: close() or the destructor closes it. If this throws,
  /// `descriptor` still owns it.
  explicit ConfigFileTransport(Descriptor& descriptor);

  /// The descriptor, until the transport is closed.
  int descriptor() const { return descriptor_; }

  /// Reads ahead, as the size of a pipe is not known. Allocates no more than there are bytes.
  bool waitForBytes(uint64_t count) override;

  uint32_t readAll_virt(uint8_t* buffer, uint32_t length) override;

  /// How many digits directly precede the last character read, and the one before it. Signs,
  /// points and exponents among the digits are ignored.
  uint32_t digitsBeforeLast() const { return digitsBeforeLast_; }
  uint32_t digitsBeforeLastButOne() const { return digitsBeforeLastButOne_; }

  /// The last character read.
  char last() const { return last_; }

 protected:
  /// Waits where a descriptor that does not block has nothing to read for now.
  uint32_t readSlow(uint8_t* buffer, uint32_t length) override;

 private:
  char take();
  bool isAhead(std::string_view text);
  char takeBehindSpace();
  char takeUnescaped();
  void note(char character);

  const int descriptor_;
  const bool blocks_;
  std::string ahead_;           // what was read ahead,
  std::size_t aheadTaken_ = 0;  // and how much of it has been taken since
  bool inText_ = false;         // after its opening quote
  bool escaped_ = false;        // by the backslash before
  int hexDigits_ = 0;           // to come in an escape
  char last_ = '\0';
  uint32_t digits_ = 0;  // in the number that is being read
  uint32_t digitsBeforeLast_ = 0;
  uint32_t digitsBeforeLastButOne_ = 0;
};

}  // namespace lineup
