#include "corvane/error.h"
#include "corvane/host.h"
#include "corvane/text.h"
#include "host/host_classes.h"
#include "runtime/args.h"

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

std::vector<std::string> SessionObject::Keys() const {
  std::lock_guard lock(mu_);
  std::vector<std::string> keys;
  for (const auto& [lower, entry] : items_) keys.push_back(entry.first);
  return keys;
}

const ClassInfo& SessionObject::Info() const { return SessionClass(); }

Variant SessionObject::InvokeMember(int32_t dispid, InvokeKind kind, Args& args) {
  switch (dispid) {
    case kSessionItem:
      if (IsPropertyWrite(kind)) {
        Set(Arg(args, 0).ToString(), Arg(args, 1));
        return {};
      }
      return Get(Arg(args, 0).ToString());
    case kSessionRemove: Remove(Arg(args, 0).ToString()); return {};
    case kSessionAbandon: Clear(); return {};
    case kSessionSessionID: return Variant(id);
  }
  throw Error::NoSuchMember(std::to_string(dispid));
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

const ClassInfo& Application::Info() const { return ApplicationClass(); }

Variant Application::InvokeMember(int32_t dispid, InvokeKind kind, Args& args) {
  if (dispid != kApplicationItem) throw Error::NoSuchMember(std::to_string(dispid));
  if (IsPropertyWrite(kind)) {
    Set(Arg(args, 0).ToString(), Arg(args, 1));
    return {};
  }
  return Get(Arg(args, 0).ToString());
}

}  // namespace corvane::host
