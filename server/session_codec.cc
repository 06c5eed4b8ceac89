#include "session_codec.h"

#include <bit>
#include <limits>

namespace corvane::server {

namespace {

constexpr uint8_t kByteArrayTag = 0x40;
constexpr uint8_t kArrayTag = 0x41;

uint64_t ZigZag(int64_t v) { return (static_cast<uint64_t>(v) << 1) ^ static_cast<uint64_t>(v >> 63); }
int64_t UnZigZag(uint64_t v) { return static_cast<int64_t>(v >> 1) ^ -static_cast<int64_t>(v & 1); }

class Writer {
 public:
  void Byte(uint8_t b) { out_ += static_cast<char>(b); }
  void Varint(uint64_t v) {
    while (v >= 0x80) {
      Byte(static_cast<uint8_t>(v | 0x80));
      v >>= 7;
    }
    Byte(static_cast<uint8_t>(v));
  }
  void Signed(int64_t v) { Varint(ZigZag(v)); }
  void Fixed(uint64_t v, int bytes) {
    for (int i = 0; i < bytes; ++i) Byte(static_cast<uint8_t>(v >> (8 * i)));
  }
  void Text(std::string_view s) {
    Varint(s.size());
    out_.append(s);
  }
  void Value(const Variant& v, std::string_view key, int depth);
  std::string Take() { return std::move(out_); }

 private:
  std::string out_;
};

void Writer::Value(const Variant& v, std::string_view key, int depth) {
  if (v.IsMissing()) return Byte(vtError);
  if (const VariantArray* a = v.ArrayPtr()) {
    if (depth >= kMaxArrayDepth)
      throw CodecError("\"" + std::string(key) + "\" holds arrays nested deeper than " +
                       std::to_string(kMaxArrayDepth));
    Byte(kArrayTag);
    Byte(a->fixed ? 1 : 0);
    Varint(a->Rank());
    for (const VariantArray::Bound& b : a->Bounds()) {
      Signed(b.lower);
      Varint(static_cast<uint64_t>(b.count));
    }
    for (const Variant& e : a->Elements()) Value(e, key, depth + 1);
    return;
  }
  switch (v.Type()) {
    case vtEmpty:
    case vtNull: return Byte(static_cast<uint8_t>(v.Type()));
    case vtInteger: Byte(vtInteger); return Signed(v.ToInteger());
    case vtLong: Byte(vtLong); return Signed(v.ToLong());
    case vtCurrency: Byte(vtCurrency); return Signed(v.ToCurrency());
    case vtSingle: Byte(vtSingle); return Fixed(std::bit_cast<uint32_t>(v.ToSingle()), 4);
    case vtDouble: Byte(vtDouble); return Fixed(std::bit_cast<uint64_t>(v.ToDouble()), 8);
    case vtDate: Byte(vtDate); return Fixed(std::bit_cast<uint64_t>(v.ToDate()), 8);
    case vtString: Byte(vtString); return Text(*v.StringPtr());
    case vtBoolean: Byte(vtBoolean); return Byte(v.ToBool() ? 1 : 0);
    case vtByte: Byte(vtByte); return Byte(v.ToByte());
    case vtByteArray: {
      const Bytes& bytes = v.ToBytes();
      Byte(kByteArrayTag);
      Varint(bytes.size());
      out_.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
      return;
    }
    default:
      throw CodecError("\"" + std::string(key) +
                       "\" holds an object, which cannot be kept outside the process");
  }
}

class Reader {
 public:
  explicit Reader(std::string_view in) : in_(in) {}
  uint8_t Byte() {
    Need(1);
    return static_cast<uint8_t>(in_[pos_++]);
  }
  uint64_t Varint() {
    uint64_t v = 0;
    for (int shift = 0; shift < 64; shift += 7) {
      uint8_t b = Byte();
      v |= static_cast<uint64_t>(b & 0x7f) << shift;
      if (!(b & 0x80)) return v;
    }
    throw CodecError("a number runs too long");
  }
  int64_t Signed() { return UnZigZag(Varint()); }
  // A signed number that must fit `T`.
  template <class T>
  T SignedAs() {
    int64_t v = Signed();
    if (v < INT64_C(0) + std::numeric_limits<T>::min() || v > std::numeric_limits<T>::max())
      throw CodecError("a number is out of its range");
    return static_cast<T>(v);
  }
  uint64_t Fixed(int bytes) {
    Need(static_cast<size_t>(bytes));
    uint64_t v = 0;
    for (int i = 0; i < bytes; ++i) v |= static_cast<uint64_t>(static_cast<uint8_t>(in_[pos_++])) << (8 * i);
    return v;
  }
  std::string_view Span(uint64_t n) {
    Need(n);
    std::string_view s = in_.substr(pos_, n);
    pos_ += n;
    return s;
  }
  std::string Text() { return std::string(Span(Varint())); }
  Variant Value(int depth);
  size_t Left() const { return in_.size() - pos_; }

