#include "upload/byte_string.h"

#include <cstring>

#include "corvane/error.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace corvane::upload {

namespace {

// The search compares the needle's first and last bytes at every candidate position of a whole
// block at once and checks the bytes between only where both match. Text and binary content rarely
// match both, so the scan runs close to memory speed.
//
// Each returns the offset of the first match at or after `i` whose block lies entirely inside
// `hay`; it stops (returning npos with `i` advanced) where fewer than a block of candidates remain,
// and the caller finishes with the plain loop.
size_t ScanPlain(const char* hay, size_t n, const char* needle, size_t m, size_t i) {
  const char first = needle[0];
  while (i + m <= n) {
    const void* hit = std::memchr(hay + i, first, n - m + 1 - i);
    if (!hit) return std::string_view::npos;
    i = static_cast<size_t>(static_cast<const char*>(hit) - hay);
    if (std::memcmp(hay + i + 1, needle + 1, m - 1) == 0) return i;
    ++i;
  }
  return std::string_view::npos;
}

#if defined(__x86_64__)
__attribute__((target("avx2"))) size_t ScanAvx2(const char* hay, size_t n, const char* needle, size_t m,
                                                size_t& i) {
  const __m256i first = _mm256_set1_epi8(needle[0]);
  const __m256i last = _mm256_set1_epi8(needle[m - 1]);
  // Two blocks at a time while they fit: candidates i .. i+63, reading up to hay[i + 63 + m - 1].
  while (i + 64 + m - 1 <= n) {
    const auto* p = hay + i;
    __m256i e0 = _mm256_and_si256(
        _mm256_cmpeq_epi8(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)), first),
        _mm256_cmpeq_epi8(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + m - 1)), last));
    __m256i e1 = _mm256_and_si256(
        _mm256_cmpeq_epi8(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 32)), first),
        _mm256_cmpeq_epi8(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 32 + m - 1)), last));
    __m256i any = _mm256_or_si256(e0, e1);
    if (!_mm256_testz_si256(any, any)) {
      uint64_t mask = static_cast<uint32_t>(_mm256_movemask_epi8(e0)) |
                      static_cast<uint64_t>(static_cast<uint32_t>(_mm256_movemask_epi8(e1))) << 32;
      while (mask) {
        size_t at = i + static_cast<size_t>(__builtin_ctzll(mask));
        if (m <= 2 || std::memcmp(hay + at + 1, needle + 1, m - 2) == 0) return at;
        mask &= mask - 1;
      }
    }
    i += 64;
  }
  // Then one block: candidates i .. i+31, reading up to hay[i + 31 + m - 1].
  while (i + 32 + m - 1 <= n) {
    __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(hay + i));
    __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(hay + i + m - 1));
    auto mask = static_cast<uint32_t>(
        _mm256_movemask_epi8(_mm256_and_si256(_mm256_cmpeq_epi8(a, first), _mm256_cmpeq_epi8(b, last))));
    while (mask) {
      size_t at = i + static_cast<size_t>(__builtin_ctz(mask));
      if (m <= 2 || std::memcmp(hay + at + 1, needle + 1, m - 2) == 0) return at;
      mask &= mask - 1;
    }
    i += 32;
  }
  return std::string_view::npos;
}

size_t ScanSse2(const char* hay, size_t n, const char* needle, size_t m, size_t& i) {
  const __m128i first = _mm_set1_epi8(needle[0]);
  const __m128i last = _mm_set1_epi8(needle[m - 1]);
  while (i + 16 + m - 1 <= n) {
    __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(hay + i));
    __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(hay + i + m - 1));
    auto mask = static_cast<uint32_t>(
        _mm_movemask_epi8(_mm_and_si128(_mm_cmpeq_epi8(a, first), _mm_cmpeq_epi8(b, last))));
    while (mask) {
      size_t at = i + static_cast<size_t>(__builtin_ctz(mask));
      if (m <= 2 || std::memcmp(hay + at + 1, needle + 1, m - 2) == 0) return at;
      mask &= mask - 1;
    }
    i += 16;
  }
  return std::string_view::npos;
}

bool HasAvx2() {
  static const bool has = __builtin_cpu_supports("avx2");
  return has;
}
#endif

