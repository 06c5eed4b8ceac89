// corvane.Password as scripts see it:
//   Hash(text)          a new hash of the text (Null raises 94)
//   Verify(hash, text)  True when the text is the hash's password; False for Null, Empty or anything
//                       that is not a hash, never an error (a field read from the database will do)
//   IsHash(text)        True when the text is such a hash
#include <optional>

#include "runtime/members.h"
#include "scripting/password.h"
#include "scripting/scripting.h"

namespace corvane::scripting {

namespace {

// The text of a value (an object gives its default value), or nothing for Null, Empty and values
// that have no text.
std::optional<std::string> TextOf(const Variant& v) {
  try {
    Variant value = v.DefaultValue();
    if (value.IsNull() || value.IsEmpty() || value.IsMissing()) return std::nullopt;
    return value.ToString();
  } catch (const Error&) {
    return std::nullopt;
  }
}

bool Verify(const Variant& hash, const Variant& password) {
  std::optional<std::string> h = TextOf(hash);
  if (!h) return false;
  std::optional<std::string> p = password.IsEmpty() ? std::string() : TextOf(password);
  return p && VerifyPassword(*h, *p);
}

}  // namespace

const ClassInfo& Password::Info() const { return PasswordClass(); }

const ClassInfo& PasswordClass() {
  static const ClassInfo info{
      .className = "Password",
      .progID = "corvane.Password",
      .clsid = "{2fba0067-94dd-4ebb-9d1e-fef87e1ce23e}",
      .iid = "{2c533448-f1e5-4c19-a4cc-c21c89c75277}",
      .members =
          {
              Method<Password>("Hash", 1,
                               [](Password&, Args& a) { return HashPassword(Arg(a, 0).ToString()); }),
              Method<Password>("Verify", 2, [](Password&, Args& a) { return Verify(Arg(a, 0), Arg(a, 1)); }),
              Method<Password>("IsHash", 3,
                               [](Password&, Args& a) {
                                 std::optional<std::string> text = TextOf(Arg(a, 0));
                                 return text && IsPasswordHash(*text);
                               }),
          },
      .create = Create<Password>,
  };
  return info;
}

}  // namespace corvane::scripting
