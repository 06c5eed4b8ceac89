// The worker threads that run pages: a fixed number of threads taking jobs in arrival order.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace corvane::server {

class WorkerPool {
 public:
  explicit WorkerPool(int threads);
  // Finishes the jobs already posted, then joins the threads.
  ~WorkerPool();
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  // Runs `job` on a worker when one is free. A job must not throw.
  void Post(std::function<void()> job);
  // Jobs waiting for a worker, and jobs running.
  size_t Pending() const;

 private:
  void Work();

  mutable std::mutex mu_;
  std::condition_variable wake_;
  std::deque<std::function<void()>> jobs_;
  size_t running_ = 0;
  bool stopping_ = false;
  std::vector<std::thread> threads_;
};

}  // namespace corvane::server
