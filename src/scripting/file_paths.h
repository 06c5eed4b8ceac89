// Paths as the file classes take them from pages: resolved, confined, and shown back to pages in
// the form they were given.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "corvane/error.h"
#include "corvane/variant.h"

namespace corvane::scripting {

struct FilePath {
  std::string local;  // absolute and normal, without a trailing "/"
  std::string shown;  // as pages see it: "D:\up\a.txt" for a drive path, else the local path

  // A file or folder inside this folder, by name.
  FilePath Child(std::string_view name) const;
  std::string Name() const;  // the last part of the path; "" for a drive's root
};

// Resolves a page's path: a drive path ("d:\up\a.txt", either separator) or an absolute local path
// ("/srv/site/a.txt"; "\" counts as "/" in it). Raises 70 for any other path and for one that lies,
// once links are followed, outside the site folder and the drive root; 76 or 52 where the drive
// mapping refuses the path.
FilePath ResolvePath(std::string_view path);

// The platform's file errors.
Error PermissionDenied();   // 70
Error BadFileMode();        // 54
Error FileAlreadyExists();  // 58
Error InputPastEnd();       // 62

// A file time as a Date in local time.
Variant FileDate(std::filesystem::file_time_type time);

}  // namespace corvane::scripting
