// corvane.Password: hashes that verify their own password and no other, each with its own salt;
// texts as UTF-8; anything that is not an Argon2id hash answered False without an error. (The
// sign-in page's use, a database field handed to Verify, is replayed over HTTP by the attack tests.)
#include "scripting/password.h"

#include <gtest/gtest.h>

#include "corvane/registry.h"
#include "test_support.h"

namespace corvane::scripting {
namespace {

using testing::ErrorNumber;

// Made once by libsodium from the passwords' UTF-8 bytes: "密码" at the interactive cost, "sysop"
// at a cost of its own (the hash carries its parameters), and "sysop" as Argon2i, which is not ours.
constexpr const char* kChinese =
    "$argon2id$v=19$m=65536,t=2,p=1$CEOXq0GlH7uU30sXOt6c4A$s1CksjmA5EomserhbUdtrgC38vAZLVuduKL8suBv2Vs";
constexpr const char* kSysop =
    "$argon2id$v=19$m=4096,t=3,p=1$MgpkOlZ6XNsS3SmFJBzV7g$nb0l5UifAqJcauB77OhXMOubuSMFLBTRrgugffXOCn4";
constexpr const char* kArgon2i =
    "$argon2i$v=19$m=4096,t=3,p=1$C/8Nj0Kf1vgz30uAbn5TsQ$B9mSUeyHcjaeM0yRBMRvenXRBm+TtuuJqY2WaxEGyEw";

Variant Verify(const Object& pw, const Variant& hash, const Variant& text) {
  return pw.Invoke("Verify", {hash, text});
}

TEST(Password, AHashVerifiesItsOwnPasswordOnly) {
  Object pw = CreateObject("corvane.Password");
  // clang-format off
  const struct { const char* password; const char* other; } cases[] = {
      {"123456", "1234567"}, {"", " "}, {"密码 pass😀", "密码 Pass😀"},
  };
  // clang-format on
  for (const auto& c : cases) {
    Variant hash = pw.Invoke("Hash", {Variant(c.password)});
    EXPECT_TRUE(hash.ToString().starts_with("$argon2id$v=19$m=65536,t=2,p=1$")) << hash.ToString();
    EXPECT_EQ(pw.Invoke("IsHash", {hash}), Variant(true));
    EXPECT_EQ(Verify(pw, hash, Variant(c.password)), Variant(true)) << c.password;
    EXPECT_EQ(Verify(pw, hash, Variant(c.other)), Variant(false)) << c.password;
  }
  // Two hashes of one password differ (each has its own salt) and both verify.
  std::string a = HashPassword("123456"), b = HashPassword("123456");
  EXPECT_NE(a, b);
  EXPECT_TRUE(VerifyPassword(b, "123456"));
  EXPECT_EQ(ErrorNumber([&] { pw.Invoke("Hash", {Variant::Null()}); }), 94);
}

TEST(Password, FixedHashesVerifyByTheirUtf8BytesAndParameters) {
  // clang-format off
  const struct { const char* hash; const char* password; bool good; } cases[] = {
      {kChinese, "密码", true},  {kChinese, "密碼", false}, {kChinese, "", false},
      {kSysop, "sysop", true},   {kSysop, "sysop ", false},
      {kArgon2i, "sysop", false},  // right password, but not an Argon2id hash
  };
  // clang-format on
  for (const auto& c : cases) EXPECT_EQ(VerifyPassword(c.hash, c.password), c.good) << c.hash;
}

TEST(Password, WhatIsNotAHashIsFalseWithoutAnError) {
  Object pw = CreateObject("corvane.Password");
  const std::string good = kSysop;
  auto with = [&](const std::string& from, const std::string& to) {
    std::string s = good;
    return s.replace(s.find(from), from.size(), to);
  };
  // clang-format off
  const Variant texts[] = {
      Variant(), Variant::Null(), Variant(""), Variant("sysop"), Variant(123456), Variant(kArgon2i),
      Variant(with("v=19", "v=16")),           Variant(with("m=4096", "m=4")),
      Variant(with("m=4096", "m=04096")),      Variant(with("m=4096", "m=4194304")),
      Variant(with("t=3", "t=0")),             Variant(with("t=3", "t=99")),
      Variant(with("p=1", "p=")),              Variant(with(",t=", "t=")),
      Variant(with("MgpkOlZ6", "Mg*kOlZ6")),   Variant(with("$MgpkOlZ6XNsS3SmFJBzV7g", "$")),
      Variant(good.substr(0, good.rfind('$') + 1)),  // no hash
      Variant(good.substr(0, good.size() - 25)),     // a hash too short
      Variant(good + "$"),  Variant(good + "="),  Variant(" " + good),
      Variant(good + std::string(40, 'A')),          // too long for any stored hash
      Variant(CreateObject("Scripting.Dictionary")),
  };
  // clang-format on
  for (const Variant& text : texts) {
    EXPECT_EQ(pw.Invoke("IsHash", {text}), Variant(false)) << DebugString(text);
    EXPECT_EQ(Verify(pw, text, Variant("sysop")), Variant(false)) << DebugString(text);
  }
  EXPECT_EQ(pw.Invoke("IsHash", {Variant(good)}), Variant(true));
  // A well-formed hash whose last character changed verifies nothing.
  EXPECT_EQ(Verify(pw, Variant(with("OCn4", "OCn5")), Variant("sysop")), Variant(false));
  EXPECT_EQ(Verify(pw, Variant(good), Variant::Null()), Variant(false));
}

}  // namespace
}  // namespace corvane::scripting
