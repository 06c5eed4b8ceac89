// ADODB.Stream over a byte string and a position in it.
#include "scripting/stream.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "corvane/error.h"
#include "scripting/file_paths.h"

namespace corvane::scripting {

namespace fs = std::filesystem;

namespace {

constexpr int32_t kReadAll = -1, kReadLine = -2;
constexpr int32_t kWriteLine = 1;
constexpr int32_t kSaveOverwrite = 2;

Error NotAllowedHere() { return Error(3219, "Operation is not allowed in this context."); }
Error WriteFailed() { return Error(3004, "Write to file failed."); }
Error CannotOpenFile() { return Error(3002, "File could not be opened."); }

std::string_view SeparatorText(int32_t separator) {
  switch (separator) {
    case 13: return "\r";
    case 10: return "\n";
    default: return "\r\n";
  }
}

}  // namespace

void Stream::CheckOpen() const {
  if (!open_) throw Error::ObjectClosed();
}

void Stream::CheckType(int32_t type) const {
  CheckOpen();
  if (type_ != type) throw NotAllowedHere();
}

void Stream::Open() {
  if (open_) throw Error::ObjectIsOpen();
  open_ = true;
  data_.clear();
  position_ = 0;
}

void Stream::Close() {
  CheckOpen();
  open_ = false;
  data_.clear();
  position_ = 0;
}

void Stream::SetType(int32_t type) {
  if ((type != kBinary && type != kText) || (open_ && position_ != 0)) throw Error::ArgumentsOutOfRange();
  type_ = type;
}

void Stream::SetCharset(std::string_view name) {
  const std::optional<Charset> charset = FindCharset(name);
  if (!charset || (open_ && position_ != 0)) throw Error::ArgumentsOutOfRange();
  charset_ = *charset;
  charsetName_ = std::string(name);
}

void Stream::SetLineSeparator(int32_t separator) {
  if (separator != -1 && separator != 13 && separator != 10) throw Error::ArgumentsOutOfRange();
  lineSeparator_ = separator;
}

int32_t Stream::Position() const {
  CheckOpen();
  return static_cast<int32_t>(position_);
}

void Stream::SetPosition(int32_t position) {
  CheckOpen();
  if (position < 0 || static_cast<size_t>(position) > data_.size()) throw Error::ArgumentsOutOfRange();
  position_ = position;
}

int32_t Stream::Size() const {
  CheckOpen();
  return static_cast<int32_t>(data_.size());
}

bool Stream::EOS() const {
  CheckOpen();
  return position_ >= data_.size();
}

void Stream::SetEOS() {
  CheckOpen();
  data_.resize(position_);
}

void Stream::Put(std::string_view bytes) {
  if (position_ + bytes.size() > data_.size()) data_.resize(position_ + bytes.size());
  data_.replace(position_, bytes.size(), bytes);
  position_ += bytes.size();
}

size_t Stream::CharacterSpan(int32_t count) const {
  size_t end = position_;
  for (int32_t n = 0; (count < 0 || n < count) && end < data_.size(); ++n)
    end += CharBytes(data_, end, charset_);
  return end - position_;
}

void Stream::Write(const Variant& bytes) {
  CheckType(kBinary);
  const Bytes& b = bytes.ToBytes();
  Put(std::string_view(reinterpret_cast<const char*>(b.data()), b.size()));
}

Variant Stream::Read(int32_t count) {
  CheckType(kBinary);
  if (count < kReadAll) throw Error::ArgumentsOutOfRange();
  if (position_ >= data_.size()) return Variant::Null();
  const size_t n =
      count == kReadAll ? data_.size() - position_ : std::min<size_t>(count, data_.size() - position_);
  Bytes out(data_.begin() + position_, data_.begin() + position_ + n);
  position_ += n;
  return Variant::FromBytes(std::move(out));
}

void Stream::WriteText(std::string_view text, int32_t option) {
  CheckType(kText);
  std::string bytes = position_ == 0 ? std::string(ByteOrderMark(charset_)) : std::string();
  bytes += EncodeText(text, charset_);
  if (option == kWriteLine) bytes += EncodeText(SeparatorText(lineSeparator_), charset_);
  Put(bytes);
}

std::string Stream::ReadText(int32_t count) {
  CheckType(kText);
  if (count < kReadLine) throw Error::ArgumentsOutOfRange();
  const std::string_view mark = ByteOrderMark(charset_);
  if (position_ == 0 && !mark.empty() && data_.compare(0, mark.size(), mark) == 0) position_ = mark.size();
  size_t take = 0, skip = 0;
  if (count == kReadLine) {
    const std::string separator = EncodeText(SeparatorText(lineSeparator_), charset_);
    size_t end = position_;
    while (end < data_.size() && data_.compare(end, separator.size(), separator) != 0)
      end += CharBytes(data_, end, charset_);
    take = end - position_;
    skip = end < data_.size() ? separator.size() : 0;
  } else {
    take = CharacterSpan(count);
  }
  std::string text = DecodeText(std::string_view(data_).substr(position_, take), charset_);
  position_ += take + skip;
  return text;
}

void Stream::CopyTo(Stream& to, int32_t count) {
  CheckOpen();
  to.CheckOpen();
  size_t n = data_.size() - position_;
  if (type_ == kText)
    n = CharacterSpan(count);
  else if (count >= 0)
    n = std::min<size_t>(count, n);
  const std::string bytes = data_.substr(position_, n);
  position_ += n;
  to.Put(bytes);
}

void Stream::SaveToFile(std::string_view path, int32_t option) {
  CheckOpen();
  const FilePath file = ResolvePath(path);
  std::error_code ec;
  if (fs::is_directory(file.local, ec)) throw WriteFailed();
  if (fs::exists(file.local, ec) && !(option & kSaveOverwrite)) throw WriteFailed();
  std::ofstream out(file.local, std::ios::binary | std::ios::trunc);
  out << data_;
  if (!out.flush()) throw WriteFailed();
}

void Stream::LoadFromFile(std::string_view path) {
  CheckOpen();
  const FilePath file = ResolvePath(path);
  std::error_code ec;
  if (fs::is_directory(file.local, ec)) throw CannotOpenFile();
  std::ifstream in(file.local, std::ios::binary);
  if (!in) throw CannotOpenFile();
  std::ostringstream bytes;
  bytes << in.rdbuf();
  data_ = std::move(bytes).str();
  position_ = 0;
}

}  // namespace corvane::scripting
