// ADODB.Stream: bytes in memory, read and written as bytes (Type 1) or as text in a character set
// (Type 2, the default, in "Unicode"), saved to and loaded from files.
//
// Text written at position 0 starts with the character set's byte order mark, as the platform
// writes it ("unicode": FF FE, "utf-8": EF BB BF); ReadText from position 0 skips one. ReadText(n)
// counts characters of the set (a UTF-16 unit for "unicode"). Errors are ADO's: 3704 on a closed
// stream, 3705 opening an open one, 3219 a text call on a binary stream or the reverse, 3001 an
// argument out of range (an unknown Charset, a Position past the end, changing Type or Charset away
// from position 0), 3004 SaveToFile over a file without the overwrite option, 3002 LoadFromFile of a
// file that is not there. Paths are confined as the FileSystemObject's are.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "corvane/object.h"
#include "corvane/variant.h"
#include "scripting/charset.h"

namespace corvane::scripting {

class Stream final : public Dispatch {
 public:
  static constexpr int32_t kBinary = 1, kText = 2;
  const ClassInfo& Info() const override;

  void Open();
  void Close();
  bool IsOpen() const { return open_; }
  int32_t Type() const { return type_; }
  void SetType(int32_t type);
  const std::string& CharsetName() const { return charsetName_; }
  void SetCharset(std::string_view name);
  int32_t LineSeparator() const { return lineSeparator_; }
  void SetLineSeparator(int32_t separator);  // -1 CR LF, 13 CR, 10 LF
  int32_t Position() const;
  void SetPosition(int32_t position);
  int32_t Size() const;
  bool EOS() const;
  void SetEOS();

  void Write(const Variant& bytes);                       // a byte array
  Variant Read(int32_t count);                            // -1 all; Null at the end
  void WriteText(std::string_view text, int32_t option);  // option 1 adds the line separator
  std::string ReadText(int32_t count);                    // -1 all, -2 one line
  void SkipLine() { ReadText(-2); }
  void CopyTo(Stream& to, int32_t count);
  void SaveToFile(std::string_view path, int32_t option);  // 1 create only, 2 overwrite
  void LoadFromFile(std::string_view path);

  int32_t mode = 0;  // adModeUnknown: kept for pages that read it back, not enforced

 private:
  void CheckOpen() const;
  void CheckType(int32_t type) const;
  void Put(std::string_view bytes);  // over what is there from the position on
  // The bytes of the next `count` characters (-1: all) from the position.
  size_t CharacterSpan(int32_t count) const;

  bool open_ = false;
  int32_t type_ = kText;
  Charset charset_ = Charset::Unicode;
  std::string charsetName_ = "Unicode";
  int32_t lineSeparator_ = -1;
  std::string data_;
  size_t position_ = 0;
};

}  // namespace corvane::scripting
