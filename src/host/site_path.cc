// Site paths ("/a/b.asp") and their local files: resolving a page's relative paths, and finding the
// local path case-blind, as the site's pages were written for a file system that ignores case.
#include <filesystem>

#include "corvane/error.h"
#include "corvane/host.h"
#include "corvane/text.h"

namespace corvane::host {

namespace fs = std::filesystem;

std::optional<std::string> ResolveSitePath(std::string_view base, std::string_view path) {
  if (path.find(':') != std::string_view::npos || path.find('\0') != std::string_view::npos)
    return std::nullopt;
  std::string p(path);
  for (char& c : p)
    if (c == '\\') c = '/';
  std::vector<std::string> segs;
  if (p.empty() || p.front() != '/') {  // relative: from the folder of the base page
    std::string folder(base.substr(0, base.rfind('/') == std::string_view::npos ? 0 : base.rfind('/')));
    for (std::string& s : Split(folder, "/"))
      if (!s.empty()) segs.push_back(std::move(s));
  }
  for (std::string& s : Split(p, "/")) {
    if (s.empty() || s == ".") continue;
    if (s == "..") {
      if (segs.empty()) return std::nullopt;
      segs.pop_back();
      continue;
    }
    segs.push_back(std::move(s));
  }
  std::string out;
  for (const std::string& s : segs) out += "/" + s;
  return out.empty() ? "/" : out;
}

std::string LocalPathIn(const std::string& folder, std::string_view sitePath) {
  fs::path at(folder);
  bool onDisk = true;  // every segment so far exists
  for (const std::string& seg : Split(sitePath, "/")) {
    if (seg.empty()) continue;
    std::error_code ec;
    if (onDisk && !fs::exists(at / seg, ec)) {
      onDisk = false;
      for (fs::directory_iterator it(at, ec), end; !ec && it != end; it.increment(ec))
        if (EqualsNoCase(it->path().filename().string(), seg)) {
          at = it->path();
          onDisk = true;
          break;
        }
      if (onDisk) continue;
    }
    at /= seg;
  }
  return at.string();
}

Error HostError(std::string description) {
  return Error(-2147467259, std::move(description), "Server");  // 0x80004005
}

}  // namespace corvane::host
