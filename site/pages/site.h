// The demo office site: its database and its pages.
#pragma once

#include <string>

#include "page_registry.h"

namespace corvane::site {

// Creates the site's tables and seeds them (a company with two systems, staff, plans around today,
// access groups, a menu tree, notices and contacts) when the database has no "person" table yet.
// Returns true when it seeded.
bool PrepareDatabase(const std::string& connStr);

// Registers every page of the site.
void RegisterPages(server::PageRegistry& pages);

}  // namespace corvane::site
