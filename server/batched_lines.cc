#include "batched_lines.h"

namespace corvane::server {

BatchedLines::BatchedLines(std::FILE* out, std::chrono::milliseconds delay, size_t most)
    : out_(out), delay_(delay), most_(most), writer_([this] { WriteLoop(); }) {}

BatchedLines::~BatchedLines() {
  {
    std::lock_guard lock(mu_);
    stopping_ = true;
  }
  wake_.notify_one();
  writer_.join();
}

void BatchedLines::Add(std::string_view line) {
  bool wake;
  {
    std::lock_guard lock(mu_);
    // The writer sleeps until a batch starts, and then until its time is up or it is full.
    wake = waiting_.empty();
    waiting_.append(line);
    waiting_ += '\n';
    wake = wake || waiting_.size() >= most_;
  }
  if (wake) wake_.notify_one();
}

void BatchedLines::WriteLoop() {
  std::string batch;
  std::unique_lock lock(mu_);
  for (;;) {
    wake_.wait(lock, [this] { return stopping_ || !waiting_.empty(); });
    wake_.wait_for(lock, delay_, [this] { return stopping_ || waiting_.size() >= most_; });
    if (waiting_.empty() && stopping_) return;
    batch.swap(waiting_);
    lock.unlock();
    std::fwrite(batch.data(), 1, batch.size(), out_);
    std::fflush(out_);
    batch.clear();
    lock.lock();
  }
}

}  // namespace corvane::server
