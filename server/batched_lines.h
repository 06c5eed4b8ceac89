// Lines for an output file written in batches, as a busy server's access log is: a line waits at
// most `delay`, or until `most` bytes wait, and each batch is one write. One line per request
// written at once costs a system call and the file's lock on every request.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace corvane::server {

class BatchedLines {
 public:
  explicit BatchedLines(std::FILE* out, std::chrono::milliseconds delay = std::chrono::milliseconds(100),
                        size_t most = 64 * 1024);
  // Writes what still waits.
  ~BatchedLines();
  BatchedLines(const BatchedLines&) = delete;
  BatchedLines& operator=(const BatchedLines&) = delete;

  // Adds `line` and a line end; lines of several threads never mix.
  void Add(std::string_view line);

 private:
  void WriteLoop();

  std::FILE* out_;
  const std::chrono::milliseconds delay_;
  const size_t most_;
  std::mutex mu_;
  std::condition_variable wake_;
  std::string waiting_;
  bool stopping_ = false;
  std::thread writer_;
};

}  // namespace corvane::server
