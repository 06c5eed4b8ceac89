#include "http_workers.h"

namespace corvane::server {

WorkerPool::WorkerPool(int threads) {
  for (int i = 0; i < (threads < 1 ? 1 : threads); ++i) threads_.emplace_back([this] { Work(); });
}

WorkerPool::~WorkerPool() {
  {
    std::lock_guard lock(mu_);
    stopping_ = true;
  }
  wake_.notify_all();
  for (std::thread& t : threads_) t.join();
}

void WorkerPool::Post(std::function<void()> job) {
  {
    std::lock_guard lock(mu_);
    jobs_.push_back(std::move(job));
  }
  wake_.notify_one();
}

size_t WorkerPool::Pending() const {
  std::lock_guard lock(mu_);
  return jobs_.size() + running_;
}

void WorkerPool::Work() {
  std::unique_lock lock(mu_);
  for (;;) {
    wake_.wait(lock, [this] { return stopping_ || !jobs_.empty(); });
    if (jobs_.empty()) return;  // stopping, and nothing left to do
    std::function<void()> job = std::move(jobs_.front());
    jobs_.pop_front();
    ++running_;
    lock.unlock();
    job();
    job = nullptr;  // what the job held goes before the next one starts
    lock.lock();
    --running_;
  }
}

}  // namespace corvane::server
