#include "corvane/error.h"
#include "corvane/host.h"
#include "corvane/text.h"

namespace corvane::host {

Variant SessionObject::Get(std::string_view key) const {
  std::lock_guard lock(mu_);
  auto it = items_.find(LCase(key));
  return it == items_.end() ? Variant() : it->second.second;
}

void SessionObject::Set(std::string_view key, Variant value) {
  std::lock_guard lock(mu_);
  auto& slot = items_[LCase(key)];
  if (slot.first.empty()) slot.first = std::string(key);
  slot.second = std::move(value);
}

void SessionObject::Remove(std::string_view key) {
  std::lock_guard lock(mu_);
  items_.erase(LCase(key));
}

void SessionObject::Clear() {
  std::lock_guard lock(mu_);
  items_.clear();
}

std::string SessionObject::SessionID() const {
  std::lock_guard lock(mu_);
  return id_;
}

void SessionObject::AssignID(std::string id) {
  std::lock_guard lock(mu_);
  id_ = std::move(id);
  newIDRequested_ = false;
}

void SessionObject::RequestNewID() {
  std::lock_guard lock(mu_);
  newIDRequested_ = true;
}

bool SessionObject::NewIDRequested() const {
  std::lock_guard lock(mu_);
  return newIDRequested_;
}

std::vector<std::string> SessionObject::Keys() const {
  std::lock_guard lock(mu_);
  std::vector<std::string> keys;
  for (const auto& [lower, entry] : items_) keys.push_back(entry.first);
  return keys;
}

Variant Application::Get(std::string_view key) const {
  std::lock_guard lock(mu_);
  auto it = items_.find(LCase(key));
  return it == items_.end() ? Variant() : it->second;
}

void Application::Set(std::string_view key, Variant value) {
  std::lock_guard lock(mu_);
  items_[LCase(key)] = std::move(value);
}

}  // namespace corvane::host
