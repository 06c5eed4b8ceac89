// Pages: C++ functions registered by path, each given the host objects of its request as an ASP page
// had them (Request, Response, Session, Server, Application).
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "corvane/host.h"

namespace corvane::server {

struct PageContext {
  host::Request& Request;
  host::Response& Response;
  host::SessionObject& Session;
  host::Server& Server;
  host::Application& Application;
};

using PageFunction = std::function<void(PageContext&)>;

// Paths are matched case-insensitively ("/Scheduler/PersonWeek.asp" finds "/scheduler/personWeek.asp").
class PageRegistry {
 public:
  // Registers `path` (beginning with "/"); a second registration of the same path replaces the first.
  void Add(std::string_view path, PageFunction page);
  const PageFunction* Find(std::string_view path) const;
  std::vector<std::string> Paths() const;

 private:
  std::map<std::string, PageFunction> pages_;  // lower-case path -> page
};

}  // namespace corvane::server
