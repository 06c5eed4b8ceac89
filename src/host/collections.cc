#include "collections.h"

#include "corvane/error.h"

namespace corvane::host {

namespace {

bool IsIndex(const Variant& v) { return v.IsNumber(); }

// The key of a name, or of a 1-based position (past the end raises 9).
std::string KeyOf(const Contents& values, const Variant& keyOrIndex) {
  if (!IsIndex(keyOrIndex)) return keyOrIndex.ToString();
  int32_t i = keyOrIndex.ToLong();
  auto at = i < 1 ? std::nullopt : values.At(static_cast<size_t>(i) - 1);
  if (!at) throw Error::SubscriptOutOfRange();
  return at->first;
}

}  // namespace

Variant ItemOf(const ValueCollection& values, const Variant& nameOrIndex) {
  if (!IsIndex(nameOrIndex)) return values.Item(nameOrIndex.Text());
  int32_t i = nameOrIndex.ToLong();
  std::vector<std::string> names = values.Names();
  if (i < 1 || static_cast<size_t>(i) > names.size()) throw Error::SubscriptOutOfRange();
  return values.Item(names[static_cast<size_t>(i) - 1]);
}

Variant RequestCollection::Key(int32_t index) const {
  std::vector<std::string> names = values_->Names();
  if (index < 1 || static_cast<size_t>(index) > names.size()) throw Error::SubscriptOutOfRange();
  return Variant(names[static_cast<size_t>(index) - 1]);
}

std::vector<Variant> RequestCollection::Elements() {
  std::vector<Variant> out;
  for (std::string& n : values_->Names()) out.emplace_back(std::move(n));
  return out;
}

Variant ContentsItem(Contents& values, const Variant& keyOrIndex) {
  return values.Get(KeyOf(values, keyOrIndex));
}

void SetContentsItem(Contents& values, const Variant& keyOrIndex, Variant value) {
  values.Set(KeyOf(values, keyOrIndex), std::move(value));
}

void ContentsCollection::Remove(const Variant& keyOrIndex) { values_->Remove(KeyOf(*values_, keyOrIndex)); }

Variant ContentsCollection::Key(int32_t index) const { return Variant(KeyOf(*values_, Variant(index))); }

std::vector<Variant> ContentsCollection::Elements() {
  std::vector<Variant> out;
  for (std::string& k : values_->Keys()) out.emplace_back(std::move(k));
  return out;
}

Object CollectionOf(Request& request, const ValueCollection& values, const std::string* raw) {
  std::shared_ptr<const ValueCollection> alias(request.shared_from_this(), &values);
  std::shared_ptr<const std::string> rawAlias;
  if (raw) rawAlias = std::shared_ptr<const std::string>(request.shared_from_this(), raw);
  return Object(std::make_shared<RequestCollection>(std::move(alias), std::move(rawAlias)));
}

Object CollectionOf(Dispatch& owner, Contents& values) {
  return Object(
      std::make_shared<ContentsCollection>(std::shared_ptr<Contents>(owner.shared_from_this(), &values)));
}

}  // namespace corvane::host
