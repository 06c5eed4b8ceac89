// Drive paths mapped onto folders, purely by text: nothing here reads or creates anything on disk
// beyond asking for the working folder.
//
// The path after its drive ("d:") or, for a relative path, the whole path is split at "\" and "/";
// empty and "." segments drop out and ".." takes back the segment before it. A ".." with nothing left
// to take back would climb out of the drive folder (or the working folder) and is refused with 76, as
// is a rooted path without a drive ("/etc/passwd", "\up", "\\server\share"): it names no drive. A
// ":" anywhere but after the drive letter is not a valid file name (52).
//
// A path that ends in a separator keeps one ("d:\up\" is "<root>/d/up/"): it names a folder, and
// opening it as a file must fail rather than create a file named like the folder.
#include "corvane/drive_path.h"

#include <cstdlib>
#include <filesystem>
#include <vector>

#include "corvane/error.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

bool IsSeparator(char c) { return c == '\\' || c == '/'; }

std::string NormalFolder(const fs::path& p) {
  std::string s = p.lexically_normal().string();
  while (s.size() > 1 && s.back() == '/') s.pop_back();
  return s;
}

// Appends the segments of `rest` to `base`, refusing to climb above `base`.
std::string Resolve(std::string base, std::string_view rest) {
  std::vector<std::string_view> segments;
  size_t i = 0;
  while (i < rest.size()) {
    size_t j = i;
    while (j < rest.size() && !IsSeparator(rest[j])) ++j;
    std::string_view seg = rest.substr(i, j - i);
    if (seg == "..") {
      if (segments.empty()) throw Error::PathNotFound();
      segments.pop_back();
    } else if (!seg.empty() && seg != ".") {
      segments.push_back(seg);
    }
    i = j + 1;
  }
  for (std::string_view seg : segments) {
    if (base.empty() || base.back() != '/') base.push_back('/');
    base.append(seg);
  }
  if (!rest.empty() && IsSeparator(rest.back()) && base.back() != '/') base.push_back('/');
  return base;
}

}  // namespace

std::string DriveRoot() {
  const char* setting = std::getenv("CORVANE_DRIVE_ROOT");
  return NormalFolder(fs::absolute(setting && *setting ? setting : "./drives"));
}

std::string MapDrivePath(std::string_view path) {
  if (path.empty()) throw Error::PathNotFound();
  if (path.find('\0') != std::string_view::npos) throw Error::BadFileName();
  const char first = path[0];
  const bool hasDrive = path.size() >= 2 && path[1] == ':' &&
                        ((first >= 'a' && first <= 'z') || (first >= 'A' && first <= 'Z'));
  std::string_view rest = hasDrive ? path.substr(2) : path;
  if (rest.find(':') != std::string_view::npos) throw Error::BadFileName();
  if (hasDrive) {
    std::string base = DriveRoot();
    if (base.back() != '/') base.push_back('/');
    base.push_back(static_cast<char>(first | 0x20));  // the letter in lower case
    return Resolve(std::move(base), rest);
  }
  if (IsSeparator(first)) throw Error::PathNotFound();
  return Resolve(NormalFolder(fs::current_path()), rest);
}

}  // namespace corvane
