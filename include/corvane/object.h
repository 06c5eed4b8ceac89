// Objects and late binding.
//
// Every creatable class (the components, the data-access objects) and every host object derives from
// Dispatch: it has a ClassInfo naming its members with their dispatch ids, and answers InvokeMember
// by id. Object is the copyable shared handle that pages, Variants and tests hold; it finds members by
// name (case-insensitive) or by id and passes arguments by reference, so a member that changes an
// argument changes the caller's Variant, as a scripting host does.
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
using Args = std::vector<Variant>;

// How a member is called: as a method, as a property read, or as a property write by value or by
// reference ("Set"). The codes are the platform's.
enum class InvokeKind : int { Method = 1, PropertyGet = 2, PropertyPut = 4, PropertyPutRef = 8 };

struct MemberInfo {
  std::string_view name;
  int32_t dispid;
};

struct ClassInfo {
  std::string_view className;  // "DNA"
  std::string_view progID;     // "corvane.DNA"
  std::string_view clsid;      // "{eab29593-...}", lower case with braces
  std::string_view iid;        // the dual interface's id
  std::vector<MemberInfo> members;
  std::function<Object()> create;  // the class factory

  // The dispatch id of a member, by case-insensitive name; -1 when there is none.
  int32_t DispIdOf(std::string_view name) const;
  const MemberInfo* Member(int32_t dispid) const;
};

class Dispatch : public std::enable_shared_from_this<Dispatch> {
 public:
  Dispatch() { ++live_; }
  Dispatch(const Dispatch&) : Dispatch() {}
  virtual ~Dispatch() { --live_; }
  // How many objects of any class are alive (for DllCanUnloadNow).
  static long LiveObjects() { return live_.load(); }
  virtual const ClassInfo& Info() const = 0;
  // Calls member `dispid`. `args` are the caller's, in order; a member that takes an argument by
  // reference writes it back there. Unknown ids raise 438.
  virtual Variant InvokeMember(int32_t dispid, InvokeKind kind, Args& args) = 0;

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
  std::shared_ptr<T> As() const { return std::dynamic_pointer_cast<T>(p_); }

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
  int32_t IdOf(std::string_view name) const;
  std::shared_ptr<Dispatch> p_;
};

// Creates a registered class by ProgID (case-insensitive) or CLSID ("{...}", any case). An unknown
// one raises 429 ("ActiveX component can't create object").
Object CreateObject(std::string_view progIDOrClsid);

// All registered classes: the five components and the data-access objects.
const std::vector<const ClassInfo*>& RegisteredClasses();
const ClassInfo* FindClass(std::string_view progIDOrClsid);

}  // namespace corvane
