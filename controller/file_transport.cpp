#include "controller/file_transport.h"

#include <sys/stat.h>
#include <thrift/transport/TFDTransport.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "controller/unlimited.h"

namespace lineup {

using apache::thrift::transport::TFDTransport;

namespace {

constexpr uint32_t kBufferSize = 512;

/// A transport that owns `descriptor` from now on.
std::shared_ptr<TFDTransport> takeOver(Descriptor& descriptor) {
  constexpr auto kClosing = TFDTransport::CLOSE_ON_DESTROY;
  auto transport = std::make_shared<TFDTransport>(descriptor.number(), kClosing, unlimited());
  descriptor.release();
  return transport;
}

uint64_t sizeOf(int descriptor) {
  struct stat status {};
  return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)
             ? static_cast<uint64_t>(status.st_size)
             : BoundedSource::kUnknown;
}

}  // namespace

Descriptor::~Descriptor() {
  if (isOpen()) {
    ::close(number_);
  }
}

// gcov counts the first initialization with the second.
FileTransport::FileTransport(Descriptor& descriptor)
    : TBufferedTransport(nullptr, kBufferSize, kBufferSize, unlimited()),  // GCOVR_EXCL_LINE
      descriptor_(descriptor.number()),
      size_(sizeOf(descriptor.number())) {
  transport_ = takeOver(descriptor);
}

uint64_t FileTransport::bytesLeft() const {
  return size_ == kUnknown ? kUnknown : size_ - std::min(size_, taken_);
}

uint32_t FileTransport::readAll_virt(uint8_t* buffer, uint32_t length) {
  const uint32_t read = TBufferedTransport::readAll(buffer, length);
  taken_ += read;
  for (uint32_t index = 0; index < read; ++index) {
    note(static_cast<char>(buffer[index]));
  }
  return read;
}

void FileTransport::note(char character) {
  digitsBeforeLastButOne_ = std::exchange(digitsBeforeLast_, digits_);
  last_ = character;
  switch (character) {
    case '+':
    case '-':
    case '.':
    case 'e':
    case 'E':
      break;
    default:
      digits_ = character >= '0' && character <= '9' ? digits_ + 1 : 0;
  }
}

}  // namespace lineup
