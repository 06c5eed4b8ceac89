#include "corvane/error.h"
#include "corvane/host.h"

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
  status_ = 302;
  redirect_ = std::move(url);
}

void Response::AddHeader(std::string name, std::string value) {
  headers_.emplace_back(std::move(name), std::move(value));
}

void Response::SetContentType(std::string type) { contentType_ = std::move(type); }

std::string Response::Output() const {
  size_t n = 0;
  for (const std::string& w : writes_) n += w.size();
  std::string out;
  out.reserve(n);
  for (const std::string& w : writes_) out += w;
  return out;
}

}  // namespace corvane::host
