// SystemInit (corvane.SystemInit): accepts a form posted as multipart/form-data.
//
// One Upload reads the whole request body, splits it into form items, keeps each item's name,
// value, size and client file name, and writes each posted file into a folder given as a drive
// path ("d:\up\"). Its answer is "OK" or a message in Chinese and English; it never raises. The
// page then reads the items with Form, FileName, Size and count. The property setters may come
// first, in any order, and win over Upload's arguments.
//
// Upload's arguments are converted to their interface types (CLng, CStr, CInt) as the call is
// bound, before the upload starts: a value with no such form raises there (13, 94, 6), as the
// binding would. A missing argument (Variant::Missing, or absent from a late-bound call) is 0, ""
// and 0.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "corvane/codepage.h"
#include "corvane/object.h"
#include "corvane/variant.h"

namespace corvane {

namespace host {
class ScriptingContext;
class Request;
class Server;
}  // namespace host

namespace upload {

struct WriteLog;

// ItemValues(i): a plain field's text, or a file's content. The content stays a view of the request
// body (which the value keeps alive) and becomes a byte array the first time it is read, so a file
// is copied at most once and only when the page asks for it. Values are read on the page's thread.
class UploadValue {
 public:
  static std::shared_ptr<const UploadValue> Text(std::string text);
  static std::shared_ptr<const UploadValue> Content(std::shared_ptr<const void> owner,
                                                    std::string_view bytes);
  Variant Get() const;
  std::string_view Bytes() const { return bytes_; }  // a file's content ("" for a plain field)

 private:
  mutable Variant value_;
  mutable bool ready_ = false;
  std::shared_ptr<const void> owner_;
  std::string_view bytes_;
};

// One form item: the elements of ItemNames, ItemSizes, ItemValues and ItemFileNames at one index.
// Texts are shared, so that an item the parse meets again costs nothing more.
struct UploadItem {
  std::shared_ptr<const std::string> name;
  int32_t size = 0;
  std::shared_ptr<const UploadValue> value;  // nullptr: the empty element past the last item
  std::shared_ptr<const std::string> fileName;
};

}  // namespace upload

class SystemInit : public Dispatch {
 public:
  const ClassInfo& Info() const override;

  // Page attachment: keeps the context, then its Request and Server; OnEndPage drops all three.
  // A value that is not a ScriptingContext raises 424.
  void OnStartPage(Variant& PassedScriptingcontext);
  void OnEndPage();

  // The setters.
  void OverWrite(int16_t value);               // 1 or 2 kept, anything else 0 (not set)
  void MaxSize(int32_t value);                 // kept as it is, negative too; 0 = not set
  void Path(const std::string& value);         // kept when its second character is ":", else ""
  void UpToFile(int32_t value);                // 2 = keep files in memory only; anything else 1
  void NewFileName(const std::string& value);  // "" = files keep their own names

  std::string Upload(const Variant& lngMaxSize = Variant::Missing(),
                     const Variant& ServerPath = Variant::Missing(),
                     const Variant& lngOverWrite = Variant::Missing());

  // The number of "; name=" the last Upload counted in its body (a Long).
  Variant count() const { return Variant(count_); }

  // The first of items 0 .. count-1 whose name equals varformname (binary): its client file name
  // ("" for plain fields and bare names), its size, its value (text, or content bytes). With no such
  // item: "", 0 and "". An index the stored items do not reach (count was replaced by an Upload
  // that stopped early) raises 9.
  std::string FileName(Variant& varformname) const;
  int32_t Size(Variant& varformname) const;
  Variant Form(Variant& varformname) const;

 private:
  struct LastNames;
  std::string StringToBytes(std::string_view text) const;
  std::string BytesToString(std::string_view bytes) const;
  // folder is the caller's variable: it may gain a trailing "\".
  bool SaveFile(std::string& folder, const std::string& fileName, std::string_view data, int32_t overWrite,
                upload::WriteLog* log) const;
  int32_t Parse(int32_t lngMaxSize, std::string ServerPath, int16_t lngOverWrite, LastNames& last);
  const upload::UploadItem* Find(const Variant& varformname) const;

  std::shared_ptr<host::ScriptingContext> objContext_;
  std::shared_ptr<host::Request> objRequest_;
  std::shared_ptr<host::Server> objServer_;

  int16_t OverWrite_ = 0;
  int32_t MaxSize_ = 0;
  std::string Path_;
  int32_t UpToFile_ = 0;
  std::string NewFileName_;
  int32_t count_ = 0;
  // Indices 0 .. count of the last completed parse; nullopt until one completes (reading raises 9).
  std::optional<std::vector<upload::UploadItem>> items_;
  int codePage_ = kCodePageGbk;  // the page's, taken when the body is read
};

const ClassInfo& SystemInitClass();

}  // namespace corvane
