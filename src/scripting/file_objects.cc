// File, Folder and their collections: views of the file system by path, read when asked.
#include <algorithm>
#include <filesystem>

#include "corvane/error.h"
#include "corvane/text.h"
#include "scripting/file_system.h"

namespace corvane::scripting {

namespace fs = std::filesystem;

namespace {

// The folder above `path`, or Nothing above a drive's root. A folder outside the confinement
// raises 70.
Object ParentOf(const FilePath& path) {
  const std::string parent = fso::GetParentFolderName(path.shown);
  if (parent.empty()) return Object();
  return fso::MakeFolder(ResolvePath(parent));
}

Variant ModifiedAt(const FilePath& path, const Error& missing) {
  std::error_code ec;
  const fs::file_time_type time = fs::last_write_time(path.local, ec);
  if (ec) throw missing;
  return FileDate(time);
}

// Names in the platform's listing order: ASCII letters without their case, then as they are.
bool NameOrder(const std::string& a, const std::string& b) {
  const std::string la = LCase(a), lb = LCase(b);
  return la != lb ? la < lb : a < b;
}

}  // namespace

Variant File::Size() const {
  std::error_code ec;
  const uintmax_t size = fs::file_size(path_.local, ec);
  if (ec) throw Error::FileNotFound();
  return Variant(size);  // a Long, or a Double past 2 GiB
}

Variant File::DateLastModified() const { return ModifiedAt(path_, Error::FileNotFound()); }

Object File::ParentFolder() const { return ParentOf(path_); }

void File::Move(std::string_view to) {
  fso::MoveFile(path_.shown, to);
  const bool intoFolder = !to.empty() && (to.back() == '\\' || to.back() == '/');
  path_ = intoFolder ? ResolvePath(to).Child(path_.Name()) : ResolvePath(to);
}

Variant Folder::Size() const {
  std::error_code ec;
  if (!fs::is_directory(path_.local, ec)) throw Error::PathNotFound();
  uintmax_t total = 0;
  for (auto it =
           fs::recursive_directory_iterator(path_.local, fs::directory_options::skip_permission_denied, ec);
       !ec && it != fs::recursive_directory_iterator(); it.increment(ec)) {
    std::error_code sizeError;
    if (it->is_regular_file(sizeError)) total += it->file_size(sizeError);
  }
  return Variant(total);
}

Variant Folder::DateLastModified() const { return ModifiedAt(path_, Error::PathNotFound()); }

Object Folder::ParentFolder() const { return ParentOf(path_); }

bool Folder::IsRootFolder() const { return fso::GetParentFolderName(path_.shown).empty(); }

Object Folder::Files() const { return Object(std::make_shared<FolderEntries>(path_, false)); }

Object Folder::SubFolders() const { return Object(std::make_shared<FolderEntries>(path_, true)); }

FolderEntries::FolderEntries(const FilePath& folder, bool folders) : parent_(folder), folders_(folders) {
  std::error_code ec;
  if (!fs::is_directory(folder.local, ec)) throw Error::PathNotFound();
  std::vector<std::string> names;
  for (const fs::directory_entry& e : fs::directory_iterator(folder.local, ec)) {
    std::error_code typeError;
    if (e.is_directory(typeError) == folders) names.push_back(e.path().filename().string());
  }
  std::sort(names.begin(), names.end(), NameOrder);
  for (const std::string& name : names) {
    try {
      FilePath child = ResolvePath(folder.Child(name).shown);
      items_.emplace_back(folders ? fso::MakeFolder(std::move(child)) : fso::MakeFile(std::move(child)));
    } catch (const Error&) {
      // a link that leads outside the confinement is not listed
    }
  }
}

Variant FolderEntries::Item(std::string_view name) const {
  for (const Variant& item : items_) {
    const Object o = item.ToObject();
    const FilePath& path = folders_ ? o.As<Folder>()->Path() : o.As<File>()->Path();
    if (EqualsNoCase(path.Name(), name)) return item;
  }
  throw folders_ ? Error::PathNotFound() : Error::FileNotFound();
}

namespace fso {

Object MakeFile(FilePath path) { return Object(std::make_shared<File>(std::move(path))); }
Object MakeFolder(FilePath path) { return Object(std::make_shared<Folder>(std::move(path))); }

}  // namespace fso

}  // namespace corvane::scripting
