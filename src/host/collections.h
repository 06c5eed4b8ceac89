// The collection objects scripts get from a host object's member called without a name:
// Request.Form, .QueryString, .ServerVariables and .Cookies (read-only, over the request's values),
// Session.Contents and Application.Contents (over their values). Each counts its names (Count), gives
// the name at a 1-based position (Key) and a value by name or position (Item, the default member),
// and For Each walks its names.
#pragma once

#include <memory>
#include <string>

#include "corvane/host.h"

namespace corvane::host {

// Item of a request value set: by name (the values joined), or by 1-based position among the
// distinct names; past the end raises 9.
Variant ItemOf(const ValueCollection& values, const Variant& nameOrIndex);

class RequestCollection : public Dispatch {
 public:
  // `values` lives in the Request that owns it (an aliasing pointer keeps the Request alive).
  // `raw` is what the collection reads as a value: the Request's raw query string or body, also
  // through an aliasing pointer (a body can be large: it is copied only when the value is read);
  // null for the collections that have none (their value is "").
  RequestCollection(std::shared_ptr<const ValueCollection> values, std::shared_ptr<const std::string> raw)
      : values_(std::move(values)), raw_(std::move(raw)) {}
  const ClassInfo& Info() const override;
  std::vector<Variant> Elements() override;

  Variant Item(const Variant& nameOrIndex) const { return ItemOf(*values_, nameOrIndex); }
  int32_t Count() const { return static_cast<int32_t>(values_->Names().size()); }
  Variant Key(int32_t index) const;
  std::string Raw() const { return raw_ ? *raw_ : std::string(); }

 private:
  std::shared_ptr<const ValueCollection> values_;
  std::shared_ptr<const std::string> raw_;
};

// Item of Contents: by key, or by 1-based position (past the end raises 9).
Variant ContentsItem(Contents& values, const Variant& keyOrIndex);
void SetContentsItem(Contents& values, const Variant& keyOrIndex, Variant value);

class ContentsCollection : public Dispatch {
 public:
  explicit ContentsCollection(std::shared_ptr<Contents> values) : values_(std::move(values)) {}
  const ClassInfo& Info() const override;
  std::vector<Variant> Elements() override;

  Variant Item(const Variant& keyOrIndex) const { return ContentsItem(*values_, keyOrIndex); }
  void SetItem(const Variant& keyOrIndex, Variant value) {
    SetContentsItem(*values_, keyOrIndex, std::move(value));
  }
  void Remove(const Variant& keyOrIndex);
  Variant Key(int32_t index) const;  // past the end raises 9
  Contents& Values() const { return *values_; }

 private:
  std::shared_ptr<Contents> values_;
};

// The collection of one of a Request's value sets, keeping the Request alive.
Object CollectionOf(Request& request, const ValueCollection& values, const std::string* raw);
// The Contents collection of a Session or the Application (`owner`), keeping the owner alive.
Object CollectionOf(Dispatch& owner, Contents& values);

}  // namespace corvane::host
