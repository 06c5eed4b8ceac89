// The data layer's own way into the objects it hands out: the driver session under a Connection and
// the state of a Recordset, which the public classes keep hidden.
#pragma once

#include "ado/connection_impl.h"
#include "ado/recordset_impl.h"
#include "corvane/ado.h"

namespace corvane::ado::detail {

struct Access {
  static ConnectionImpl& Of(const Connection& c) { return *c.impl_; }
  static RecordsetImpl& Of(const Recordset& r) { return *r.impl_; }
};

}  // namespace corvane::ado::detail
