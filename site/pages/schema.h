// The demo office's schema and seed data.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvane::site {

// One "create" statement each, in the order they must run.
const std::vector<std::string_view>& SchemaStatements();

// The seed rows as insert statements, with the plans laid out around `today` (a Date serial).
std::vector<std::string> SeedStatements(double today);

}  // namespace corvane::site
