// The objects RegExp.Execute gives: a Matches collection of Match objects with their SubMatches.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "corvane/object.h"
#include "corvane/variant.h"

namespace corvane::script::regexp {

// One match as a page sees it: its text, where it starts (0-based) and its length, both in UTF-16
// units, and the text of each group (Empty for a group that took no part).
struct MatchRecord {
  std::string value;
  int32_t firstIndex = 0;
  int32_t length = 0;
  std::vector<Variant> subMatches;
};

// A Matches collection (Count, Item(i), For Each) of the matches, in order.
Object MakeMatches(std::vector<MatchRecord> matches);

}  // namespace corvane::script::regexp