 private:
  void Need(uint64_t n) const {
    if (n > in_.size() - pos_) throw CodecError("the record ends too soon");
  }
  std::string_view in_;
  size_t pos_ = 0;
};

Variant Reader::Value(int depth) {
  uint8_t tag = Byte();
  switch (tag) {
    case vtEmpty: return Variant();
    case vtNull: return Variant::Null();
    case vtError: return Variant::Missing();
    case vtInteger: return Variant(SignedAs<int16_t>());
    case vtLong: return Variant(SignedAs<int32_t>());
    case vtCurrency: return Variant::FromCurrency(Signed());
    case vtSingle: return Variant(std::bit_cast<float>(static_cast<uint32_t>(Fixed(4))));
    case vtDouble: return Variant(std::bit_cast<double>(Fixed(8)));
    case vtDate: return Variant::FromDate(std::bit_cast<double>(Fixed(8)));
    case vtString: return Variant(Text());
    case vtBoolean: {
      uint8_t b = Byte();
      if (b > 1) throw CodecError("a Boolean is neither 0 nor 1");
      return Variant(b == 1);
    }
    case vtByte: return Variant::FromByte(Byte());
    case kByteArrayTag: {
      std::string_view bytes = Span(Varint());
      return Variant::FromBytes(Bytes(bytes.begin(), bytes.end()));
    }
    case kArrayTag: {
      if (depth >= kMaxArrayDepth) throw CodecError("arrays nest too deep");
      uint8_t fixed = Byte();
      if (fixed > 1) throw CodecError("an array's fixed flag is neither 0 nor 1");
      uint64_t rank = Varint();
      // Every dimension takes two bytes at least, every element one: a count past the bytes left is
      // a lie, refused before anything is allocated.
      if (rank > Left() / 2) throw CodecError("an array has more dimensions than bytes");
      std::vector<VariantArray::Bound> bounds;
      uint64_t elements = rank ? 1 : 0;
      for (uint64_t i = 0; i < rank; ++i) {
        VariantArray::Bound b;
        b.lower = SignedAs<int32_t>();
        uint64_t count = Varint();
        if (count > Left()) throw CodecError("an array has more elements than bytes");
        b.count = static_cast<int32_t>(count);
        elements *= count;
        if (elements > Left()) throw CodecError("an array has more elements than bytes");
        bounds.push_back(b);
      }
      VariantArray array = rank ? VariantArray(std::move(bounds)) : VariantArray();  // Dim a()
      for (Variant& e : array.Elements()) e = Value(depth + 1);
      array.fixed = fixed == 1;
      return Variant::FromArray(std::move(array));
    }
    default: throw CodecError("unknown value tag " + std::to_string(tag));
  }
}

void CheckVersion(Reader& r) {
  uint8_t version = r.Byte();
  if (version != kSessionFormat) throw CodecError("unknown format version " + std::to_string(version));
}

void CheckEnd(const Reader& r) {
  if (r.Left() != 0) throw CodecError("bytes after the end of the record");
}

}  // namespace

bool IsStorable(const Variant& value) {
  if (value.IsObject()) return false;
  if (const VariantArray* a = value.ArrayPtr())
    for (const Variant& e : a->Elements())
      if (!IsStorable(e)) return false;
  return true;
}

std::string EncodeSession(const SessionRecord& record) {
  Writer w;
  w.Byte(kSessionFormat);
  w.Varint(static_cast<uint64_t>(record.started < 0 ? 0 : record.started));
  w.Varint(static_cast<uint64_t>(record.timeoutMinutes < 1 ? 1 : record.timeoutMinutes));
  w.Signed(record.codePage);
  w.Signed(record.lcid);
  w.Varint(record.values.size());
  for (const auto& [key, value] : record.values) {
    w.Text(key);
    w.Value(value, key, 0);
  }
  return w.Take();
}

SessionRecord DecodeSession(std::string_view bytes) {
  Reader r(bytes);
  CheckVersion(r);
  SessionRecord record;
  record.started = static_cast<int64_t>(r.Varint() & INT64_MAX);
  uint64_t timeout = r.Varint();
  if (timeout < 1 || timeout > INT32_MAX) throw CodecError("a timeout out of its range");
  record.timeoutMinutes = static_cast<int>(timeout);
  record.codePage = r.SignedAs<int>();
  record.lcid = r.SignedAs<int32_t>();
  uint64_t count = r.Varint();
  if (count > r.Left() / 2) throw CodecError("more values than bytes");
  record.values.reserve(count);
  for (uint64_t i = 0; i < count; ++i) {
    std::string key = r.Text();
    record.values.emplace_back(std::move(key), r.Value(0));
  }
  CheckEnd(r);
  return record;
}

std::string EncodeNamedValue(std::string_view key, const Variant& value) {
  Writer w;
  w.Byte(kSessionFormat);
  w.Text(key);
  w.Value(value, key, 0);
  return w.Take();
}

std::pair<std::string, Variant> DecodeNamedValue(std::string_view bytes) {
  Reader r(bytes);
  CheckVersion(r);
  std::string key = r.Text();
  Variant value = r.Value(0);
  CheckEnd(r);
  return {std::move(key), std::move(value)};
}

}  // namespace corvane::server
