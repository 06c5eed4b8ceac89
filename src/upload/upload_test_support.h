// Helpers for the upload tests: multipart bodies as browsers send them, scratch drives, a page.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "corvane/corvane.h"
#include "test_support.h"
#include "upload/system_init.h"

namespace corvane::upload::testing {

namespace fs = std::filesystem;
using Files = std::map<std::string, std::string>;
using corvane::testing::ErrorNumber;

inline const std::string kBoundary = "----WebKitFormBoundary7MA4YWxkTrZu0gW";

// The parts of a multipart/form-data body in the browsers' layout (names and values are raw bytes):
// each part opens with "--" + boundary, its Content-Disposition and, for a file, its Content-Type,
// then a blank line and the value; the body ends with "--" + boundary + "--".
inline std::string Field(const std::string& name, const std::string& value) {
  return "Content-Disposition: form-data; name=\"" + name + "\"\r\n\r\n" + value;
}
inline std::string File(const std::string& name, const std::string& fileName, const std::string& content) {
  return "Content-Disposition: form-data; name=\"" + name + "\"; filename=\"" + fileName +
         "\"\r\nContent-Type: application/octet-stream\r\n\r\n" + content;
}
inline std::string Body(const std::vector<std::string>& parts) {
  std::string body;
  for (const std::string& part : parts) body += "--" + kBoundary + "\r\n" + part + "\r\n";
  return body + "--" + kBoundary + "--\r\n";
}

inline std::string Gbk(std::string_view utf8) { return EncodeCodePage(utf8, kCodePageGbk); }
inline std::string Text(const Variant& bytes) {
  return std::string(bytes.ToBytes().begin(), bytes.ToBytes().end());
}

// A scratch drive root (CORVANE_DRIVE_ROOT) with the folders c:\ and d:\up\, and the working folder
// "work" (with its own "up") beside them; the working folder is restored at the end.
class ScratchDrives {
 public:
  ScratchDrives() {
    for (const char* folder : {"c", "d/up", "work/up"}) fs::create_directories(root_ / folder);
    ::setenv("CORVANE_DRIVE_ROOT", root_.c_str(), 1);
    fs::current_path(root_ / "work");
  }
  ~ScratchDrives() { fs::current_path(oldCwd_); }

  // Every file under the root ("d/up/a.txt"), with its content.
  Files Stored() const {
    Files out;
    for (const auto& e : fs::recursive_directory_iterator(root_))
      if (std::ifstream in(e.path(), std::ios::binary); e.is_regular_file())
        out[fs::relative(e.path(), root_).generic_string()] = {std::istreambuf_iterator<char>(in), {}};
    return out;
  }

 private:
  const fs::path root_ = corvane::testing::ScratchPath("drives"), oldCwd_ = fs::current_path();
};

// One page that posts `body` and a SystemInit created on it.
struct UploadPage {
  explicit UploadPage(std::string body, int codePage = kCodePageGbk)
      : page({.url = "/upload.asp",
              .contentType = "multipart/form-data; boundary=" + kBoundary,
              .body = std::move(body),
              .codePage = codePage},
             session, corvane::testing::LibraryHost()) {}

  host::Session session;
  host::Page page;
  Object obj = page.Server().CreateObject("corvane.SystemInit");
  std::shared_ptr<SystemInit> up = obj.As<SystemInit>();
};

}  // namespace corvane::upload::testing
