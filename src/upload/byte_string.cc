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
  // A block covers candidates i .. i+31 and reads up to hay[i + 31 + m - 1].
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

}  // namespace

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
  size_t found = HasAvx2() ? ScanAvx2(hay.data(), n, needle.data(), m, i)
                           : ScanSse2(hay.data(), n, needle.data(), m, i);
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
