// Password hashes for the site's accounts: Argon2id in the text form libsodium writes,
//
//   $argon2id$v=19$m=65536,t=2,p=1$<salt, 22 characters>$<hash, 43 characters>
//
// (97 characters; the parameters are libsodium's "interactive" limits, 64 MiB and two passes, about
// 70 ms on one core). Every hash carries its own random salt, so two accounts with the same password
// store different texts. Texts are hashed as their UTF-8 bytes.
//
// corvane.Password is the class pages create by name: Hash(text), Verify(hash, text), IsHash(text).
#pragma once

#include <string>
#include <string_view>

#include "corvane/object.h"

namespace corvane::scripting {

// A new hash of `password` with a fresh salt. Raises 7 (out of memory) when the hash's memory
// cannot be had.
std::string HashPassword(std::string_view password);

// Whether `password` is the one `hash` was made from. A text that is not such a hash (IsPasswordHash)
// answers false at once, without hashing.
bool VerifyPassword(std::string_view hash, std::string_view password);

// Whether `text` has the form above: Argon2id, version 19, a memory cost of 8 KiB to 256 MiB, 1 to 8
// passes and lanes, a salt of 8 to 48 bytes and a hash of 16 to 64 bytes in unpadded base64, under
// 128 characters in all. The bounds keep a planted text from tying up a sign-in with a huge cost.
bool IsPasswordHash(std::string_view text);

class Password final : public Dispatch {
 public:
  const ClassInfo& Info() const override;
};

}  // namespace corvane::scripting
