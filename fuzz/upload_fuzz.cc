// Feeds arbitrary request bodies, with settings taken from the input's first bytes, to
// SystemInit.Upload and checks what must hold for every body:
//   - Upload answers with a non-empty text and raises nothing;
//   - the count it stores is the number of "; name=" in the body's text;
//   - every file it writes lies inside the drive root (the working folder is inside it too);
//   - the item look-ups afterwards either answer or raise the platform's error 9.
//
// Input layout: byte 0 switches (which setters to call, code page), bytes 1-3 pick the settings'
// values; the rest is the body. Shorter inputs are bodies with no settings.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "corvane/corvane.h"
#include "upload/system_init.h"

namespace fs = std::filesystem;
using namespace corvane;

namespace {

struct Scratch {
  fs::path base, root;
  Scratch() {
    char tmpl[] = "/tmp/upload-fuzz-XXXXXX";
    if (!::mkdtemp(tmpl)) std::abort();
    base = tmpl;
    root = base / "root";
    ::setenv("CORVANE_DRIVE_ROOT", root.c_str(), 1);
    Reset();
    fs::current_path(root / "work");
  }
  ~Scratch() {
    std::error_code ec;
    fs::current_path("/", ec);
    fs::remove_all(base, ec);
  }
  // Makes the folders: c:\, d:\up\ and the working folder (with its own up\).
  void Reset() const {
    fs::create_directories(root / "c");
    fs::create_directories(root / "d" / "up");
    fs::create_directories(root / "work" / "up");
  }
  // Removes the files a run wrote (an upload makes no folders), so that every run starts empty.
  void RemoveFiles() const {
    std::vector<fs::path> files;
    for (const auto& e : fs::recursive_directory_iterator(root))
      if (!e.is_directory()) files.push_back(e.path());
    for (const auto& f : files) fs::remove(f);
  }
  // Nothing may appear next to the drive root.
  void CheckNothingOutside() const {
    for (const auto& e : fs::directory_iterator(base)) {
      if (e.path() != root) {
        std::fprintf(stderr, "file outside the drive root: %s\n", e.path().c_str());
        std::abort();
      }
    }
  }
};

int64_t CountInText(std::string_view body, int codePage) {
  std::string text = DecodeCodePage(body, codePage);
  return Len(text) - Len(Replace(text, "; name=", " name="));
}

const char* const kPaths[] = {"d:\\up", "d:\\up\\",      "D:/up/",      "up", "",
                              "c:",     "d:\\..\\..\\x", "d:\\missing", "x:"};
const char* const kNewNames[] = {"", "same.txt", "..\\..\\..\\escape", "../../../escape", "sub/x", "d:\\x"};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Scratch scratch;
  uint8_t flags = 0, a = 0, b = 0, c = 0;
  std::string_view input(reinterpret_cast<const char*>(data), size);
  if (size >= 4) {
    flags = data[0];
    a = data[1];
    b = data[2];
    c = data[3];
    input.remove_prefix(4);
  }
  const int codePage = (flags & 0x80) ? kCodePageUtf8 : kCodePageGbk;
  std::string result;
  int32_t count = 0;
  {
    host::Session session;
    host::Page page(host::PageRequest{.url = "/upload.asp",
                                      .contentType = "multipart/form-data; boundary=x",
                                      .body = std::string(input),
                                      .codePage = codePage},
                    session, host::PageHost{.createObject = CreateObject});
    auto up = page.Server().CreateObject("corvane.SystemInit").As<SystemInit>();
    if (flags & 0x01) up->OverWrite(static_cast<int16_t>(a % 4));
    if (flags & 0x02) up->MaxSize(static_cast<int32_t>(b) - 8);
    if (flags & 0x04) up->Path(kPaths[c % std::size(kPaths)]);
    if (flags & 0x08) up->UpToFile(a & 2);
    if (flags & 0x10) up->NewFileName(kNewNames[(c >> 4) % std::size(kNewNames)]);
    Variant maxSize = (flags & 0x20) ? Variant(static_cast<int32_t>(b) * 1000) : Variant::Missing();
    Variant path = (flags & 0x40) ? Variant(kPaths[(c >> 2) % std::size(kPaths)]) : Variant::Missing();
    result = up->Upload(maxSize, path, Variant(static_cast<int16_t>(a >> 4)));
    count = up->count().ToLong();
    for (const char* name : {"a", "f", ""}) {
      Variant n(name);
      try {
        up->Form(n);
        up->FileName(n);
        up->Size(n);
      } catch (const Error& e) {
        if (e.Number() != 9) std::abort();
      }
    }
    page.End();
  }
  if (result.empty()) std::abort();
  if (count != 0 && count != CountInText(input, codePage)) {
    std::fprintf(stderr, "count %d, text has %lld\n", count,
                 static_cast<long long>(CountInText(input, codePage)));
    std::abort();
  }
  scratch.CheckNothingOutside();
  scratch.RemoveFiles();
  return 0;
}
