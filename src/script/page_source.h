// The text a page compiles from: the page with its includes expanded in place, and where each piece
// of that text came from, so that every position maps back to its own file and line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "corvane/script.h"

namespace corvane::script {

// From `offset` on (up to the next segment), the expanded text continues file `file` at `line` and
// `column`.
struct Segment {
  size_t offset;
  uint16_t file;
  int32_t line;
  int32_t column;
};

struct Source {
  std::string text;
  std::vector<Segment> segments;  // sorted by offset, the first at 0
  std::vector<PageFile> files;    // the page first, then each include once, in order of appearance
};

// The page at `sitePath` with every <!--#include file|virtual="..."--> replaced by the included
// file's text, recursively. Raises ScriptError (as a compile error) for a missing page or include
// and for an include cycle, at the directive's file and line.
Source ExpandPage(std::string_view sitePath, const FileLoader& load);
// Plain code that starts at `firstLine` of `file`.
Source PlainSource(std::string_view code, std::string_view file, int firstLine);

// Line `line` (1-based) of `text`, without its line end; "" past the end.
std::string_view LineOf(std::string_view text, int line);
// The site path that an include names: file="x" relative to the including file's folder,
// virtual="/x" from the site root. Empty when the path climbs above the root.
std::string ResolveIncludePath(std::string_view includingFile, std::string_view path, bool isVirtual);

}  // namespace corvane::script
