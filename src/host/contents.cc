// Contents: the values of a Session or the Application, in the order they were first set.
#include "corvane/host.h"
#include "corvane/text.h"

namespace corvane::host {

Variant Contents::Get(std::string_view key) const {
  std::lock_guard lock(mu_);
  auto it = index_.find(LCase(key));
  return it == index_.end() ? Variant() : items_[it->second].second;
}

void Contents::Set(std::string_view key, Variant value) {
  if (store_) store_->Set(key, value);
  std::lock_guard lock(mu_);
  auto [it, added] = index_.try_emplace(LCase(key), items_.size());
  if (added)
    items_.emplace_back(std::string(key), std::move(value));
  else
    items_[it->second].second = std::move(value);
}

void Contents::Remove(std::string_view key) {
  if (store_) store_->Remove(key);
  std::lock_guard lock(mu_);
  auto it = index_.find(LCase(key));
  if (it == index_.end()) return;
  size_t at = it->second;
  index_.erase(it);
  items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(at));
  for (auto& [k, position] : index_)
    if (position > at) --position;
}

void Contents::Clear() {
  if (store_) store_->Clear();
  std::lock_guard lock(mu_);
  items_.clear();
  index_.clear();
}

size_t Contents::Count() const {
  std::lock_guard lock(mu_);
  return items_.size();
}

std::vector<std::string> Contents::Keys() const {
  std::lock_guard lock(mu_);
  std::vector<std::string> keys;
  keys.reserve(items_.size());
  for (const auto& [key, value] : items_) keys.push_back(key);
  return keys;
}

std::optional<std::pair<std::string, Variant>> Contents::At(size_t index) const {
  std::lock_guard lock(mu_);
  if (index >= items_.size()) return std::nullopt;
  return items_[index];
}

std::vector<std::pair<std::string, Variant>> Contents::Items() const {
  std::lock_guard lock(mu_);
  return items_;
}

void Contents::Assign(const std::vector<std::pair<std::string, Variant>>& items) {
  std::vector<std::pair<std::string, Variant>> kept;
  std::unordered_map<std::string, size_t> index;
  kept.reserve(items.size());
  for (const auto& [key, value] : items) {
    auto [it, added] = index.try_emplace(LCase(key), kept.size());
    if (added)
      kept.emplace_back(key, value);
    else
      kept[it->second].second = value;
  }
  std::lock_guard lock(mu_);
  items_ = std::move(kept);
  index_ = std::move(index);
}

}  // namespace corvane::host
