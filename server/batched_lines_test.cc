#include "batched_lines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <thread>
#include <vector>

namespace corvane::server {
namespace {

// A torn or reordered line breaks the pattern or the count; what waits at the end is written too.
TEST(BatchedLinesTest, LinesOfSeveralThreadsArriveWholeAndInEachThreadsOrder) {
  std::FILE* f = std::tmpfile();
  {
    BatchedLines lines(f, std::chrono::milliseconds(5), 256);  // small batches: many writes
    std::vector<std::jthread> threads;
    for (int t = 0; t < 4; ++t)
      threads.emplace_back([&lines, t] {
        for (int i = 0; i < 500; ++i) lines.Add("thread " + std::to_string(t) + " line " + std::to_string(i));
      });
  }  // the threads end, then the lines
  std::rewind(f);
  std::vector<int> next(4, 0);
  int count = 0, t, i;
  for (; std::fscanf(f, "thread %d line %d\n", &t, &i) == 2; ++count) ASSERT_EQ(i, next[t]++);
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
