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

#include "support/ending_signals.h"

namespace lineup::test {
namespace {

/// Runs `print` in a child process, the standard output of which is `descriptor`. Returns its
/// status as of waitpid().
template <class Print>
int inChild(int descriptor, Print print) {
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
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  fcntl(ends[1], F_SETFL, O_NONBLOCK);
  const pid_t child = inChild(ends[1], [] {
    for (int count = 0; count < 100'000; count += 2) {
      std::cout << count << '\n' << std::flush;
      std::printf("%d\n", count + 1);
    }
  });
  poll(nullptr, 0, 50);  // the pipe is full then, or will be
  EXPECT_EQ(readAll(ends[0]), numbers());
  EXPECT_EQ(statusOf(child), 0);
}

TEST(Output, WhatCannotBeWrittenIsForgotten) {
  const int full = open("/dev/full", O_WRONLY);
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  const pid_t child = inChild(full, [&] {
    std::cout << "lost" << std::endl;
    std::puts("lost");
    std::fflush(stdout);
    dup2(ends[1], STDOUT_FILENO);
    std::cout << "seen" << std::endl;
    std::puts("seen");
  });
  close(ends[1]);
  EXPECT_EQ(readAll(ends[0]), "seen\nseen\n");
  EXPECT_EQ(statusOf(child), 0);
}

TEST(Output, AnOutputThatNobodyReadsIsGivenUpWhenTheEndIsOverdue) {
  for (const int flags : {0, O_NONBLOCK}) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    fcntl(ends[1], F_SETFL, flags);
    const std::string text = numbers();
    const pid_t child = inChild(ends[1], [&] {
      std::raise(SIGTERM);
      for (int count = 0; count < 10; ++count) {
        std::cout << text << std::flush;
      }
    });
    EXPECT_EQ(statusOf(child), 0);
    close(ends[0]);
  }
}

}  // namespace
}  // namespace lineup::test
