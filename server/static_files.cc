#include "static_files.h"

#include <sys/stat.h>

#include <cstdio>
#include <ctime>
#include <fstream>
#include <sstream>

namespace corvane::server {

namespace fs = std::filesystem;

namespace {

bool SameNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    char x = a[i], y = b[i];
    if (x >= 'A' && x <= 'Z') x = static_cast<char>(x - 'A' + 'a');
    if (y >= 'A' && y <= 'Z') y = static_cast<char>(y - 'A' + 'a');
    if (x != y) return false;
  }
  return true;
}

std::string HttpDate(std::time_t t) {
  std::tm tm{};
  gmtime_r(&t, &tm);
  char buf[64];
  std::strftime(buf, sizeof buf, "%a, %d %b %Y %H:%M:%S GMT", &tm);
  return buf;
}

bool IsWithin(const fs::path& p, const fs::path& root) {
  auto r = root.begin();
  auto q = p.begin();
  for (; r != root.end(); ++r, ++q)
    if (q == p.end() || *q != *r) return false;
  return true;
}

}  // namespace

std::string ContentTypeFor(std::string_view fileName) {
  static const std::pair<std::string_view, std::string_view> kTypes[] = {
      {".css", "text/css; charset=utf-8"},
      {".js", "text/javascript; charset=utf-8"},
      {".gif", "image/gif"},
      {".png", "image/png"},
      {".jpg", "image/jpeg"},
      {".jpeg", "image/jpeg"},
      {".ico", "image/x-icon"},
      {".svg", "image/svg+xml"},
      {".html", "text/html; charset=utf-8"},
      {".htm", "text/html; charset=utf-8"},
      {".txt", "text/plain; charset=utf-8"},
      {".json", "application/json"},
      {".woff2", "font/woff2"},
      {".pdf", "application/pdf"},
  };
  size_t dot = fileName.rfind('.');
  if (dot != std::string_view::npos) {
    std::string_view ext = fileName.substr(dot);
    for (const auto& [e, type] : kTypes)
      if (SameNoCase(e, ext)) return std::string(type);
  }
  return "application/octet-stream";
}

bool IsScriptSource(std::string_view name) {
  name = name.substr(0, name.find(':'));
  while (!name.empty() && (name.back() == '.' || name.back() == ' ')) name.remove_suffix(1);
  size_t dot = name.rfind('.');
  if (dot == std::string_view::npos) return false;
  std::string_view ext = name.substr(dot + 1);
  for (std::string_view hidden : {"asp", "asa", "inc", "cer"})
    if (SameNoCase(ext, hidden)) return true;
  return false;
}

StaticFiles::StaticFiles(fs::path root) {
  std::error_code ec;
  root_ = fs::canonical(root, ec);
  if (ec) root_ = fs::absolute(root).lexically_normal();
}

namespace {

// Finds segs[i..] below `dir`: the exact name first, then every name equal but for case, so that
// "include/x" is found in "Include/" even when an "include/" without x exists too.
std::optional<fs::path> FindBelow(const fs::path& dir, const std::vector<std::string_view>& segs, size_t i) {
  if (i == segs.size()) return dir;
  std::error_code ec;
  fs::path exact = dir / std::string(segs[i]);
  if (fs::exists(exact, ec))
    if (auto found = FindBelow(exact, segs, i + 1)) return found;
  for (fs::directory_iterator it(dir, ec), end; !ec && it != end; it.increment(ec)) {
    std::string name = it->path().filename().string();
    if (name != segs[i] && SameNoCase(name, segs[i]))
      if (auto found = FindBelow(it->path(), segs, i + 1)) return found;
  }
  return std::nullopt;
}

}  // namespace

std::optional<fs::path> StaticFiles::Resolve(std::string_view urlPath) const {
  std::vector<std::string_view> segs;
  size_t pos = 0;
  while (pos <= urlPath.size()) {
    size_t slash = urlPath.find('/', pos);
    std::string_view seg =
        urlPath.substr(pos, slash == std::string_view::npos ? std::string_view::npos : slash - pos);
    pos = slash == std::string_view::npos ? urlPath.size() + 1 : slash + 1;
    if (seg.empty()) continue;
    if (seg.front() == '.' || seg.find('\\') != std::string_view::npos ||
        seg.find('\0') != std::string_view::npos)
      return std::nullopt;
    segs.push_back(seg);
  }
  if (segs.empty()) return std::nullopt;
  std::optional<fs::path> found = FindBelow(root_, segs, 0);
  if (!found) return std::nullopt;
  std::error_code ec;
  fs::path real = fs::canonical(*found, ec);
  if (ec || !IsWithin(real, root_) || !fs::is_regular_file(real, ec)) return std::nullopt;
  return real;
}

std::optional<StaticReply> StaticFiles::Get(std::string_view urlPath, std::string_view ifNoneMatch,
                                            std::string_view ifModifiedSince) const {
  std::string_view asked = urlPath.substr(urlPath.rfind('/') + 1);
  if (IsScriptSource(asked)) return std::nullopt;
  std::optional<fs::path> file = Resolve(urlPath);
  if (!file || IsScriptSource(file->filename().string())) return std::nullopt;
  struct stat st {};
  if (::stat(file->c_str(), &st) != 0) return std::nullopt;

  StaticReply reply;
  char etag[64];
  std::snprintf(etag, sizeof etag, "\"%llx-%llx\"", static_cast<unsigned long long>(st.st_size),
                static_cast<unsigned long long>(st.st_mtim.tv_sec) * 1000000000ull +
                    static_cast<unsigned long long>(st.st_mtim.tv_nsec));
  std::string lastModified = HttpDate(st.st_mtim.tv_sec);
  reply.contentType = ContentTypeFor(file->filename().string());
  reply.headers = {{"ETag", etag}, {"Last-Modified", lastModified}, {"Cache-Control", "public, max-age=300"}};

  bool notModified = !ifNoneMatch.empty()
                         ? ifNoneMatch.find(etag) != std::string_view::npos || ifNoneMatch == "*"
                         : (!ifModifiedSince.empty() && ifModifiedSince == lastModified);
  if (notModified) {
    reply.status = 304;
    return reply;
  }
  std::ifstream in(*file, std::ios::binary);
  if (!in) return std::nullopt;
  std::ostringstream buf;
  buf << in.rdbuf();
  reply.body = std::move(buf).str();
  return reply;
}

}  // namespace corvane::server
