#include "site.h"

namespace corvane::site {

bool PrepareDatabase(const std::string&) { return false; }
void RegisterPages(server::PageRegistry&) {}

}  // namespace corvane::site
