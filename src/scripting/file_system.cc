// The FileSystemObject's operations on files and folders.
#include "scripting/file_system.h"

#include <fnmatch.h>

#include <filesystem>

#include "corvane/error.h"
#include "scripting/text_stream.h"

namespace corvane::scripting::fso {

namespace fs = std::filesystem;

namespace {

bool IsSeparator(char c) { return c == '\\' || c == '/'; }
bool HasWildcards(std::string_view name) { return name.find_first_of("*?") != std::string_view::npos; }

bool IsFile(const FilePath& p) {
  std::error_code ec;
  const fs::file_status s = fs::status(p.local, ec);
  return fs::exists(s) && !fs::is_directory(s);
}

bool IsFolder(const FilePath& p) {
  std::error_code ec;
  return fs::is_directory(p.local, ec);
}

// A name against a wildcard pattern, as the platform matches them: without case, and "*.*" (or
// "a.*") also matching a name without a dot.
bool Matches(const std::string& pattern, const std::string& name) {
  return fnmatch(pattern.c_str(), name.c_str(), FNM_CASEFOLD) == 0 ||
         fnmatch(pattern.c_str(), (name + ".").c_str(), FNM_CASEFOLD) == 0;
}

// The files a path names: the file itself, or those its last part's wildcards match. 53 for none.
std::vector<FilePath> NamedFiles(std::string_view path) {
  const std::string name = GetFileName(path);
  if (!HasWildcards(name)) {
    FilePath file = ResolvePath(path);
    if (!IsFile(file)) throw Error::FileNotFound();
    return {file};
  }
  const FilePath folder = ResolvePath(path.substr(0, path.size() - name.size()));
  std::vector<FilePath> files;
  std::error_code ec;
  for (const fs::directory_entry& e : fs::directory_iterator(folder.local, ec)) {
    const std::string entry = e.path().filename().string();
    if (Matches(name, entry) && !e.is_directory(ec)) files.push_back(ResolvePath(folder.Child(entry).shown));
  }
  if (ec && files.empty()) throw Error::PathNotFound();
  if (files.empty()) throw Error::FileNotFound();
  return files;
}

// Where each of `sources` goes for CopyFile and MoveFile: into the folder `to` when it ends with a
// separator or there are wildcards, else to the file `to` (which must not be a folder).
std::vector<std::pair<FilePath, FilePath>> Targets(std::string_view from, std::string_view to) {
  std::vector<FilePath> sources = NamedFiles(from);
  const bool intoFolder = (!to.empty() && IsSeparator(to.back())) || HasWildcards(GetFileName(from));
  const FilePath target = ResolvePath(to);
  std::vector<std::pair<FilePath, FilePath>> out;
  if (intoFolder) {
    if (!IsFolder(target)) throw Error::PathNotFound();
    for (FilePath& s : sources) out.emplace_back(s, target.Child(s.Name()));
    return out;
  }
  if (IsFolder(target)) throw PermissionDenied();
  if (!IsFolder(ResolvePath(GetParentFolderName(to)))) throw Error::PathNotFound();
  out.emplace_back(sources.front(), target);
  return out;
}

}  // namespace

bool FileExists(std::string_view path) { return !path.empty() && IsFile(ResolvePath(path)); }

bool FolderExists(std::string_view path) { return !path.empty() && IsFolder(ResolvePath(path)); }

Object GetFile(std::string_view path) {
  FilePath file = ResolvePath(path);
  if (!IsFile(file)) throw Error::FileNotFound();
  return MakeFile(std::move(file));
}

Object GetFolder(std::string_view path) {
  FilePath folder = ResolvePath(path);
  if (!IsFolder(folder)) throw Error::PathNotFound();
  return MakeFolder(std::move(folder));
}

Object CreateFolder(std::string_view path) {
  FilePath folder = ResolvePath(path);
  std::error_code ec;
  if (fs::exists(folder.local, ec)) throw FileAlreadyExists();
  if (!fs::is_directory(fs::path(folder.local).parent_path(), ec)) throw Error::PathNotFound();
  if (!fs::create_directory(folder.local, ec)) throw PermissionDenied();
  return MakeFolder(std::move(folder));
}

void DeleteFile(std::string_view path) {
  for (const FilePath& file : NamedFiles(path)) {
    std::error_code ec;
    if (!fs::remove(file.local, ec)) throw PermissionDenied();
  }
}

void DeleteFolder(std::string_view path) {
  const FilePath folder = ResolvePath(path);
  if (!IsFolder(folder)) throw Error::PathNotFound();
  std::error_code ec;
  fs::remove_all(folder.local, ec);
  if (ec) throw PermissionDenied();
}

void CopyFile(std::string_view from, std::string_view to, bool overwrite) {
  for (const auto& [source, target] : Targets(from, to)) {
    if (!overwrite && IsFile(target)) throw FileAlreadyExists();
    std::error_code ec;
    fs::copy_file(source.local, target.local, fs::copy_options::overwrite_existing, ec);
    if (ec) throw PermissionDenied();
  }
}

void MoveFile(std::string_view from, std::string_view to) {
  for (const auto& [source, target] : Targets(from, to)) {
    std::error_code ec;
    if (fs::exists(target.local, ec)) throw FileAlreadyExists();
    fs::rename(source.local, target.local, ec);
    if (ec) {  // another file system: copy, then remove
      ec.clear();
      fs::copy_file(source.local, target.local, ec);
      if (ec || !fs::remove(source.local, ec)) throw PermissionDenied();
    }
  }
}

Object OpenTextFile(std::string_view path, int32_t iomode, bool create, int32_t format) {
  if (iomode != 1 && iomode != 2 && iomode != 8) throw Error::InvalidCall();
  if (format != 0 && format != -1 && format != -2) throw Error::InvalidCall();
  return Object(TextStream::Open(ResolvePath(path), static_cast<TextStream::IoMode>(iomode), create,
                                 static_cast<TextStream::Format>(format)));
}

Object CreateTextFile(std::string_view path, bool overwrite, bool unicode) {
  return Object(TextStream::Open(ResolvePath(path), TextStream::IoMode::Writing, true,
                                 unicode ? TextStream::Format::Utf16 : TextStream::Format::Utf8, !overwrite));
}

}  // namespace corvane::scripting::fso
