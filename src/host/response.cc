#include "corvane/error.h"
#include "corvane/host.h"
#include "host/host_classes.h"
#include "runtime/args.h"

namespace corvane::host {

void Response::Write(const Variant& v) {
  if (v.IsNull() || v.IsEmpty()) return;
  if (const std::string* s = v.StringPtr()) {
    writes_.push_back(*s);
    return;
  }
  writes_.push_back(v.ToString());
}

void Response::Write(std::string_view utf8) { writes_.emplace_back(utf8); }

void Response::BinaryWrite(const Bytes& bytes) { binary_.append(bytes.begin(), bytes.end()); }

void Response::Redirect(std::string url) {
  status = 302;
  redirect = std::move(url);
}

void Response::AddHeader(std::string name, std::string value) {
  headers.emplace_back(std::move(name), std::move(value));
}

std::string Response::Output() const {
  size_t n = 0;
  for (const std::string& w : writes_) n += w.size();
  std::string out;
  out.reserve(n);
  for (const std::string& w : writes_) out += w;
  return out;
}

const ClassInfo& Response::Info() const { return ResponseClass(); }

Variant Response::InvokeMember(int32_t dispid, InvokeKind kind, Args& args) {
  switch (dispid) {
    case kResponseWrite: Write(Arg(args, 0)); return {};
    case kResponseBinaryWrite: BinaryWrite(Arg(args, 0).ToBytes()); return {};
    case kResponseRedirect: Redirect(Arg(args, 0).ToString()); return {};
    case kResponseAddHeader: AddHeader(Arg(args, 0).ToString(), Arg(args, 1).ToString()); return {};
  }
  throw Error::NoSuchMember(std::to_string(dispid));
}

}  // namespace corvane::host
