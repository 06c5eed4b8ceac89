// The bytes of session and Application values kept outside the process (redis_sessions.h), where
// every corvane-server of a site reads them.
//
// A session record:
//   version    one byte, kSessionFormat
//   started    varint, the session's start in Unix seconds (its lifetime counts from there)
//   timeout    varint, Session.Timeout in minutes
//   code page  zigzag varint, Session.CodePage (0: the server's)
//   LCID       zigzag varint, Session.LCID
//   count      varint, then that many (key, value) pairs in the order the page set them
// An Application value (one field of the shared hash): version, key, value.
// A key or text: varint byte count, then its UTF-8 bytes.
// A value: one tag byte (the VarType code, or kByteArrayTag / kArrayTag), then
//   Empty 0, Null 1, Missing 10       nothing
//   Integer 2, Long 3, Currency 6      zigzag varint (Currency: the value times 10000)
//   Single 4                           4 bytes, Double 5 and Date 7: 8 bytes (IEEE, little-endian)
//   String 8                           text
//   Boolean 11, Byte 17                one byte
//   byte array                         varint count, the bytes
//   array                              one byte (1: fixed size), varint rank, per dimension the
//                                      zigzag lower bound and varint count, then every element as a
//                                      value, first index fastest (arrays nest up to kMaxArrayDepth)
// Objects have no encoding: a page that puts one in a shared session or the Application gets an
// error naming the key (IsStorable tells beforehand).
//
// Decoding checks every length against the bytes left and refuses an unknown version or tag,
// trailing bytes and arrays nested too deep with CodecError; it never reads past its input.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "corvane/variant.h"

namespace corvane::server {

inline constexpr uint8_t kSessionFormat = 1;
inline constexpr int kMaxArrayDepth = 16;

class CodecError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct SessionRecord {
  int64_t started = 0;  // Unix seconds
  int timeoutMinutes = 20;
  int codePage = 0;
  int32_t lcid = 2052;
  std::vector<std::pair<std::string, Variant>> values;
};

// False when the value is an object or an array holding one (at any depth).
bool IsStorable(const Variant& value);

// Raise CodecError for a value that is not storable, naming its key.
std::string EncodeSession(const SessionRecord& record);
SessionRecord DecodeSession(std::string_view bytes);

std::string EncodeNamedValue(std::string_view key, const Variant& value);
std::pair<std::string, Variant> DecodeNamedValue(std::string_view bytes);

}  // namespace corvane::server
