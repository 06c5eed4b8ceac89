#include "batched_lines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <sstream>
#include <thread>
#include <vector>

namespace corvane::server {
namespace {

std::string Written(std::FILE* f) {
  std::fflush(f);
  std::rewind(f);
  std::string text;
  char buf[4096];
  for (size_t n; (n = std::fread(buf, 1, sizeof buf, f)) > 0;) text.append(buf, n);
  return text;
}

TEST(BatchedLinesTest, LinesOfSeveralThreadsArriveWholeAndInEachThreadsOrder) {
  std::FILE* f = std::tmpfile();
  {
    BatchedLines lines(f, std::chrono::milliseconds(5), 256);  // small batches: many writes
    std::vector<std::jthread> threads;
    for (int t = 0; t < 4; ++t)
      threads.emplace_back([&lines, t] {
        for (int i = 0; i < 500; ++i) lines.Add("thread " + std::to_string(t) + " line " + std::to_string(i));
      });
  }  // the threads end, then the lines: what waits is written
  std::istringstream in(Written(f));
  std::vector<int> next(4, 0);
  int count = 0;
  for (std::string line; std::getline(in, line); ++count) {
    int t = -1, i = -1;
    ASSERT_EQ(std::sscanf(line.c_str(), "thread %d line %d", &t, &i), 2) << line;
    ASSERT_EQ(i, next[t]++) << line;
  }
  EXPECT_EQ(count, 2000);
  std::fclose(f);
}

TEST(BatchedLinesTest, ALineIsWrittenWithinTheDelayWithoutWaitingForMore) {
  int fds[2];
  ASSERT_EQ(pipe(fds), 0);
  std::FILE* out = fdopen(fds[1], "w");
  {
    BatchedLines lines(out, std::chrono::milliseconds(20));
    lines.Add("alone");
    pollfd readable{.fd = fds[0], .events = POLLIN};
    ASSERT_EQ(poll(&readable, 1, 5000), 1) << "nothing written";
    char buf[16] = {};
    EXPECT_EQ(std::string(buf, read(fds[0], buf, sizeof buf)), "alone\n");
  }
  std::fclose(out);
  close(fds[0]);
}

}  // namespace
}  // namespace corvane::server
