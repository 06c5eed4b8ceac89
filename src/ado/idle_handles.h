// The idle handles of one database (SQLite handles, ODBC connections), shared by every thread: a
// handle is lent to one user at a time and comes back here when that user lets go. The most recently
// returned is lent first (its caches are warmest); at most `maxIdle` are kept, and handles are closed
// outside the lock.
#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

namespace corvane::ado::detail {

template <typename Handle>
class IdleHandles {
 public:
  explicit IdleHandles(size_t maxIdle) : maxIdle_(maxIdle) {}

  // The most recently kept handle for which `usable(handle)` holds, the others on the way closed;
  // nullptr when none is left.
  template <typename Usable>
  std::unique_ptr<Handle> Take(Usable usable) {
    while (true) {
      std::unique_ptr<Handle> handle;
      {
        std::lock_guard lock(mu_);
        if (idle_.empty()) return nullptr;
        handle = std::move(idle_.back());
        idle_.pop_back();
      }
      if (usable(*handle)) return handle;
    }
  }
  // Keeps `handle` for the next Take when there is room; closes it otherwise.
  void Keep(std::unique_ptr<Handle> handle) {
    {
      std::lock_guard lock(mu_);
      if (idle_.size() < maxIdle_) {
        idle_.push_back(std::move(handle));
        return;
      }
    }
    handle.reset();
  }
  void CloseAll() {
    std::vector<std::unique_ptr<Handle>> closing;
    std::lock_guard lock(mu_);
    closing.swap(idle_);
  }
  size_t Count() const {
    std::lock_guard lock(mu_);
    return idle_.size();
  }

 private:
  const size_t maxIdle_;
  mutable std::mutex mu_;
  std::vector<std::unique_ptr<Handle>> idle_;
};

}  // namespace corvane::ado::detail
