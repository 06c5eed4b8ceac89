// Scripting.FileSystemObject and the objects it gives: File, Folder and the Files and Folders
// collections. Paths are confined as scripting.h says; what a page is shown (File.Path, a Files
// collection's items) keeps the form of the path it gave, so it can be handed back.
//
// Errors are the platform's: 53 a file that is not there, 76 a folder that is not there (or the
// folder of a new file), 58 a file or folder that is there already, 70 a path outside the
// confinement or an operation the system refuses.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "corvane/object.h"
#include "corvane/variant.h"
#include "scripting/file_paths.h"

namespace corvane::scripting {

class FileSystemObject final : public Dispatch {
 public:
  const ClassInfo& Info() const override;
};

// A file or folder by path; it need not stay there (a File whose file was deleted raises 53).
class File final : public Dispatch {
 public:
  explicit File(FilePath path) : path_(std::move(path)) {}
  const ClassInfo& Info() const override;
  const FilePath& Path() const { return path_; }
  Variant Size() const;
  Variant DateLastModified() const;
  Object ParentFolder() const;
  void Move(std::string_view to);  // as MoveFile; the File then names the file where it went

 private:
  FilePath path_;
};

class Folder final : public Dispatch {
 public:
  explicit Folder(FilePath path) : path_(std::move(path)) {}
  const ClassInfo& Info() const override;
  const FilePath& Path() const { return path_; }
  Variant Size() const;  // of every file below it
  Variant DateLastModified() const;
  Object ParentFolder() const;  // Nothing for a drive's root
  bool IsRootFolder() const;
  Object Files() const;
  Object SubFolders() const;

 private:
  FilePath path_;
};

// A folder's files (folders = false) or subfolders, listed when the collection is made, in order of
// name (ASCII letters without their case). Item(name) finds one by name.
class FolderEntries final : public Dispatch {
 public:
  FolderEntries(const FilePath& folder, bool folders);
  const ClassInfo& Info() const override;
  std::vector<Variant> Elements() override { return items_; }
  const std::vector<Variant>& Items() const { return items_; }
  Variant Item(std::string_view name) const;
  bool folders() const { return folders_; }
  const FilePath& Parent() const { return parent_; }

 private:
  FilePath parent_;
  bool folders_;
  std::vector<Variant> items_;  // File or Folder objects
};

namespace fso {

// The name functions work on the text alone ("\" and "/" both separate) and touch no file.
std::string GetFileName(std::string_view path);          // "a.txt" of "d:\up\a.txt"; "" of "d:\"
std::string GetBaseName(std::string_view path);          // "a"
std::string GetExtensionName(std::string_view path);     // "txt"; "" without a dot
std::string GetParentFolderName(std::string_view path);  // "d:\up"; "d:\" of "d:\up"; "" of "d:\"
// `path` and `name` joined by one separator: "/" after a local path, "\" otherwise.
std::string BuildPath(std::string_view path, std::string_view name);

bool FileExists(std::string_view path);
bool FolderExists(std::string_view path);
Object GetFile(std::string_view path);
Object GetFolder(std::string_view path);
Object CreateFolder(std::string_view path);
// The last part of the path may hold the wildcards "*" and "?" (case-blind; "*.*" matches every
// name); 53 when nothing matches.
void DeleteFile(std::string_view path);
void DeleteFolder(std::string_view path);
// To a folder when `to` ends with a separator or the source has wildcards; a file otherwise.
void CopyFile(std::string_view from, std::string_view to, bool overwrite);
void MoveFile(std::string_view from, std::string_view to);
// iomode 1 reading, 2 writing, 8 appending; format 0 UTF-8, -1 UTF-16 (little-endian, with its
// mark), -2 UTF-16 when the file starts with its mark, else UTF-8.
Object OpenTextFile(std::string_view path, int32_t iomode, bool create, int32_t format);
Object CreateTextFile(std::string_view path, bool overwrite, bool unicode);

Object MakeFile(FilePath path);
Object MakeFolder(FilePath path);

}  // namespace fso

}  // namespace corvane::scripting
