// Argon2id hashes through libsodium (crypto_pwhash_str and crypto_pwhash_str_verify).
#include "scripting/password.h"

#include <sodium.h>

#include <array>
#include <cstdint>

#include "corvane/error.h"

namespace corvane::scripting {

namespace {

// libsodium must be set up once before its first use; sodium_init is safe to race.
void RequireSodium() {
  static const bool ready = sodium_init() >= 0;
  if (!ready) throw Error(7, "Out of memory");
}

// Reads `prefix` at the front of `text` and drops it.
bool Take(std::string_view& text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

// A decimal number in min..max at the front of `text`, without leading zeros; dropped from it.
bool TakeNumber(std::string_view& text, uint32_t min, uint32_t max) {
  size_t digits = 0;
  uint64_t value = 0;
  while (digits < text.size() && digits < 10 && text[digits] >= '0' && text[digits] <= '9')
    value = value * 10 + static_cast<uint64_t>(text[digits++] - '0');
  if (digits == 0 || (digits > 1 && text[0] == '0') || value < min || value > max) return false;
  text.remove_prefix(digits);
  return true;
}

bool IsBase64Char(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/';
}

// Unpadded base64 of minBytes..maxBytes bytes at the front of `text`; dropped from it.
bool TakeBase64(std::string_view& text, size_t minBytes, size_t maxBytes) {
  size_t n = 0;
  while (n < text.size() && IsBase64Char(text[n])) ++n;
  if (n % 4 == 1) return false;  // no byte count has such a length
  size_t bytes = n / 4 * 3 + (n % 4 == 0 ? 0 : n % 4 - 1);
  if (bytes < minBytes || bytes > maxBytes) return false;
  text.remove_prefix(n);
  return true;
}

}  // namespace

std::string HashPassword(std::string_view password) {
  RequireSodium();
  std::array<char, crypto_pwhash_STRBYTES> out{};
  if (crypto_pwhash_str(out.data(), password.data(), password.size(), crypto_pwhash_OPSLIMIT_INTERACTIVE,
                        crypto_pwhash_MEMLIMIT_INTERACTIVE) != 0)
    throw Error(7, "Out of memory");
  return out.data();
}

bool IsPasswordHash(std::string_view text) {
  if (text.size() >= crypto_pwhash_STRBYTES) return false;
  return Take(text, "$argon2id$v=19$m=") && TakeNumber(text, 8, 256 * 1024) && Take(text, ",t=") &&
         TakeNumber(text, 1, 8) && Take(text, ",p=") && TakeNumber(text, 1, 8) && Take(text, "$") &&
         TakeBase64(text, 8, 48) && Take(text, "$") && TakeBase64(text, 16, 64) && text.empty();
}

bool VerifyPassword(std::string_view hash, std::string_view password) {
  if (!IsPasswordHash(hash)) return false;
  RequireSodium();
  // libsodium reads the hash as a C string in a buffer of its full size.
  std::array<char, crypto_pwhash_STRBYTES> text{};
  hash.copy(text.data(), hash.size());
  return crypto_pwhash_str_verify(text.data(), password.data(), password.size()) == 0;
}

}  // namespace corvane::scripting
