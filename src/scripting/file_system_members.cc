// Scripting.FileSystemObject, File, Folder, Files and Folders as scripts see them. A File's and a
// Folder's default member is Path; a collection's is Item. The CLSID of the FileSystemObject and its
// IID (IFileSystem3) are the platform's; the dispatch ids are ours.
#include "runtime/members.h"
#include "scripting/file_system.h"
#include "scripting/scripting.h"
#include "scripting/text_stream.h"

namespace corvane::scripting {

namespace {

bool OptionalBool(const Args& a, size_t i, bool fallback) {
  const Variant& v = OptionalArg(a, i);
  return v.IsMissing() ? fallback : v.ToBool();
}

// An optional number where Empty counts as 0, not as left out (unlike OptionalLong).
int32_t LongUnlessMissing(const Args& a, size_t i, int32_t fallback) {
  const Variant& v = OptionalArg(a, i);
  return v.IsMissing() ? fallback : v.ToLong();
}

std::string Text(const Args& a, size_t i) { return Arg(a, i).Text(); }

}  // namespace

const ClassInfo& FileSystemObject::Info() const { return FileSystemObjectClass(); }

const ClassInfo& FileSystemObjectClass() {
  using F = FileSystemObject;
  static const ClassInfo info{
      .className = "FileSystemObject",
      .progID = "Scripting.FileSystemObject",
      .clsid = "{0d43fe01-f093-11cf-8940-00a0c9054228}",
      .iid = "{2a0b9d10-4b87-11d3-a97a-00104b365c9f}",
      .members =
          {
              Method<F>("BuildPath", 10000,
                        [](F&, Args& a) { return fso::BuildPath(Text(a, 0), Text(a, 1)); }),
              Method<F>("GetFileName", 10001, [](F&, Args& a) { return fso::GetFileName(Text(a, 0)); }),
              Method<F>("GetBaseName", 10002, [](F&, Args& a) { return fso::GetBaseName(Text(a, 0)); }),
              Method<F>("GetExtensionName", 10003,
                        [](F&, Args& a) { return fso::GetExtensionName(Text(a, 0)); }),
              Method<F>("GetParentFolderName", 10004,
                        [](F&, Args& a) { return fso::GetParentFolderName(Text(a, 0)); }),
              Method<F>("FileExists", 10005, [](F&, Args& a) { return fso::FileExists(Text(a, 0)); }),
              Method<F>("FolderExists", 10006, [](F&, Args& a) { return fso::FolderExists(Text(a, 0)); }),
              Method<F>("GetFile", 10007, [](F&, Args& a) { return fso::GetFile(Text(a, 0)); }),
              Method<F>("GetFolder", 10008, [](F&, Args& a) { return fso::GetFolder(Text(a, 0)); }),
              Method<F>("CreateFolder", 10009, [](F&, Args& a) { return fso::CreateFolder(Text(a, 0)); }),
              Method<F>("DeleteFile", 10010, [](F&, Args& a) { fso::DeleteFile(Text(a, 0)); }),
              Method<F>("DeleteFolder", 10011, [](F&, Args& a) { fso::DeleteFolder(Text(a, 0)); }),
              Method<F>("CopyFile", 10012,
                        [](F&, Args& a) { fso::CopyFile(Text(a, 0), Text(a, 1), OptionalBool(a, 2, true)); }),
              Method<F>("MoveFile", 10013, [](F&, Args& a) { fso::MoveFile(Text(a, 0), Text(a, 1)); }),
              Method<F>("OpenTextFile", 10014,
                        [](F&, Args& a) {
                          return fso::OpenTextFile(Text(a, 0), LongUnlessMissing(a, 1, 1),
                                                   OptionalBool(a, 2, false), LongUnlessMissing(a, 3, 0));
                        }),
              Method<F>("CreateTextFile", 10015,
                        [](F&, Args& a) {
                          return fso::CreateTextFile(Text(a, 0), OptionalBool(a, 1, true),
                                                     OptionalBool(a, 2, false));
                        }),
          },
      .create = Create<FileSystemObject>,
  };
  return info;
}

const ClassInfo& File::Info() const {
  static const ClassInfo info{
      .className = "File",
      .members =
          {
              Reader<File>("Path", 0, [](File& f) { return f.Path().shown; }),
              Reader<File>("Name", 1000, [](File& f) { return f.Path().Name(); }),
              Reader<File>("Size", 1001, [](File& f) { return f.Size(); }),
              Reader<File>("DateLastModified", 1002, [](File& f) { return f.DateLastModified(); }),
              Reader<File>("ParentFolder", 1003, [](File& f) { return f.ParentFolder(); }),
              Method<File>("Delete", 1004, [](File& f, Args&) { fso::DeleteFile(f.Path().shown); }),
              Method<File>("Copy", 1005,
                           [](File& f, Args& a) {
                             fso::CopyFile(f.Path().shown, Text(a, 0), OptionalBool(a, 1, true));
                           }),
              Method<File>("Move", 1006, [](File& f, Args& a) { f.Move(Text(a, 0)); }),
              Method<File>("OpenAsTextStream", 1007,
                           [](File& f, Args& a) {
                             return fso::OpenTextFile(f.Path().shown, LongUnlessMissing(a, 0, 1), false,
                                                      LongUnlessMissing(a, 1, 0));
                           }),
          },
  };
  return info;
}

const ClassInfo& Folder::Info() const {
  static const ClassInfo info{
      .className = "Folder",
      .members =
          {
              Reader<Folder>("Path", 0, [](Folder& f) { return f.Path().shown; }),
              Reader<Folder>("Name", 1000, [](Folder& f) { return f.Path().Name(); }),
              Reader<Folder>("Size", 1001, [](Folder& f) { return f.Size(); }),
              Reader<Folder>("DateLastModified", 1002, [](Folder& f) { return f.DateLastModified(); }),
              Reader<Folder>("ParentFolder", 1003, [](Folder& f) { return f.ParentFolder(); }),
              Method<Folder>("Delete", 1004, [](Folder& f, Args&) { fso::DeleteFolder(f.Path().shown); }),
              Reader<Folder>("IsRootFolder", 1005, [](Folder& f) { return f.IsRootFolder(); }),
              Reader<Folder>("Files", 1006, [](Folder& f) { return f.Files(); }),
              Reader<Folder>("SubFolders", 1007, [](Folder& f) { return f.SubFolders(); }),
              Method<Folder>("CreateTextFile", 1008,
                             [](Folder& f, Args& a) {
                               return fso::CreateTextFile(fso::BuildPath(f.Path().shown, Text(a, 0)),
                                                          OptionalBool(a, 1, true),
                                                          OptionalBool(a, 2, false));
                             }),
          },
  };
  return info;
}

const ClassInfo& FolderEntries::Info() const {
  using E = FolderEntries;
  static const ClassInfo files{
      .className = "Files",
      .members =
          {
              Method<E>("Item", 0, [](E& e, Args& a) { return e.Item(Text(a, 0)); }),
              Reader<E>("Count", 1, [](E& e) { return static_cast<int32_t>(e.Items().size()); }),
          },
  };
  static const ClassInfo folders{
      .className = "Folders",
      .members =
          {
              Method<E>("Item", 0, [](E& e, Args& a) { return e.Item(Text(a, 0)); }),
              Reader<E>("Count", 1, [](E& e) { return static_cast<int32_t>(e.Items().size()); }),
              Method<E>("Add", 2,
                        [](E& e, Args& a) {
                          return fso::CreateFolder(fso::BuildPath(e.Parent().shown, Text(a, 0)));
                        }),
          },
  };
  return folders_ ? folders : files;
}

const ClassInfo& TextStream::Info() const {
  using T = TextStream;
  static const ClassInfo info{
      .className = "TextStream",
      .members =
          {
              Reader<T>("Line", 10000, [](T& t) { return t.Line(); }),
              Reader<T>("Column", 10001, [](T& t) { return t.Column(); }),
              Reader<T>("AtEndOfStream", 10002, [](T& t) { return t.AtEndOfStream(); }),
              Reader<T>("AtEndOfLine", 10003, [](T& t) { return t.AtEndOfLine(); }),
              Method<T>("Read", 10004, [](T& t, Args& a) { return t.Read(Arg(a, 0).ToLong()); }),
              Method<T>("ReadLine", 10005, [](T& t, Args&) { return t.ReadLine(); }),
              Method<T>("ReadAll", 10006, [](T& t, Args&) { return t.ReadAll(); }),
              Method<T>("Write", 10007, [](T& t, Args& a) { t.Write(Text(a, 0)); }),
              Method<T>("WriteLine", 10008,
                        [](T& t, Args& a) { t.WriteLine(OptionalArg(a, 0).IsMissing() ? "" : Text(a, 0)); }),
              Method<T>("WriteBlankLines", 10009,
                        [](T& t, Args& a) { t.WriteBlankLines(Arg(a, 0).ToLong()); }),
              Method<T>("Skip", 10010, [](T& t, Args& a) { t.Skip(Arg(a, 0).ToLong()); }),
              Method<T>("SkipLine", 10011, [](T& t, Args&) { t.SkipLine(); }),
              Method<T>("Close", 10012, [](T& t, Args&) { t.Close(); }),
          },
  };
  return info;
}

}  // namespace corvane::scripting
