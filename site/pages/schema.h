// The demo office's schema and seed data.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvane::site {

// The database products the site's schema is written for.
enum class SqlProduct { SQLite, PostgreSQL, MariaDB };

// One "create" statement each, in the order they must run.
const std::vector<std::string_view>& SchemaStatements();
// The indexes, each made only when missing: they run on a new database and at every start (a
// database made by an earlier version gains the ones it lacks).
const std::vector<std::string_view>& IndexStatements();
// What must run after the seed rows are in (PostgreSQL: the key sequences moved past the seed's keys).
std::vector<std::string> AfterSeedStatements(SqlProduct product);

// The seed rows as insert statements, with the plans laid out around `today` (a Date serial).
std::vector<std::string> SeedStatements(double today);

}  // namespace corvane::site
