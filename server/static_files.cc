#include "static_files.h"

#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <mutex>
#include <unordered_map>

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

std::optional<ByteRange> SingleRange(std::string_view header, size_t size) {
  constexpr std::string_view kUnit = "bytes=";
  if (header.size() <= kUnit.size() || header.substr(0, kUnit.size()) != kUnit) return std::nullopt;
  std::string_view range = header.substr(kUnit.size());
  if (range.find(',') != std::string_view::npos) return std::nullopt;
  size_t dash = range.find('-');
  if (dash == std::string_view::npos) return std::nullopt;
  auto number = [](std::string_view digits, size_t& out) {
    if (digits.empty() || digits.size() > 18) return false;
    out = 0;
    for (char c : digits) {
      if (c < '0' || c > '9') return false;
      out = out * 10 + static_cast<size_t>(c - '0');
    }
    return true;
  };
  size_t a = 0, b = 0;
  std::string_view from = range.substr(0, dash), to = range.substr(dash + 1);
  if (from.empty()) {  // the last `to` bytes
    if (!number(to, b)) return std::nullopt;
    if (b == 0 || size == 0) return ByteRange{1, 0};
    return ByteRange{size - std::min(b, size), size - 1};
  }
  if (!number(from, a) || (!to.empty() && (!number(to, b) || b < a))) return std::nullopt;
  if (a >= size) return ByteRange{1, 0};
  return ByteRange{a, to.empty() ? size - 1 : std::min(b, size - 1)};
}

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

// What the cache keeps of one URL path: the file it names, its stamp, its headers and, when small,
// its bytes.
struct StaticFiles::Known {
  fs::path file;
  std::chrono::steady_clock::time_point resolvedAt;
  off_t size = 0;
  timespec mtime{};
  std::string etag, lastModified, contentType;
  std::shared_ptr<const std::string> content;  // null for a file too large to keep
};

struct StaticFiles::Cache {
  static constexpr size_t kMostEntries = 4096, kMostFileBytes = 1u << 20;
  static constexpr std::chrono::seconds kResolveEvery{1};
  std::mutex mu;
  std::unordered_map<std::string, std::shared_ptr<const Known>> byPath;
};

StaticFiles::StaticFiles(fs::path root) : cache_(std::make_shared<Cache>()) {
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

namespace {

bool SameStamp(const struct stat& st, off_t size, const timespec& mtime) {
  return st.st_size == size && st.st_mtim.tv_sec == mtime.tv_sec && st.st_mtim.tv_nsec == mtime.tv_nsec;
}

}  // namespace

std::shared_ptr<const StaticFiles::Known> StaticFiles::Find(std::string_view urlPath) const {
  const auto now = std::chrono::steady_clock::now();
  std::shared_ptr<const Known> known;
  {
    std::lock_guard lock(cache_->mu);
    if (auto it = cache_->byPath.find(std::string(urlPath)); it != cache_->byPath.end()) known = it->second;
  }
  struct stat st {};
  if (known && now - known->resolvedAt < Cache::kResolveEvery && ::stat(known->file.c_str(), &st) == 0 &&
      SameStamp(st, known->size, known->mtime))
    return known;

  std::optional<fs::path> file = Resolve(urlPath);
  if (!file || IsScriptSource(file->filename().string()) || ::stat(file->c_str(), &st) != 0) {
    std::lock_guard lock(cache_->mu);
    cache_->byPath.erase(std::string(urlPath));
    return nullptr;
  }
  auto fresh = std::make_shared<Known>();
  fresh->file = std::move(*file);
  fresh->resolvedAt = now;
  fresh->size = st.st_size;
  fresh->mtime = st.st_mtim;
  char etag[64];
  std::snprintf(etag, sizeof etag, "\"%llx-%llx\"", static_cast<unsigned long long>(st.st_size),
                static_cast<unsigned long long>(st.st_mtim.tv_sec) * 1000000000ull +
                    static_cast<unsigned long long>(st.st_mtim.tv_nsec));
  fresh->etag = etag;
  fresh->lastModified = HttpDate(st.st_mtim.tv_sec);
  fresh->contentType = ContentTypeFor(fresh->file.filename().string());
  // The same bytes as before when only the resolution was due; else read anew.
  if (known && known->content && known->file == fresh->file && SameStamp(st, known->size, known->mtime)) {
    fresh->content = known->content;
  } else if (static_cast<size_t>(st.st_size) <= Cache::kMostFileBytes) {
    std::ifstream in(fresh->file, std::ios::binary);
    if (!in) return nullptr;
    std::string bytes(static_cast<size_t>(st.st_size), '\0');
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<size_t>(in.gcount()));
    fresh->content = std::make_shared<const std::string>(std::move(bytes));
  }
  std::lock_guard lock(cache_->mu);
  if (cache_->byPath.size() >= Cache::kMostEntries) cache_->byPath.clear();
  cache_->byPath[std::string(urlPath)] = fresh;
  return fresh;
}

std::optional<StaticReply> StaticFiles::Get(std::string_view urlPath, std::string_view ifNoneMatch,
                                            std::string_view ifModifiedSince, std::string_view range) const {
  std::string_view asked = urlPath.substr(urlPath.rfind('/') + 1);
  if (IsScriptSource(asked)) return std::nullopt;
  std::shared_ptr<const Known> known = Find(urlPath);
  if (!known) return std::nullopt;

  StaticReply reply;
  const std::string& etag = known->etag;
  const std::string& lastModified = known->lastModified;
  reply.contentType = known->contentType;
  reply.headers = {{"ETag", etag},
                   {"Last-Modified", lastModified},
                   {"Cache-Control", "public, max-age=300"},
                   {"Accept-Ranges", "bytes"}};

  bool notModified = !ifNoneMatch.empty()
                         ? ifNoneMatch.find(etag) != std::string_view::npos || ifNoneMatch == "*"
                         : (!ifModifiedSince.empty() && ifModifiedSince == lastModified);
  if (notModified) {
    reply.status = 304;
    return reply;
  }
  const size_t size = known->content ? known->content->size() : static_cast<size_t>(known->size);
  ByteRange part{0, size - 1};
  if (std::optional<ByteRange> want = SingleRange(range, size)) {
    if (want->first > want->last) {
      reply.status = 416;
      reply.headers.emplace_back("Content-Range", "bytes */" + std::to_string(size));
      return reply;
    }
    part = *want;
    reply.status = 206;
    reply.headers.emplace_back("Content-Range", "bytes " + std::to_string(part.first) + "-" +
                                                    std::to_string(part.last) + "/" + std::to_string(size));
  }
  const size_t length = size == 0 ? 0 : part.last - part.first + 1;
  if (known->content) {
    reply.body = known->content->substr(part.first, length);
  } else {
    std::ifstream in(known->file, std::ios::binary);
    if (!in) return std::nullopt;
    reply.body.resize(length);
    in.seekg(static_cast<std::streamoff>(part.first));
    in.read(reply.body.data(), static_cast<std::streamsize>(reply.body.size()));
    reply.body.resize(static_cast<size_t>(in.gcount()));
  }
  return reply;
}

}  // namespace corvane::server
