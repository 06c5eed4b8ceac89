// For tests only: the SQLite handle under an open connection, to install probes (a counting SQL
// function) or read statement counters. nullptr when the connection is closed or not on SQLite.
#pragma once

#include <sqlite3.h>

#include "corvane/ado.h"

namespace corvane::ado::detail {

sqlite3* SqliteHandleOf(const Connection& connection);

}  // namespace corvane::ado::detail
