// Byte strings as the upload parser reads them: the platform's byte-string functions (InStrB, MidB,
// LeftB) over a view of the request body, with 1-based positions, and a fast substring search.
//
// Out-of-range arguments behave as the platform's functions do: a search from a start beyond the
// end finds nothing (0), a start below 1 or a negative length raises 5 (invalid procedure call or
// argument), and an extraction past the end is clipped to the bytes that exist. Nothing here reads
// outside the view it is given. Positions are 64-bit so that no sum of positions can overflow.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace corvane::upload {

// 0-based offset of the first occurrence of `needle` in `hay` at or after `from`; npos when there is
// none. An empty needle is found at `from` (when from <= hay.size()).
size_t FindBytes(std::string_view hay, std::string_view needle, size_t from = 0);

// The number of non-overlapping occurrences of `needle` in `hay`, counted left to right.
size_t CountBytes(std::string_view hay, std::string_view needle);

// One pass over `hay` for two needles: counts the occurrences of `counted` (a needle that cannot
// overlap itself, so every occurrence counts) and lists the 0-based offsets of every occurrence of
// `listed`, overlapping ones included, in order. Past `listCap` offsets the list is dropped and
// `listComplete` is false. An empty `listed` lists nothing (and is complete).
struct MarkScan {
  size_t counted = 0;
  std::vector<size_t> listed;
  bool listComplete = true;
};
MarkScan ScanMarks(std::string_view hay, std::string_view counted, std::string_view listed, size_t listCap);

inline int64_t LenB(std::string_view s) { return static_cast<int64_t>(s.size()); }

// InStrB(start, s, find): the position of `find` at or after `start`, 0 when absent or when start
// is beyond the end; start < 1 raises 5. An empty `find` gives `start`.
int64_t InStrB(int64_t start, std::string_view s, std::string_view find);

// MidB(s, start, length): `length` bytes from `start`, fewer at the end, "" from beyond the end.
// start < 1 or length < 0 raises 5.
std::string_view MidB(std::string_view s, int64_t start, int64_t length);

// LeftB(s, length): the first `length` bytes (all of s when shorter); length < 0 raises 5.
std::string_view LeftB(std::string_view s, int64_t length);

}  // namespace corvane::upload
