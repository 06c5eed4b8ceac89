#include "delayed_jobs.h"

#include <utility>

namespace corvane::server {

DelayedJobs::DelayedJobs() : thread_([this] { Run(); }) {}

DelayedJobs::~DelayedJobs() { Stop(); }

void DelayedJobs::After(std::chrono::milliseconds delay, std::function<void()> job) {
  {
    std::lock_guard lock(mu_);
    if (stopping_) return;
    due_.emplace(Clock::now() + delay, std::move(job));
  }
  wake_.notify_one();
}

void DelayedJobs::Stop() {
  std::multimap<Clock::time_point, std::function<void()>> dropped;
  {
    std::lock_guard lock(mu_);
    stopping_ = true;
    dropped.swap(due_);
  }
  wake_.notify_one();
  if (thread_.joinable() && thread_.get_id() != std::this_thread::get_id()) thread_.join();
}

void DelayedJobs::Run() {
  std::unique_lock lock(mu_);
  while (!stopping_) {
    if (due_.empty()) {
      wake_.wait(lock);
      continue;
    }
    auto first = due_.begin();
    if (first->first > Clock::now()) {
      wake_.wait_until(lock, first->first);
      continue;
    }
    std::function<void()> job = std::move(first->second);
    due_.erase(first);
    lock.unlock();
    job();
    lock.lock();
  }
}

}  // namespace corvane::server
