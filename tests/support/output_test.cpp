// Printing to outputs that take little, nothing for a while, or nothing at all.

#include "support/output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <iostream>
#include <string>
#include <utility>

#include "support/ending_signals.h"
#include "tests/support/pipe.h"

namespace lineup::test {
namespace {

/// Runs `print` in a child process, the standard output of which is `descriptor`, which is closed
/// here. Returns its id.
template <class Print>
pid_t inChild(int descriptor, Print print) {
  const pid_t child = fork();
  if (child == 0) {
    dup2(descriptor, STDOUT_FILENO);
    keepPrinting();
    catchEndingSignals();
    print();
    std::fflush(stdout);
    _exit(0);
  }
  close(descriptor);
  return child;
}

int statusOf(pid_t child) {
  int status = -1;
  waitpid(child, &status, 0);
  return status;
}

std::string readAll(int descriptor) {
  std::string text;
  std::array<char, 1000> part{};
  for (ssize_t count = 0; (count = read(descriptor, part.data(), part.size())) > 0;) {
    text.append(part.data(), static_cast<std::size_t>(count));
  }
  return text;
}

std::string numbers() {
  std::string text;
  for (int count = 0; count < 100'000; ++count) {
    text += std::to_string(count) + '\n';
  }
  return text;
}

TEST(Output, ANonBlockingOutputIsWaitedFor) {
  Pipe pipe;
  fcntl(pipe.writeEnd, F_SETFL, O_NONBLOCK);
  const pid_t child = inChild(std::exchange(pipe.writeEnd, -1), [] {
    for (int count = 0; count < 100'000; count += 2) {
      std::cout << count << '\n' << std::flush;
      std::printf("%d\n", count + 1);
    }
  });
  poll(nullptr, 0, 50);  // the pipe is full then, or will be
  EXPECT_EQ(readAll(pipe.readEnd), numbers());
  EXPECT_EQ(statusOf(child), 0);
}

TEST(Output, WhatCannotBeWrittenIsForgotten) {
  const int full = open("/dev/full", O_WRONLY);
  Pipe pipe;
  const pid_t child = inChild(full, [&] {
    std::cout << "lost" << std::endl;
    std::puts("lost");
    std::fflush(stdout);
    dup2(pipe.writeEnd, STDOUT_FILENO);
    std::cout << "seen" << std::endl;
    std::puts("seen");
  });
  closeFile(pipe.writeEnd);
  EXPECT_EQ(readAll(pipe.readEnd), "seen\nseen\n");
  EXPECT_EQ(statusOf(child), 0);
}

TEST(Output, AnOutputThatNobodyReadsIsGivenUpWhenTheEndIsOverdue) {
  for (const int flags : {0, O_NONBLOCK}) {
    Pipe pipe;
    fcntl(pipe.writeEnd, F_SETFL, flags);
    const std::string text = numbers();
    const pid_t child = inChild(std::exchange(pipe.writeEnd, -1), [&] {
      std::raise(SIGTERM);
      for (int count = 0; count < 10; ++count) {
        std::cout << text << std::flush;
      }
    });
    EXPECT_EQ(statusOf(child), 0);
  }
}

}  // namespace
}  // namespace lineup::test
