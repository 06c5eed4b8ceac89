// SystemInit: page attachment, the property setters and the item look-ups.
#include "upload/system_init.h"

#include "corvane/error.h"
#include "corvane/host.h"
#include "corvane/text.h"

namespace corvane {

namespace upload {

std::shared_ptr<const UploadValue> UploadValue::Text(std::string text) {
  auto v = std::make_shared<UploadValue>();
  v->value_ = Variant(std::move(text));
  v->ready_ = true;
  return v;
}

std::shared_ptr<const UploadValue> UploadValue::Content(std::shared_ptr<const void> owner,
                                                        std::string_view bytes) {
  auto v = std::make_shared<UploadValue>();
  v->owner_ = std::move(owner);
  v->bytes_ = bytes;
  return v;
}

Variant UploadValue::Get() const {
  if (!ready_) {
    value_ = Variant::FromBytes(corvane::Bytes(bytes_.begin(), bytes_.end()));
    ready_ = true;
  }
  return value_;
}

}  // namespace upload

void SystemInit::OnStartPage(Variant& PassedScriptingcontext) {
  auto context = PassedScriptingcontext.ToObject().As<host::ScriptingContext>();
  if (!context) throw Error::ObjectRequired();
  objContext_ = context;
  objRequest_ = context->Request();
  objServer_ = context->Server();
}

void SystemInit::OnEndPage() {
  objContext_.reset();
  objRequest_.reset();
  objServer_.reset();
}

void SystemInit::OverWrite(int16_t value) { OverWrite_ = (value == 1 || value == 2) ? value : int16_t{0}; }

void SystemInit::MaxSize(int32_t value) { MaxSize_ = value; }

void SystemInit::Path(const std::string& value) { Path_ = Mid(value, 2, 1) == ":" ? value : std::string(); }

void SystemInit::UpToFile(int32_t value) { UpToFile_ = value == 2 ? 2 : 1; }

void SystemInit::NewFileName(const std::string& value) { NewFileName_ = value; }

const upload::UploadItem* SystemInit::Find(const Variant& varformname) const {
  const std::string name = varformname.ToString();
  for (int32_t i = 0; i < count_; ++i) {
    // The items of an Upload that stopped early may not reach count: the array bound is exceeded.
    if (!items_ || static_cast<size_t>(i) >= items_->size()) throw Error::SubscriptOutOfRange();
    const upload::UploadItem& item = (*items_)[static_cast<size_t>(i)];
    if (item.name && *item.name == name) return &item;
  }
  return nullptr;
}

std::string SystemInit::FileName(Variant& varformname) const {
  if (count_ == 0) return "";
  const upload::UploadItem* item = Find(varformname);
  return item && item->fileName ? *item->fileName : std::string();
}

int32_t SystemInit::Size(Variant& varformname) const {
  if (count_ == 0) return 0;
  const upload::UploadItem* item = Find(varformname);
  return item ? item->size : 0;
}

Variant SystemInit::Form(Variant& varformname) const {
  if (count_ == 0) return Variant("");
  const upload::UploadItem* item = Find(varformname);
  return item && item->value ? item->value->Get() : Variant("");
}

}  // namespace corvane
