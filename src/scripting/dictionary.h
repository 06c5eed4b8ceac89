// Scripting.Dictionary: items by key, in the order their keys were added.
//
// Keys are compared by kind and value: a text with a text (binary, or ignoring the case of ASCII
// letters under CompareMode 1), a number with a number whatever its subtype (1, CLng(1) and 1.0 are
// one key, "1" is another), a Date with a Date, an object by identity; Empty and Null are keys of
// their own. An array is not a key (13).
#pragma once

#include <cstdint>
#include <list>
#include <string>
#include <unordered_map>
#include <vector>

#include "corvane/object.h"
#include "corvane/variant.h"

namespace corvane::scripting {

class Dictionary final : public Dispatch {
 public:
  const ClassInfo& Info() const override;
  std::vector<Variant> Elements() override;  // the keys

  void Add(const Variant& key, const Variant& item);  // 457 when the key is there
  // Reading an absent key adds it with an Empty item, as the platform does.
  Variant Item(const Variant& key);
  void SetItem(const Variant& key, const Variant& item);   // adds or replaces
  void Rename(const Variant& key, const Variant& newKey);  // Key(key) = newKey
  bool Exists(const Variant& key) const;
  Variant Keys() const;             // a 0-based array
  Variant Items() const;            // a 0-based array
  void Remove(const Variant& key);  // 32811 when the key is absent
  void RemoveAll();
  int32_t Count() const { return static_cast<int32_t>(entries_.size()); }
  // 0 binary, 1 (or above) text. Changes only while the dictionary is empty (5 otherwise).
  int32_t CompareMode() const { return compareMode_; }
  void SetCompareMode(int32_t mode);

 private:
  struct Entry {
    Variant key;
    Variant item;
  };
  using Entries = std::list<Entry>;
  std::string Hash(const Variant& key) const;
  Entries::iterator Find(const Variant& key);

  Entries entries_;
  std::unordered_map<std::string, Entries::iterator> index_;
  int32_t compareMode_ = 0;
};

}  // namespace corvane::scripting
