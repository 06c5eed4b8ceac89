// SystemInit.Upload: the multipart parse and the file store calls.
//
// The parse reads the body as the upload always has: it never looks at the Content-Type's boundary
// parameter but takes the body's first line as the divider, counts the items as the "; name=" in the
// whole body, and then walks from item to item with byte searches, each starting where the last
// step left off. Positions are 1-based, as the byte-string functions count them (byte_string.h),
// and every out-of-range position fails the way those functions do, which ends the upload with the
// failure's description.
//
// A body may lead the walk back to an item it has already parsed (a file part with no blank line
// after its headers takes its data from the body's start, and the walk goes on from there). The
// walk is still bounded by the count, at most 255 steps; what such steps repeat is not done twice
// where it is costly: long searches are remembered by needle and start, long texts and values by
// where they lie in the body (so repeated items share them), and writing the same data to the same
// file again is skipped.
#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

#include "corvane/error.h"
#include "corvane/host.h"
#include "corvane/text.h"
#include "upload/ansi_bytes.h"
#include "upload/byte_string.h"
#include "upload/file_store.h"
#include "upload/system_init.h"
#include "upload/upload_result.h"

namespace corvane {

using upload::InStrB;
using upload::LeftB;
using upload::LenB;
using upload::MidB;
using upload::UploadCode;
using upload::UploadItem;
using upload::UploadValue;

// The item name and file name of the last item parsed, for the messages of 103 and 104.
struct SystemInit::LastNames {
  std::shared_ptr<const std::string> itemName, fileName;
};

namespace {

using Text = std::shared_ptr<const std::string>;

// Searches that cover more bytes than this, and texts and values made of more, are remembered for
// a walk that comes back the same way.
constexpr int64_t kRememberBeyond = 4096;

// InStrB over the body, long searches remembered by needle and start. One needle's occurrences may be known
// beforehand (the boundary's, from the counting pass): its searches then only look them up.
class BodySearch {
 public:
  BodySearch(std::string_view body, std::string_view known, const std::vector<size_t>* knownAt)
      : body_(body), known_(known), knownAt_(knownAt) {}

  // `find` must stay where it is for the whole parse: it is told apart by its address.
  int64_t operator()(int64_t start, std::string_view find) {
    if (start < 1) throw Error::InvalidCall();
    if (knownAt_ && find.data() == known_.data() && find.size() == known_.size()) {
      if (start > LenB(body_)) return 0;
      auto it = std::lower_bound(knownAt_->begin(), knownAt_->end(), static_cast<size_t>(start - 1));
      return it == knownAt_->end() ? 0 : static_cast<int64_t>(*it) + 1;
    }
    const std::tuple<const char*, size_t, int64_t> key{find.data(), find.size(), start};
    if (!seen_.empty()) {
      auto it = seen_.find(key);
      if (it != seen_.end()) return it->second;
    }
    const int64_t at = InStrB(start, body_, find);
    // Only a long search is worth remembering; a short one costs less to do again.
    if ((at == 0 ? LenB(body_) : at) - start > kRememberBeyond) seen_.emplace(key, at);
    return at;
  }

 private:
  std::string_view body_;
  std::string_view known_;
  const std::vector<size_t>* knownAt_;
  std::map<std::tuple<const char*, size_t, int64_t>, int64_t> seen_;
};

// How many places of the boundary the counting pass keeps; a body with more is searched instead.
constexpr size_t kBoundaryPlaces = 1 << 16;

// Results made from a long stretch of the body, kept by its position and length; a short one is
// made again each time it is asked for.
template <class T>
class ByRange {
 public:
  template <class Make>
  T Get(int64_t at, std::string_view bytes, Make&& make) {
    if (static_cast<int64_t>(bytes.size()) <= kRememberBeyond) return make(bytes);
    auto key = std::make_pair(at, static_cast<int64_t>(bytes.size()));
    auto it = made_.find(key);
    if (it == made_.end()) it = made_.emplace(key, make(bytes)).first;
    return it->second;
  }

