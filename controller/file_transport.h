// Reading and writing a configuration file through the Thrift library's transports.

#pragma once

#include <thrift/transport/TBufferTransports.h>

#include <cstdint>

#include "controller/bounded_protocol.h"

namespace lineup {

/// An open descriptor until a transport takes it over.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor();

  bool isOpen() const { return number_ >= 0; }
  int number() const { return number_; }
  void release() { number_ = -1; }

 private:
  int number_;
};

/// A TBufferedTransport over a TFDTransport, with buffers of 512 bytes. It knows how much of the
/// file is left to read, and remembers of what it has read whether numbers had digits.
class FileTransport : public apache::thrift::transport::TBufferedTransport, public BoundedSource {
 public:
  /// Takes `descriptor` over: it is closed by close() or by the destructor. If this raises,
  /// `descriptor` still owns it.
  explicit FileTransport(Descriptor& descriptor);

  /// The descriptor, until the transport is closed.
  int descriptor() const { return descriptor_; }

  /// As the file was when it was opened.
  uint64_t size() const override { return size_; }
  uint64_t bytesLeft() const override;

  uint32_t readAll_virt(uint8_t* buffer, uint32_t length) override;

  /// How many digits directly precede the last character read, and the one before it. Signs,
  /// points and exponents among the digits are passed over.
  uint32_t digitsBeforeLast() const { return digitsBeforeLast_; }
  uint32_t digitsBeforeLastButOne() const { return digitsBeforeLastButOne_; }

  /// The last character read.
  char last() const { return last_; }

 private:
  void note(char character);

  const int descriptor_;
  const uint64_t size_;
  uint64_t taken_ = 0;  // bytes handed out
  char last_ = '\0';
  uint32_t digits_ = 0;  // in the number that is being read
  uint32_t digitsBeforeLast_ = 0;
  uint32_t digitsBeforeLastButOne_ = 0;
};

}  // namespace lineup
