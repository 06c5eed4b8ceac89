// The process's count of statements that may have changed data (ado::ChangeCount).
#include <atomic>

#include "ado/driver.h"
#include "corvane/ado.h"

namespace corvane::ado {

namespace {
std::atomic<uint64_t> changes{0};
}  // namespace

uint64_t ChangeCount() { return changes.load(std::memory_order_acquire); }

namespace detail {

int64_t RunChanging(Cursor& statement) {
  struct Count {
    ~Count() { changes.fetch_add(1, std::memory_order_release); }
  } count;
  return statement.Run();
}

}  // namespace detail
}  // namespace corvane::ado
