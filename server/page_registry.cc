#include "page_registry.h"

#include "corvane/text.h"

namespace corvane::server {

void PageRegistry::Add(std::string_view path, PageFunction page) { pages_[LCase(path)] = std::move(page); }

const PageFunction* PageRegistry::Find(std::string_view path) const {
  auto it = pages_.find(LCase(path));
  return it == pages_.end() ? nullptr : &it->second;
}

std::vector<std::string> PageRegistry::Paths() const {
  std::vector<std::string> paths;
  for (const auto& [path, page] : pages_) paths.push_back(path);
  return paths;
}

}  // namespace corvane::server
