// Jobs to start later, on one thread that only hands them on: a page whose session another process
// holds waits here, between tries, without holding a worker.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <thread>

namespace corvane::server {

class DelayedJobs {
 public:
  using Clock = std::chrono::steady_clock;
  DelayedJobs();
  // Drops the jobs not yet due (as a store drops the jobs still waiting for their session).
  ~DelayedJobs();
  DelayedJobs(const DelayedJobs&) = delete;
  DelayedJobs& operator=(const DelayedJobs&) = delete;

  // Runs `job` on the delayed jobs' thread once `delay` has passed; it must only hand the work on
  // (to the workers) and must not throw. After Stop() the job is dropped.
  void After(std::chrono::milliseconds delay, std::function<void()> job);
  // Drops the jobs not yet due and joins the thread; later jobs are dropped.
  void Stop();

 private:
  void Run();
  std::mutex mu_;
  std::condition_variable wake_;
  std::multimap<Clock::time_point, std::function<void()>> due_;
  bool stopping_ = false;
  std::thread thread_;
};

}  // namespace corvane::server
