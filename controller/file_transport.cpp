#include "controller/file_transport.h"

#include <sys/stat.h>
#include <thrift/transport/TFDTransport.h>
#include <unistd.h>

#include <memory>
#include <string_view>
#include <utility>

#include "controller/unlimited.h"

namespace lineup {

using apache::thrift::transport::TFDTransport;

namespace {

constexpr uint32_t kBufferSize = 512;

/// A transport that owns `descriptor` from now on.
std::shared_ptr<TFDTransport> takeOver(Descriptor& descriptor) {
  auto transport = std::make_shared<TFDTransport>(descriptor.number(),
                                                  TFDTransport::CLOSE_ON_DESTROY, unlimited());
  descriptor.release();
  return transport;
}

}  // namespace

Descriptor::~Descriptor() {
  if (isOpen()) {
    ::close(number_);
  }
}

FileTransport::FileTransport(Descriptor& descriptor)
    : TBufferedTransport(nullptr, kBufferSize, kBufferSize, unlimited()),
      descriptor_(descriptor.number()) {
  transport_ = takeOver(descriptor);
}

uint64_t FileTransport::size() const {
  struct stat status {};
  return fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode)
             ? static_cast<uint64_t>(status.st_size)
             : kUnknown;
}

uint64_t FileTransport::bytesLeft() const {
  const uint64_t total = size();
  const off_t taken = lseek(descriptor_, 0, SEEK_CUR);
  if (total == kUnknown || taken < 0) {
    return kUnknown;
  }
  const uint64_t used = static_cast<uint64_t>(taken) - static_cast<uint64_t>(rBound_ - rBase_);
  return used < total ? total - used : 0;
}

uint32_t FileTransport::readAll_virt(uint8_t* buffer, uint32_t length) {
  const uint32_t read = TBufferedTransport::readAll(buffer, length);
  for (uint32_t index = 0; index < read; ++index) {
    note(static_cast<char>(buffer[index]));
  }
  return read;
}

void FileTransport::note(char character) {
  constexpr std::string_view kDigits = "0123456789";
  constexpr std::string_view kOtherNumberCharacters = "+-.eE";
  digitsBeforeLastButOne_ = std::exchange(digitsBeforeLast_, digits_);
  last_ = character;
  if (kDigits.find(character) != std::string_view::npos) {
    ++digits_;
  } else if (kOtherNumberCharacters.find(character) == std::string_view::npos) {
    digits_ = 0;
  }
}

}  // namespace lineup
