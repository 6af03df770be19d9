#include "controller/config_file_transport.h"

#include <fcntl.h>
#include <poll.h>
#include <thrift/protocol/TProtocolException.h>
#include <thrift/transport/TFDTransport.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "model/no_size_limits.h"

namespace lineup {

using apache::thrift::protocol::TProtocolException;
using apache::thrift::transport::TFDTransport;

namespace {

constexpr uint32_t kBufferSize = 512;

/// Escapes of JSON that the library does not read, and the characters that they are replaced by:
/// the library writes the first but reads nothing for it, and throws an error for the second.
constexpr std::pair<std::string_view, char> kUnknownEscapes[] = {{"u0000", '\0'}, {"/", '/'}};

constexpr int kHexDigits = 4;  // of an escape of JSON

bool isSpace(char character) {
  return character == ' ' || character == '\t' || character == '\r' || character == '\n';
}

bool isDigit(char character) {
  return character >= '0' && character <= '9';
}

bool isOfNumber(char character) {
  switch (character) {
    case '+':
    case '-':
    case '.':
    case 'e':
    case 'E':
      return true;
    default:
      return isDigit(character);
  }
}

/// A transport that owns `descriptor` from now on.
std::shared_ptr<TFDTransport> takeOver(Descriptor& descriptor) {
  constexpr auto kClosing = TFDTransport::CLOSE_ON_DESTROY;
  auto transport = std::make_shared<TFDTransport>(descriptor.number(), kClosing, noSizeLimits());
  descriptor.release();
  return transport;
}

}  // namespace

ConfigFileTransport::ConfigFileTransport(Descriptor& descriptor)
    : TBufferedTransport(nullptr, kBufferSize, kBufferSize, noSizeLimits()),
      descriptor_(descriptor.number()),
      blocks_((fcntl(descriptor.number(), F_GETFL) & O_NONBLOCK) == 0) {
  transport_ = takeOver(descriptor);
}

bool ConfigFileTransport::waitForBytes(uint64_t count) {
  while (ahead_.size() - aheadTaken_ < count) {
    uint8_t part[kBufferSize];
    const uint64_t missing = count - (ahead_.size() - aheadTaken_);
    const uint32_t size = TBufferedTransport::read(
        part, static_cast<uint32_t>(std::min<uint64_t>(missing, kBufferSize)));
    if (size == 0) {
      return false;
    }
    ahead_.append(part, part + size);
  }
  return true;
}

uint32_t ConfigFileTransport::readAll_virt(uint8_t* buffer, uint32_t length) {
  for (uint32_t index = 0; index < length; ++index) {
    const char character = takeUnescaped();
    note(character);
    buffer[index] = static_cast<uint8_t>(character);
  }
  return length;
}

/// Called for more bytes than the buffer has left.
uint32_t ConfigFileTransport::readSlow(uint8_t* buffer, uint32_t length) {
  if (!blocks_) {
    pollfd input{descriptor_, POLLIN, 0};
    poll(&input, 1, -1);
  }
  return TBufferedTransport::readSlow(buffer, length);
}

char ConfigFileTransport::take() {
  if (aheadTaken_ == ahead_.size()) {
    uint8_t byte = 0;
    TBufferedTransport::readAll(&byte, 1);
    return static_cast<char>(byte);
  }
  const char character = ahead_[aheadTaken_++];
  if (aheadTaken_ == ahead_.size()) {
    ahead_.clear();
    aheadTaken_ = 0;
  }
  return character;
}

/// Looks no further than the text matches: a pipe may have come to its last character.
bool ConfigFileTransport::isAhead(std::string_view text) {
  for (std::size_t index = 0; index < text.size(); ++index) {
    if (!waitForBytes(index + 1) || ahead_[aheadTaken_ + index] != text[index]) {
      return false;
    }
  }
  return true;
}

/// The next character that is not white space outside a string; white space after a number is
/// returned, as it ends the number.
char ConfigFileTransport::takeBehindSpace() {
  char character = take();
  if (inText_ || !isSpace(character)) {
    return character;
  }
  while (isSpace(character)) {
    character = take();
  }
  if (isOfNumber(last_) && isOfNumber(character)) {
    throw TProtocolException(TProtocolException::INVALID_DATA, "two numbers in a row");
  }
  return character;
}

/// The next character; for an escape that the library does not know, what it stands for.
char ConfigFileTransport::takeUnescaped() {
  const char character = takeBehindSpace();
  if (hexDigits_ > 0) {
    --hexDigits_;
    return character >= 'A' && character <= 'F' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
  }
  if (escaped_) {
    escaped_ = false;
    hexDigits_ = character == 'u' ? kHexDigits : 0;
    return character;
  }
  inText_ = inText_ != (character == '"');
  escaped_ = character == '\\';
  if (!escaped_) {
    return character;
  }
  for (const auto& [text, meaning] : kUnknownEscapes) {
    if (isAhead(text)) {
      for (std::size_t index = 0; index < text.size(); ++index) {
        take();
      }
      escaped_ = false;
      return meaning;
    }
  }
  return character;
}

void ConfigFileTransport::note(char character) {
  digitsBeforeLastButOne_ = std::exchange(digitsBeforeLast_, digits_);
  last_ = character;
  if (isDigit(character)) {
    ++digits_;
  } else if (!isOfNumber(character)) {
    digits_ = 0;
  }
}

}  // namespace lineup
