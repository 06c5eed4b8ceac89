// What a Connection holds while open: its driver session.
#pragma once

#include <memory>

#include "ado/driver.h"

namespace corvane::ado::detail {

class ConnectionImpl {
 public:
  std::shared_ptr<Session> session;  // null while closed
};

}  // namespace corvane::ado::detail
