// Scripting.Dictionary: a list of entries in insertion order, indexed by a hash of the key.
#include "scripting/dictionary.h"

#include <cstring>

#include "corvane/error.h"
#include "corvane/text.h"

namespace corvane::scripting {

namespace {

Error KeyExists() { return Error(457, "This key is already associated with an element of this collection"); }
Error ElementNotFound() { return Error(32811, "Element not found"); }

std::string NumberHash(char kind, double value) {
  if (value == 0) value = 0;  // -0 and 0 are one key
  char bits[sizeof value];
  std::memcpy(bits, &value, sizeof value);
  return kind + std::string(bits, sizeof bits);
}

}  // namespace

// A text that names the key's kind and value, equal for keys that are the same key.
std::string Dictionary::Hash(const Variant& key) const {
  if (const std::string* s = key.StringPtr()) return "s" + (compareMode_ ? LCase(*s) : *s);
  if (key.IsObject()) return "o" + std::to_string(reinterpret_cast<uintptr_t>(key.ToObject().get()));
  if (key.IsArray() || key.IsBytes()) throw Error::TypeMismatch();
  switch (key.Type()) {
    case vtEmpty: return "e";
    case vtNull: return "n";
    case vtBoolean: return key.ToBool() ? "t" : "f";
    case vtDate: return NumberHash('d', key.ToDouble());
    default: return NumberHash('#', key.ToDouble());
  }
}

Dictionary::Entries::iterator Dictionary::Find(const Variant& key) {
  auto it = index_.find(Hash(key));
  return it == index_.end() ? entries_.end() : it->second;
}

std::vector<Variant> Dictionary::Elements() {
  std::vector<Variant> keys;
  keys.reserve(entries_.size());
  for (const Entry& e : entries_) keys.push_back(e.key);
  return keys;
}

void Dictionary::Add(const Variant& key, const Variant& item) {
  std::string hash = Hash(key);
  if (index_.count(hash)) throw KeyExists();
  entries_.push_back({key, item});
  index_.emplace(std::move(hash), std::prev(entries_.end()));
}

Variant Dictionary::Item(const Variant& key) {
  auto it = Find(key);
  if (it != entries_.end()) return it->item;
  Add(key, Variant());
  return {};
}

void Dictionary::SetItem(const Variant& key, const Variant& item) {
  auto it = Find(key);
  if (it == entries_.end())
    Add(key, item);
  else
    it->item = item;
}

void Dictionary::Rename(const Variant& key, const Variant& newKey) {
  auto it = Find(key);
  if (it == entries_.end()) throw ElementNotFound();
  std::string hash = Hash(newKey);
  auto taken = index_.find(hash);
  if (taken != index_.end() && taken->second != it) throw KeyExists();
  index_.erase(Hash(key));
  it->key = newKey;
  index_[std::move(hash)] = it;
}

bool Dictionary::Exists(const Variant& key) const { return index_.count(Hash(key)) > 0; }

Variant Dictionary::Keys() const {
  std::vector<Variant> out;
  for (const Entry& e : entries_) out.push_back(e.key);
  return Variant::FromArray(VariantArray::Of(std::move(out)));
}

Variant Dictionary::Items() const {
  std::vector<Variant> out;
  for (const Entry& e : entries_) out.push_back(e.item);
  return Variant::FromArray(VariantArray::Of(std::move(out)));
}

void Dictionary::Remove(const Variant& key) {
  auto it = index_.find(Hash(key));
  if (it == index_.end()) throw ElementNotFound();
  entries_.erase(it->second);
  index_.erase(it);
}

void Dictionary::RemoveAll() {
  entries_.clear();
  index_.clear();
}

void Dictionary::SetCompareMode(int32_t mode) {
  if (mode < 0 || !entries_.empty()) throw Error::InvalidCall();
  compareMode_ = mode;
}

}  // namespace corvane::scripting
