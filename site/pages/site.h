// The demo office site: its database. Its pages are script pages (.asp) under site/www.
#pragma once

#include <string>

#include "page_guard.h"

namespace corvane::site {

// Creates the site's tables and seeds them (a company with two systems, staff, plans around today,
// access groups, a menu tree, notices and contacts) when the database has no "person" table yet.
// Returns true when it seeded.
bool PrepareDatabase(const std::string& connStr);

// The rule the host asks before every page of the site: the rights per page (page_rights.h), then the
// file names an upload sends (upload_names.h).
server::PageGuard SiteGuard(const std::string& connStr);

}  // namespace corvane::site
