// Helpers for the upload tests: multipart bodies as browsers send them, and scratch drives.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "corvane/corvane.h"
#include "test_support.h"
#include "upload/system_init.h"

namespace corvane::upload::testing {

namespace fs = std::filesystem;

inline constexpr const char* kBoundary = "----WebKitFormBoundary7MA4YWxkTrZu0gW";

struct Part {
  std::string name;                     // raw bytes, as the browser sends them (GBK for Chinese)
  std::string value;                    // the field's value or the file's content
  std::optional<std::string> filename;  // set for a file input (may be "")
  std::string contentType = "application/octet-stream";
};

inline Part Field(std::string name, std::string value) { return Part{std::move(name), std::move(value), {}}; }
inline Part File(std::string name, std::string filename, std::string content) {
  return Part{std::move(name), std::move(content), std::move(filename)};
}

// A multipart/form-data body in the browsers' layout: each part opens with "--" + boundary, its
// Content-Disposition and, for a file, its Content-Type, then a blank line and the value; the body
// ends with "--" + boundary + "--".
inline std::string MultipartBody(const std::vector<Part>& parts, const std::string& boundary = kBoundary) {
  std::string body;
  for (const Part& p : parts) {
    body += "--" + boundary + "\r\n";
    body += "Content-Disposition: form-data; name=\"" + p.name + "\"";
    if (p.filename) body += "; filename=\"" + *p.filename + "\"";
    body += "\r\n";
    if (p.filename) body += "Content-Type: " + p.contentType + "\r\n";
    body += "\r\n" + p.value + "\r\n";
  }
  body += "--" + boundary + "--\r\n";
  return body;
}

inline std::string MultipartType(const std::string& boundary = kBoundary) {
  return "multipart/form-data; boundary=" + boundary;
}

inline std::string Gbk(std::string_view utf8) { return EncodeCodePage(utf8, kCodePageGbk); }

inline std::string ReadFile(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

inline void WriteFile(const fs::path& p, std::string_view data) {
  std::ofstream out(p, std::ios::binary | std::ios::trunc);
  out.write(data.data(), static_cast<std::streamsize>(data.size()));
}

inline std::string Text(const Variant& bytes) {
  const Bytes& b = bytes.ToBytes();
  return std::string(b.begin(), b.end());
}

// A scratch drive root (CORVANE_DRIVE_ROOT) with the folders c:\ and d:\up\, and a scratch working
// folder inside it; both settings are restored at the end.
class ScratchDrives {
 public:
  ScratchDrives() : base_(corvane::testing::ScratchPath("drives")) {
    fs::create_directories(Drive('c'));
    fs::create_directories(Drive('d') / "up");
    fs::create_directories(base_ / "work");
    const char* old = std::getenv("CORVANE_DRIVE_ROOT");
    if (old) oldRoot_ = old;
    ::setenv("CORVANE_DRIVE_ROOT", (base_ / "root").c_str(), 1);
    oldCwd_ = fs::current_path();
    fs::current_path(base_ / "work");
  }
  ~ScratchDrives() {
    fs::current_path(oldCwd_);
    if (oldRoot_)
      ::setenv("CORVANE_DRIVE_ROOT", oldRoot_->c_str(), 1);
    else
      ::unsetenv("CORVANE_DRIVE_ROOT");
  }
  ScratchDrives(const ScratchDrives&) = delete;
  ScratchDrives& operator=(const ScratchDrives&) = delete;

  fs::path Drive(char letter) const { return base_ / "root" / std::string(1, letter); }
  fs::path Up() const { return Drive('d') / "up"; }
  fs::path Work() const { return base_ / "work"; }
  fs::path Base() const { return base_; }
  // Every regular file under the scratch folder, relative to it.
  std::vector<std::string> Files() const {
    std::vector<std::string> out;
    for (const auto& e : fs::recursive_directory_iterator(base_))
      if (e.is_regular_file()) out.push_back(fs::relative(e.path(), base_).generic_string());
    std::sort(out.begin(), out.end());
    return out;
  }

 private:
  fs::path base_;
  fs::path oldCwd_;
  std::optional<std::string> oldRoot_;
};

// One page that posts `body` and a SystemInit created on it.
struct UploadPage {
  explicit UploadPage(std::string body, int codePage = kCodePageGbk, const std::string& type = MultipartType())
      : page(host::PageRequest{.url = "/upload.asp", .contentType = type, .body = std::move(body), .codePage = codePage},
             session, corvane::testing::LibraryHost()),
        obj(page.Server().CreateObject("corvane.SystemInit")),
        up(obj.As<SystemInit>()) {}

  host::Session session;
  host::Page page;
  Object obj;
  std::shared_ptr<SystemInit> up;
};

}  // namespace corvane::upload::testing
