// Objects and late binding.
//
// Every creatable class (the components, the data-access objects) and every host object derives from
// Dispatch: its ClassInfo lists its members, each with its dispatch id, the kinds of call it answers
// and how a call reaches the C++ member (one declarative table per class). Object is the copyable
// shared handle that pages, Variants and tests hold; it finds members by name (case-insensitive) or by
// id and passes arguments by reference, so a member that changes an argument changes the caller's
// Variant, as a scripting host does.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

class Variant;
class Object;
class Dispatch;
using Args = std::vector<Variant>;

// How a member is called: as a method, as a property read, or as a property write by value or by
// reference ("Set"). The codes are the platform's, so they combine as flags in MemberInfo::kinds.
enum class InvokeKind : int { Method = 1, PropertyGet = 2, PropertyPut = 4, PropertyPutRef = 8 };

struct MemberInfo {
  // The call itself: the object (of the class that lists the member), the kind and the caller's
  // arguments, which a by-reference parameter updates in place.
  using Call = Variant (*)(Dispatch& self, InvokeKind kind, Args& args);
  static constexpr int kMethod = 1 | 2;  // called, or read as a property without arguments
  static constexpr int kRead = 1 | 2;    // a property read (also as a call, as scripts do)
  static constexpr int kWrite = 4 | 8;   // a property write, with or without Set

  std::string_view name;
  int32_t dispid;
  int kinds = kMethod;  // the InvokeKind codes it answers; any other kind raises 438
  Call call = nullptr;

  bool Answers(InvokeKind kind) const { return (kinds & static_cast<int>(kind)) != 0; }
};

struct ClassInfo {
  std::string_view className;  // "DNA"
  std::string_view progID;     // "corvane.DNA"; empty for classes that are not creatable
  std::string_view clsid;      // "{eab29593-...}", lower case with braces
  std::string_view iid;        // the dual interface's id
  std::vector<MemberInfo> members;
  std::function<Object()> create;  // the class factory

  // The dispatch id of a member, by case-insensitive name; -1 when there is none.
  int32_t DispIdOf(std::string_view name) const;
  const MemberInfo* Member(int32_t dispid) const;
  const MemberInfo* Member(std::string_view name) const;
};

class Dispatch : public std::enable_shared_from_this<Dispatch> {
 public:
  Dispatch() { ++live_; }
  Dispatch(const Dispatch&) : Dispatch() {}
  virtual ~Dispatch() { --live_; }
  // How many objects of any class are alive (for DllCanUnloadNow).
  static long LiveObjects() { return live_.load(); }
  virtual const ClassInfo& Info() const = 0;
  // Calls member `dispid` through the class's table. `args` are the caller's, in order; a member
  // that takes an argument by reference writes it back there. An unknown id, or a kind of call the
  // member does not answer (a write to a method, a read of a write-only property), raises 438.
  Variant InvokeMember(int32_t dispid, InvokeKind kind, Args& args);
  // For Each over the object: its elements in order (a collection's keys or items, as the class
  // says). An object that is not a collection raises 451.
  virtual std::vector<Variant> Elements();

 private:
  static inline std::atomic<long> live_{0};
};

class Object {
 public:
  Object() = default;  // Nothing
  Object(std::shared_ptr<Dispatch> p) : p_(std::move(p)) {}
  template <class T>
  Object(std::shared_ptr<T> p) : p_(std::static_pointer_cast<Dispatch>(std::move(p))) {}

  bool IsNothing() const { return !p_; }
  explicit operator bool() const { return bool(p_); }
  Dispatch* get() const { return p_.get(); }
  const std::shared_ptr<Dispatch>& ptr() const { return p_; }
  // The object as its C++ class, or nullptr when it is another class (or Nothing).
  template <class T>
  std::shared_ptr<T> As() const {
    return std::dynamic_pointer_cast<T>(p_);
  }

  // Late-bound calls. Names are matched case-insensitively; an unknown name raises 438, a call on
  // Nothing raises 91. `args` is updated in place for by-reference parameters.
  Variant Invoke(std::string_view name, Args& args) const;
  Variant Invoke(std::string_view name, Args&& args) const;
  Variant Invoke(std::string_view name) const;  // no arguments
  Variant Invoke(int32_t dispid, Args& args, InvokeKind kind = InvokeKind::Method) const;
  Variant Get(std::string_view name) const;
  Variant Get(std::string_view name, Args& args) const;  // indexed property
  void Put(std::string_view name, const Variant& value) const;
  void PutRef(std::string_view name, const Variant& value) const;
  bool Has(std::string_view name) const;  // the class has a member of that name

  bool operator==(const Object& o) const { return p_ == o.p_; }

 private:
  Variant Call(std::string_view name, InvokeKind kind, Args& args) const;
  std::shared_ptr<Dispatch> p_;
};

}  // namespace corvane
