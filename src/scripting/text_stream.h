// TextStream: a text file opened for reading, writing or appending (OpenTextFile, CreateTextFile,
// File.OpenAsTextStream).
//
// A file opened for reading is read whole at the start and decoded; Line and Column follow what has
// been read. Lines end at "\n" (a "\r" before it is dropped); WriteLine ends lines with "\r\n", as
// the platform writes them. Reading past the end raises 62, reading a stream opened for writing (or
// the reverse) 54, and any use after Close 52.
#pragma once

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

#include "corvane/object.h"
#include "scripting/file_paths.h"

namespace corvane::scripting {

class TextStream final : public Dispatch {
 public:
  enum class IoMode { Reading = 1, Writing = 2, Appending = 8 };
  // The format argument: UTF-8 (the platform's "ASCII", 0), UTF-16 (-1) or by the file's mark (-2).
  enum class Format { Utf8 = 0, Utf16 = -1, ByMark = -2 };

  // Opens the file at `path`: 53 when it is not there and `create` is false, 58 when `mustBeNew`
  // and it is there, 76 when its folder is not there, 70 when it is a folder.
  static std::shared_ptr<TextStream> Open(const FilePath& path, IoMode mode, bool create, Format format,
                                          bool mustBeNew = false);
  const ClassInfo& Info() const override;

  std::string ReadLine();
  std::string Read(int32_t characters);  // UTF-16 units, as Len counts them
  std::string ReadAll();
  void Skip(int32_t characters);
  void SkipLine();
  bool AtEndOfStream();
  bool AtEndOfLine();
  int32_t Line() const { return line_; }
  int32_t Column() const { return column_; }
  void Write(std::string_view text);
  void WriteLine(std::string_view text) { Write(std::string(text) + "\r\n"); }
  void WriteBlankLines(int32_t lines);
  void Close();

 private:
  TextStream() = default;
  void CheckReading();
  void CheckWriting();
  // Moves the read position on by `bytes`, counting lines and columns.
  std::string Take(size_t bytes);
  void Count(std::string_view text);

  IoMode mode_ = IoMode::Reading;
  bool closed_ = false;
  bool utf16_ = false;
  std::string text_;  // what is left to read is text_.substr(pos_)
  size_t pos_ = 0;
  std::ofstream out_;
  int32_t line_ = 1;
  int32_t column_ = 1;
};

}  // namespace corvane::scripting