#if defined(__x86_64__)
// The two-needle pass, 32 candidates at a time; returns where it stopped.
__attribute__((target("avx2"))) size_t ScanMarksAvx2(const char* hay, size_t n, std::string_view a,
                                                     std::string_view b, MarkScan& out, size_t cap) {
  const size_t ma = a.size(), mb = b.size(), reach = (ma > mb ? ma : mb) - 1;
  const __m256i a0 = _mm256_set1_epi8(a[0]), a1 = _mm256_set1_epi8(a[ma - 1]);
  const __m256i b0 = _mm256_set1_epi8(b[0]), b1 = _mm256_set1_epi8(b[mb - 1]);
  size_t i = 0;
  while (i + 32 + reach <= n) {
    const auto* p = hay + i;
    const __m256i head = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    const __m256i ea = _mm256_and_si256(
        _mm256_cmpeq_epi8(head, a0),
        _mm256_cmpeq_epi8(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + ma - 1)), a1));
    const __m256i eb = _mm256_and_si256(
        _mm256_cmpeq_epi8(head, b0),
        _mm256_cmpeq_epi8(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + mb - 1)), b1));
    const __m256i any = _mm256_or_si256(ea, eb);
    if (!_mm256_testz_si256(any, any)) {
      for (auto mask = static_cast<uint32_t>(_mm256_movemask_epi8(ea)); mask; mask &= mask - 1) {
        size_t at = i + static_cast<size_t>(__builtin_ctz(mask));
        if (std::memcmp(hay + at, a.data(), ma) == 0) ++out.counted;
      }
      for (auto mask = static_cast<uint32_t>(_mm256_movemask_epi8(eb)); mask && out.listComplete;
           mask &= mask - 1) {
        size_t at = i + static_cast<size_t>(__builtin_ctz(mask));
        if (std::memcmp(hay + at, b.data(), mb) != 0) continue;
        if (out.listed.size() == cap) {
          out.listComplete = false;
          out.listed.clear();
        } else {
          out.listed.push_back(at);
        }
      }
    }
    i += 32;
  }
  return i;
}
#endif

}  // namespace

MarkScan ScanMarks(std::string_view hay, std::string_view counted, std::string_view listed, size_t listCap) {
  MarkScan out;
  if (counted.empty()) return out;
  if (listed.empty()) {
    out.counted = CountBytes(hay, counted);
    return out;
  }
  size_t i = 0;
#if defined(__x86_64__)
  if (HasAvx2()) i = ScanMarksAvx2(hay.data(), hay.size(), counted, listed, out, listCap);
#endif
  if (i == 0) {
    // Without the block pass: one search per needle.
    out.counted = CountBytes(hay, counted);
    for (size_t at = FindBytes(hay, listed); at != std::string_view::npos;
         at = FindBytes(hay, listed, at + 1)) {
      if (out.listed.size() == listCap) {
        out.listComplete = false;
        out.listed.clear();
        break;
      }
      out.listed.push_back(at);
    }
    return out;
  }
  // The last candidates, one at a time.
  for (; i < hay.size(); ++i) {
    std::string_view rest = hay.substr(i);
    if (rest.starts_with(counted)) ++out.counted;
    if (out.listComplete && rest.starts_with(listed)) {
      if (out.listed.size() == listCap) {
        out.listComplete = false;
        out.listed.clear();
      } else {
        out.listed.push_back(i);
      }
    }
  }
  return out;
}

size_t FindBytes(std::string_view hay, std::string_view needle, size_t from) {
  const size_t n = hay.size(), m = needle.size();
  if (from > n) return std::string_view::npos;
  if (m == 0) return from;
  if (m > n - from) return std::string_view::npos;
  if (m == 1) {
    const void* hit = std::memchr(hay.data() + from, needle[0], n - from);
    return hit ? static_cast<size_t>(static_cast<const char*>(hit) - hay.data()) : std::string_view::npos;
  }
  size_t i = from;
#if defined(__x86_64__)
  size_t found =
      HasAvx2() ? ScanAvx2(hay.data(), n, needle.data(), m, i) : ScanSse2(hay.data(), n, needle.data(), m, i);
  if (found != std::string_view::npos) return found;
#endif
  return ScanPlain(hay.data(), n, needle.data(), m, i);
}

size_t CountBytes(std::string_view hay, std::string_view needle) {
  if (needle.empty()) return 0;
  size_t count = 0;
  for (size_t at = FindBytes(hay, needle); at != std::string_view::npos;
       at = FindBytes(hay, needle, at + needle.size()))
    ++count;
  return count;
}

int64_t InStrB(int64_t start, std::string_view s, std::string_view find) {
  if (start < 1) throw Error::InvalidCall();
  if (start > LenB(s)) return 0;
  size_t at = FindBytes(s, find, static_cast<size_t>(start - 1));
  return at == std::string_view::npos ? 0 : static_cast<int64_t>(at) + 1;
}

std::string_view MidB(std::string_view s, int64_t start, int64_t length) {
  if (start < 1 || length < 0) throw Error::InvalidCall();
  if (start > LenB(s)) return {};
  return s.substr(static_cast<size_t>(start - 1), static_cast<size_t>(length));
}

std::string_view LeftB(std::string_view s, int64_t length) {
  if (length < 0) throw Error::InvalidCall();
  return s.substr(0, static_cast<size_t>(length));
}

}  // namespace corvane::upload
