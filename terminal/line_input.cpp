#include "terminal/line_input.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <iostream>
#include <string_view>
#include <utility>

#include "support/ending_signals.h"
#include "terminal/line_editing.h"

namespace lineup {

namespace {

std::function<bool()> spareTimeHook = [] { return false; };

/// Standard input, buffered.
class Input {
 public:
  bool readLine(std::string& line) {
    line.clear();
    while (true) {
      const std::string_view rest(buffer_.data() + begin_, end_ - begin_);
      const std::size_t lineFeed = rest.find('\n');
      if (lineFeed != std::string_view::npos) {
        line.append(rest, 0, lineFeed);
        begin_ += lineFeed + 1;
        return true;
      }
      line.append(rest);
      begin_ = end_ = 0;
      if (!fill()) {
        return !line.empty();
      }
    }
  }

 private:
  /// Reads more into the empty buffer; false at the end of input, which is final.
  bool fill() {
    while (!ended_) {
      waitForLine();
      const ssize_t count = read(STDIN_FILENO, buffer_.data(), buffer_.size());
      if (count > 0) {
        end_ = static_cast<std::size_t>(count);
        return true;
      }
      if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
        continue;
      }
      ended_ = true;
      throwIfSignalled();  // a signal that came with the end of input is why it ended
      if (terminal_) {
        throwIfHungUp(STDIN_FILENO);
      }
    }
    return false;
  }

  void waitForLine() const {
    if (terminal_) {
      pollfd input{STDIN_FILENO, POLLIN, 0};
      waitForTyping({&input, 1});
    } else {
      waitForInput(STDIN_FILENO);
    }
  }

  const bool terminal_ = isatty(STDIN_FILENO) == 1;
  bool ended_ = false;
  std::array<char, 4096> buffer_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
};

bool readPlainLine(const std::string& prompt, std::string& line) {
  static Input input;
  std::cout << prompt << std::flush;
  // Perhaps nobody reads the output, and the next line is in the buffer already.
  throwIfSignalled();
  return input.readLine(line);
}

bool readEditedLine(const std::string& prompt, const LineAids& aids, std::string& line) {
  while (true) {
    switch (editLine(prompt, aids, line)) {
      case Edited::Line:
        rememberLine(line);
        return true;
      case Edited::Dropped:
        break;
      case Edited::End:
        return false;
    }
  }
}

}  // namespace

void whenThereIsTime(std::function<bool()> hook) {
  spareTimeHook = std::move(hook);
}

void waitForTyping(std::span<pollfd> inputs) {
  constexpr std::chrono::milliseconds kPause(500);
  bool again = true;
  while (again) {
    if (waitForInput(inputs, kPause)) {
      return;
    }
    again = spareTimeHook();
  }
  waitForInput(inputs);
}

bool readCommandLine(const std::string& prompt, const LineAids& aids, std::string& line) {
  spareTimeHook();
  const bool read =
      canEditLines() ? readEditedLine(prompt, aids, line) : readPlainLine(prompt, line);
  if (read) {
    spareTimeHook();
  }
  return read;
}

bool readAnswer(std::string& line) {
  return canEditLines() ? editLine("", {}, line) != Edited::End : readPlainLine("", line);
}

}  // namespace lineup
