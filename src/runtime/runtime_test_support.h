// Helpers for the runtime's table-driven tests.
#pragma once

#include <string>

#include "test_support.h"

namespace corvane::testing {

// What `f` returns, or "#n" when it raises platform error n: one column of a table holds both.
template <class F>
std::string Outcome(F&& f) {
  std::string out;
  const int32_t n = ErrorNumber([&] { out = f(); });
  return n ? "#" + std::to_string(n) : out;
}

}  // namespace corvane::testing
