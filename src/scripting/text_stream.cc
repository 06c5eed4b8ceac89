// TextStream: reading from the decoded text held in memory, writing straight to the file.
#include "scripting/text_stream.h"

#include <filesystem>
#include <sstream>

#include "corvane/error.h"
#include "runtime/utf8.h"
#include "scripting/charset.h"

namespace corvane::scripting {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16Mark = "\xFF\xFE";

std::string ReadBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw PermissionDenied();
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return std::move(bytes).str();
}

bool StartsWith(std::string_view s, std::string_view prefix) { return s.substr(0, prefix.size()) == prefix; }

}  // namespace

std::shared_ptr<TextStream> TextStream::Open(const FilePath& path, IoMode mode, bool create, Format format,
                                             bool mustBeNew) {
  std::error_code ec;
  const fs::file_status status = fs::status(path.local, ec);
  if (fs::is_directory(status)) throw PermissionDenied();
  const bool exists = fs::exists(status);
  if (!exists && !create) throw Error::FileNotFound();
  if (exists && mustBeNew) throw FileAlreadyExists();
  if (!exists && !fs::is_directory(fs::path(path.local).parent_path(), ec)) throw Error::PathNotFound();

  std::shared_ptr<TextStream> s(new TextStream());
  s->mode_ = mode;
  const std::string bytes = exists && mode != IoMode::Writing ? ReadBytes(path.local) : std::string();
  s->utf16_ = format == Format::Utf16 || (format == Format::ByMark && StartsWith(bytes, kUtf16Mark));
  if (mode == IoMode::Reading) {
    if (!exists) std::ofstream(path.local, std::ios::binary);  // OpenTextFile(path, 1, True) makes it
    std::string_view body = bytes;
    if (s->utf16_ && StartsWith(body, kUtf16Mark)) body.remove_prefix(kUtf16Mark.size());
    if (!s->utf16_ && StartsWith(body, kUtf8Mark)) body.remove_prefix(kUtf8Mark.size());
    s->text_ = s->utf16_ ? DecodeText(body, Charset::Unicode) : std::string(body);
    return s;
  }
  const bool append = mode == IoMode::Appending;
  s->out_.open(path.local, std::ios::binary | (append ? std::ios::app : std::ios::trunc));
  if (!s->out_) throw PermissionDenied();
  if (s->utf16_ && bytes.empty()) s->out_ << kUtf16Mark;
  return s;
}

void TextStream::CheckReading() {
  if (closed_) throw Error::BadFileName();
  if (mode_ != IoMode::Reading) throw BadFileMode();
}

void TextStream::CheckWriting() {
  if (closed_) throw Error::BadFileName();
  if (mode_ == IoMode::Reading) throw BadFileMode();
}

void TextStream::Count(std::string_view text) {
  for (size_t i = 0; i < text.size();) {
    const utf8::Char c = utf8::DecodeAt(text, i);
    i += c.bytes;
    if (c.code == '\n') {
      ++line_;
      column_ = 1;
    } else {
      column_ += c.Units();
    }
  }
}

std::string TextStream::Take(size_t bytes) {
  std::string taken = text_.substr(pos_, bytes);
  pos_ += taken.size();
  Count(taken);
  return taken;
}

std::string TextStream::ReadLine() {
  CheckReading();
  if (pos_ >= text_.size()) throw InputPastEnd();
  const size_t end = text_.find('\n', pos_);
  std::string line = Take(end == std::string::npos ? std::string::npos : end + 1 - pos_);
  if (!line.empty() && line.back() == '\n') line.pop_back();
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return line;
}

std::string TextStream::Read(int32_t characters) {
  CheckReading();
  if (characters < 0) throw Error::InvalidCall();
  if (pos_ >= text_.size() && characters > 0) throw InputPastEnd();
  size_t end = pos_;
  for (int32_t units = 0; units < characters && end < text_.size();) {
    const utf8::Char c = utf8::DecodeAt(text_, end);
    end += c.bytes;
    units += c.Units();
  }
  return Take(end - pos_);
}

std::string TextStream::ReadAll() {
  CheckReading();
  if (pos_ >= text_.size()) throw InputPastEnd();
  return Take(std::string::npos);
}

void TextStream::Skip(int32_t characters) { Read(characters); }

void TextStream::SkipLine() { ReadLine(); }

bool TextStream::AtEndOfStream() {
  CheckReading();
  return pos_ >= text_.size();
}

bool TextStream::AtEndOfLine() {
  CheckReading();
  return pos_ >= text_.size() || text_[pos_] == '\n' || text_.compare(pos_, 2, "\r\n") == 0;
}

void TextStream::Write(std::string_view text) {
  CheckWriting();
  out_ << (utf16_ ? EncodeText(text, Charset::Unicode) : std::string(text));
  if (!out_) throw Error::PathFileAccess();
  Count(text);
}

void TextStream::WriteBlankLines(int32_t lines) {
  if (lines < 0) throw Error::InvalidCall();
  std::string text;
  for (int32_t i = 0; i < lines; ++i) text += "\r\n";
  Write(text);
}

void TextStream::Close() {
  if (out_.is_open()) out_.close();
  closed_ = true;
  text_.clear();
}

}  // namespace corvane::scripting
