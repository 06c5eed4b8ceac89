// The FileSystemObject's name functions: parts of a path taken from its text alone.
//
// A path's root is kept whole: "d:\" (or "d:"), or the leading separator of "\up" and "/srv". Trailing
// separators do not count ("d:\up\" names the folder "up"), except in a root.
#include <string>
#include <string_view>

#include "scripting/file_system.h"

namespace corvane::scripting::fso {

namespace {

bool IsSeparator(char c) { return c == '\\' || c == '/'; }

// The length of the path's root: "d:\" 3, "d:" 2, "\" or "/" 1, none 0.
size_t RootLength(std::string_view p) {
  if (p.size() >= 2 && p[1] == ':') return p.size() >= 3 && IsSeparator(p[2]) ? 3 : 2;
  return !p.empty() && IsSeparator(p[0]) ? 1 : 0;
}

// The path without trailing separators, its root left whole.
std::string_view Trimmed(std::string_view p) {
  const size_t root = RootLength(p);
  while (p.size() > root && IsSeparator(p.back())) p.remove_suffix(1);
  return p;
}

// Where the last part starts.
size_t LastPart(std::string_view p) {
  const size_t root = RootLength(p);
  size_t i = p.size();
  while (i > root && !IsSeparator(p[i - 1])) --i;
  return i;
}

}  // namespace

std::string GetFileName(std::string_view path) {
  const std::string_view p = Trimmed(path);
  return std::string(p.substr(LastPart(p)));
}

std::string GetExtensionName(std::string_view path) {
  const std::string name = GetFileName(path);
  const size_t dot = name.rfind('.');
  return dot == std::string::npos ? "" : name.substr(dot + 1);
}

std::string GetBaseName(std::string_view path) {
  const std::string name = GetFileName(path);
  return name.substr(0, name.rfind('.'));
}

std::string GetParentFolderName(std::string_view path) {
  const std::string_view p = Trimmed(path);
  const size_t root = RootLength(p);
  const size_t last = LastPart(p);
  if (last == p.size()) return "";  // a root, or nothing
  if (last <= root) return std::string(p.substr(0, root));
  return std::string(p.substr(0, last - 1));
}

std::string BuildPath(std::string_view path, std::string_view name) {
  if (path.empty()) return std::string(name);
  const bool pathEnds = IsSeparator(path.back()) || (path.size() == 2 && path[1] == ':');
  const bool nameStarts = !name.empty() && IsSeparator(name.front());
  if (pathEnds && nameStarts) name.remove_prefix(1);
  const std::string sep = pathEnds || nameStarts ? "" : path.front() == '/' ? "/" : "\\";
  return std::string(path) + sep + std::string(name);
}

}  // namespace corvane::scripting::fso
