// Resolving and confining the paths pages hand to the file classes.
//
// A drive path is mapped by MapDrivePath, which already keeps it inside its drive folder by text. An
// absolute local path is taken as the server gave it (Server.MapPath answers such paths), with "\"
// read as "/" because pages join names to it the platform's way (MapPath(".") & "\a.txt"). Either is
// then checked once more with its links followed: a link inside the drive folders or the site that
// points elsewhere does not open the rest of the machine.
#include "scripting/file_paths.h"

#include <time.h>

#include <algorithm>
#include <chrono>
#include <mutex>

#include "corvane/drive_path.h"
#include "scripting/scripting.h"

namespace corvane::scripting {

namespace fs = std::filesystem;

namespace {

std::mutex siteMutex;
std::string siteFolder;

bool IsDrivePath(std::string_view p) {
  return p.size() >= 2 && p[1] == ':' && ((p[0] >= 'a' && p[0] <= 'z') || (p[0] >= 'A' && p[0] <= 'Z'));
}

void StripTrailingSlash(std::string& p) {
  while (p.size() > 1 && p.back() == '/') p.pop_back();
}

// Whether `path` (already canonical) is `root` or lies inside it, links followed.
bool Within(const fs::path& path, const std::string& root) {
  if (root.empty()) return false;
  std::error_code ec;
  const std::string r = fs::weakly_canonical(root, ec).string();
  if (ec || r.empty()) return false;
  const std::string p = path.string();
  if (p.compare(0, r.size(), r) != 0) return false;
  return p.size() == r.size() || r.back() == '/' || p[r.size()] == '/';
}

bool IsDriveStyle(std::string_view shown) { return IsDrivePath(shown); }

}  // namespace

void SetSiteFolder(std::string folder) {
  if (!folder.empty()) {
    folder = fs::absolute(folder).lexically_normal().string();
    StripTrailingSlash(folder);
  }
  std::lock_guard lock(siteMutex);
  siteFolder = std::move(folder);
}

std::string SiteFolder() {
  std::lock_guard lock(siteMutex);
  return siteFolder;
}

Error PermissionDenied() { return Error(70, "Permission denied"); }
Error BadFileMode() { return Error(54, "Bad file mode"); }
Error FileAlreadyExists() { return Error(58, "File already exists"); }
Error InputPastEnd() { return Error(62, "Input past end of file"); }

FilePath ResolvePath(std::string_view path) {
  FilePath out;
  if (IsDrivePath(path)) {
    out.local = MapDrivePath(path);
    StripTrailingSlash(out.local);
    std::string drive = DriveRoot();
    if (drive.back() != '/') drive.push_back('/');
    drive.push_back(static_cast<char>(path[0] | 0x20));
    std::string rest = out.local.substr(std::min(drive.size(), out.local.size()));
    std::replace(rest.begin(), rest.end(), '/', '\\');
    out.shown = std::string(1, static_cast<char>(path[0] & ~0x20)) + ":" + (rest.empty() ? "\\" : rest);
  } else if (!path.empty() && path[0] == '/') {
    if (path.find('\0') != std::string_view::npos) throw Error::BadFileName();
    std::string p(path);
    std::replace(p.begin(), p.end(), '\\', '/');
    out.local = fs::path(p).lexically_normal().string();
    StripTrailingSlash(out.local);
    out.shown = out.local;
  } else {
    throw PermissionDenied();
  }
  std::error_code ec;
  const fs::path canonical = fs::weakly_canonical(out.local, ec);
  if (ec || !(Within(canonical, SiteFolder()) || Within(canonical, DriveRoot()))) throw PermissionDenied();
  return out;
}

FilePath FilePath::Child(std::string_view name) const {
  const char sep = IsDriveStyle(shown) ? '\\' : '/';
  FilePath child{.local = local, .shown = shown};
  if (child.local.back() != '/') child.local += '/';
  child.local += name;
  if (child.shown.back() != sep) child.shown += sep;
  child.shown += name;
  return child;
}

std::string FilePath::Name() const {
  if (IsDriveStyle(shown) && shown.size() <= 3) return "";
  return fs::path(local).filename().string();
}

Variant FileDate(fs::file_time_type time) {
  const auto system = std::chrono::file_clock::to_sys(time);
  const time_t t = std::chrono::system_clock::to_time_t(
      std::chrono::time_point_cast<std::chrono::system_clock::duration>(system));
  struct tm local {};
  localtime_r(&t, &local);
  return Variant::Date(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min,
                       local.tm_sec);
}

}  // namespace corvane::scripting
