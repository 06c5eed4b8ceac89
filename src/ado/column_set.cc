#include <cstdint>
#include <cstring>

#include "ado/driver.h"
#include "corvane/text.h"

namespace corvane::ado::detail {

// Eight bytes at a time with the 0x20 bit set in each: letters hash alike in either case (a few
// other pairs, such as "@" and "`", do too; equality tells them apart).
size_t NoCaseHash::operator()(std::string_view s) const noexcept {
  constexpr uint64_t kCaseBits = 0x2020202020202020ull, kMul = 0x9E3779B97F4A7C15ull;
  uint64_t h = s.size() * kMul;
  size_t i = 0;
  for (; i + 8 <= s.size(); i += 8) {
    uint64_t word;
    std::memcpy(&word, s.data() + i, 8);
    h = (h ^ (word | kCaseBits)) * kMul;
    h ^= h >> 29;
  }
  if (i < s.size()) {
    uint64_t word = 0;
    for (size_t k = i; k < s.size(); ++k) word = word << 8 | static_cast<unsigned char>(s[k]);
    h = (h ^ (word | kCaseBits)) * kMul;
    h ^= h >> 29;
  }
  return static_cast<size_t>(h);
}

bool NoCaseEqual::operator()(std::string_view a, std::string_view b) const noexcept {
  return EqualsNoCase(a, b);
}

ColumnSet::ColumnSet(std::vector<std::string> columnNames) : names(std::move(columnNames)) {
  for (size_t i = 0; i < names.size(); ++i) byName.try_emplace(names[i], static_cast<int>(i));
}

int ColumnSet::Find(std::string_view name) const {
  // Pages mostly spell a name as the database does: among a few columns a plain scan finds it
  // soonest. It answers as the index would unless two names differ only in case (the index then
  // holds fewer names), where the first of them is the answer.
  if (names.size() <= kScanMost && byName.size() == names.size())
    for (size_t i = 0; i < names.size(); ++i)
      if (names[i] == name) return static_cast<int>(i);
  auto it = byName.find(name);
  return it == byName.end() ? -1 : it->second;
}

}  // namespace corvane::ado::detail
