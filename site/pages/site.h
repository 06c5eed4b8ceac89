// The demo office site: its database. Its pages are script pages (.asp) under site/www.
#pragma once

#include <string>

namespace corvane::site {

// Creates the site's tables and seeds them (a company with two systems, staff, plans around today,
// access groups, a menu tree, notices and contacts) when the database has no "person" table yet.
// Returns true when it seeded.
bool PrepareDatabase(const std::string& connStr);

}  // namespace corvane::site