 private:
  std::map<std::pair<int64_t, int64_t>, T> made_;
};

// A file item's name as the client sent it, with its folder cut off.
struct ClientFileName {
  Text name;               // used to store the file
  bool hadFolder = false;  // only then is it also the item's FileName
};

Text Share(std::string s) { return std::make_shared<const std::string>(std::move(s)); }

}  // namespace

std::string SystemInit::StringToBytes(std::string_view text) const {
  return upload::StringToBytes(text, codePage_);
}

std::string SystemInit::BytesToString(std::string_view bytes) const {
  return upload::BytesToString(bytes, codePage_);
}

bool SystemInit::SaveFile(std::string& folder, const std::string& fileName, std::string_view data,
                          int32_t overWrite, upload::WriteLog* log) const {
  return upload::SaveFile(folder, fileName, data, overWrite, NewFileName_, log);
}

std::string SystemInit::Upload(const Variant& lngMaxSize, const Variant& ServerPath,
                               const Variant& lngOverWrite) {
  const int32_t maxSize = lngMaxSize.IsMissing() ? 0 : lngMaxSize.ToLong();
  std::string path = ServerPath.IsMissing() ? std::string() : ServerPath.ToString();
  const int16_t overWrite = lngOverWrite.IsMissing() ? int16_t{0} : lngOverWrite.ToInteger();
  LastNames last;
  try {
    auto code = static_cast<UploadCode>(Parse(maxSize, std::move(path), overWrite, last));
    return upload::UploadResultText(code, last.itemName ? *last.itemName : std::string(),
                                    last.fileName ? *last.fileName : std::string());
  } catch (...) {
    return upload::FailureText(std::current_exception());
  }
}

int32_t SystemInit::Parse(int32_t lngMaxSize, std::string ServerPath, int16_t lngOverWrite, LastNames& last) {
  // A code that does not stop the parse; the last one set is reported after it.
  UploadCode pending = UploadCode::kOk;

  // Limits and folder: the setters win over the arguments.
  if (MaxSize_ != 0)
    lngMaxSize = MaxSize_;
  else if (lngMaxSize == 0)
    lngMaxSize = 100000;
  if (OverWrite_ != 0)
    lngOverWrite = OverWrite_;
  else if (lngOverWrite == 0)
    lngOverWrite = 1;
  if (Len(Path_) > 2)
    ServerPath = Path_;
  else if (Len(ServerPath) < 2)
    ServerPath = "c:\\";
  if (ServerPath.find(':') == std::string::npos) pending = UploadCode::kPathNotAbsolute;

  // The whole body. The file values keep the request (and so the body) alive.
  if (!objRequest_) throw Error::ObjectNotSet();
  const std::shared_ptr<host::Request> request = objRequest_;
  int32_t total = request->TotalBytes();
  const std::string_view body = request->BinaryReadView(total);
  codePage_ = request->CodePage();

  // Divider: the first line with its CR LF; the boundary is the line without it.
  const std::string crlf = StringToBytes("\r\n");
  const int64_t dividerLen = InStrB(1, body, crlf) + 1;
  const std::string_view divider = LeftB(body, dividerLen);
  const std::string_view boundary = LeftB(divider, LenB(divider) - 2);

  // The count of "; name=" and, in the same pass over the body, the places of the boundary for the
  // searches below. The count is taken on the raw bytes: neither ";" nor " " can be the second byte
  // of a GBK character, and UTF-8 never hides ASCII inside a sequence, so every "; name=" in the
  // bytes is one in the text the body becomes.
  upload::MarkScan marks = upload::ScanMarks(body, "; name=", boundary, kBoundaryPlaces);
  count_ = static_cast<int32_t>(marks.counted);
  // (The stops come before the arrays are sized: a count above 255 is never used to size them.)
  if (count_ > 255) return static_cast<int32_t>(UploadCode::kTooManyItems);
  if (count_ == 0) return static_cast<int32_t>(UploadCode::kNoItems);
  std::vector<UploadItem> items(static_cast<size_t>(count_) + 1);

  const std::string nameMark = StringToBytes("; name=") + '"';
  const std::string quote(1, '"');
  const std::string fileMark = StringToBytes("; filename=");
  const std::string fileNameMark = StringToBytes("filename=") + '"';
  const std::string blankLine = StringToBytes("\r\n\r\n");
  const Text noText = Share("");
  const auto noContent = UploadValue::Content(nullptr, {});

  BodySearch find(body, boundary, marks.listComplete && !boundary.empty() ? &marks.listed : nullptr);
  ByRange<Text> names;
  ByRange<std::shared_ptr<const UploadValue>> texts, contents;
  ByRange<ClientFileName> fileNames;
  upload::WriteLog written;

  int64_t start = dividerLen;
  for (int32_t i = 0; i < count_; ++i) {
    UploadItem& item = items[static_cast<size_t>(i)];

    // The item name, between "; name=" and the next double quote.
    const int64_t nameAt = find(start, nameMark);
    const int64_t afterName = find(nameAt + 8, quote) + 1;
    item.name = names.Get(nameAt, MidB(body, nameAt, afterName - nameAt), [&](std::string_view bytes) {
      return Share(Replace(Replace(BytesToString(bytes), "; name=", ""), "\"", ""));
    });
    last.itemName = item.name;

    const bool isFile = InStrB(1, MidB(body, afterName, 15), fileMark) > 0;
    if (!isFile) {
      const int64_t valueAt = afterName + 4;  // past CR LF CR LF
      const int64_t valueEnd = find(valueAt, boundary) - 2;
      const int64_t length = valueEnd - valueAt;
      item.size = static_cast<int32_t>(length);
      item.value = texts.Get(valueAt, MidB(body, valueAt, length),
                             [&](std::string_view bytes) { return UploadValue::Text(BytesToString(bytes)); });
      item.fileName = noText;
      start = valueEnd + dividerLen - 2;
      continue;
    }

    // A file: its name as the client sent it, then its content after the part's headers.
    const int64_t fnAt = find(afterName, fileNameMark);
    const int64_t fnQuote = find(fnAt + 10, quote);
    const ClientFileName client =
        fileNames.Get(fnAt, MidB(body, fnAt, fnQuote - fnAt), [&](std::string_view bytes) {
          std::string raw = Replace(Replace(BytesToString(bytes), "filename=", ""), "\"", "");
          size_t cut = raw.find_last_of("\\:");
          if (cut == std::string::npos) return ClientFileName{Share(std::move(raw)), false};
          return ClientFileName{Share(raw.substr(cut + 1)), true};
        });
    if (fnQuote - fnAt < 2) pending = UploadCode::kFileNameEmpty;
    last.fileName = client.name;
    item.fileName = client.hadFolder ? client.name : noText;

    const int64_t dataAt = find(fnQuote, blankLine) + 4;
    const int64_t dataEnd = find(dataAt, boundary) - 2;
    const int64_t size = dataEnd - dataAt;
    if (size < 2) pending = UploadCode::kContentEmpty;
    std::string_view data = MidB(body, dataAt, size);
    if (size > lngMaxSize) {
      pending = UploadCode::kTooLarge;
      data = {};
      item.value = noContent;
    } else {
      item.value = contents.Get(dataAt, data,
                                [&](std::string_view bytes) { return UploadValue::Content(request, bytes); });
    }
    item.size = static_cast<int32_t>(size);

    if (UpToFile_ != 2 && !SaveFile(ServerPath, *client.name, data, lngOverWrite, &written))
      return static_cast<int32_t>(UploadCode::kFileExists);
    start = dataEnd + dividerLen - 2;
  }

  items_ = std::move(items);
  return static_cast<int32_t>(pending);
}

}  // namespace corvane
