// SystemInit's class description (ProgID, CLSID, IID, dispatch ids) and its late-bound dispatch.
#include <memory>

#include "corvane/error.h"
#include "runtime/args.h"
#include "upload/system_init.h"

namespace corvane {

namespace {

enum : int32_t {
  kOverWrite = 0x68030000,
  kPath = 0x68030001,
  kMaxSize = 0x68030002,
  kCount = 0x68030003,
  kNewFileName = 0x68030004,
  kUpToFile = 0x68030005,
  kOnStartPage = 0x60030006,
  kOnEndPage = 0x60030007,
  kUpload = 0x60030008,
  kFileName = 0x60030009,
  kSize = 0x6003000a,
  kForm = 0x6003000b,
};

// The value of a property write: the last argument.
const Variant& NewValue(const Args& args) {
  if (args.empty() || args.back().IsMissing()) throw Error::ArgumentNotOptional();
  return args.back();
}

}  // namespace

const ClassInfo& SystemInitClass() {
  static const ClassInfo info{
      .className = "SystemInit",
      .progID = "corvane.SystemInit",
      .clsid = "{3f4f3461-be35-4ba8-b320-37e41db10371}",
      .iid = "{424a8184-ec49-4749-873c-02170ee6de50}",
      .members = {{"OverWrite", kOverWrite},
                  {"Path", kPath},
                  {"MaxSize", kMaxSize},
                  {"count", kCount},
                  {"NewFileName", kNewFileName},
                  {"UpToFile", kUpToFile},
                  {"OnStartPage", kOnStartPage},
                  {"OnEndPage", kOnEndPage},
                  {"Upload", kUpload},
                  {"FileName", kFileName},
                  {"Size", kSize},
                  {"Form", kForm}},
      .create = [] { return Object(std::make_shared<SystemInit>()); },
  };
  return info;
}

const ClassInfo& SystemInit::Info() const { return SystemInitClass(); }

Variant SystemInit::InvokeMember(int32_t dispid, InvokeKind kind, Args& args) {
  const bool write = IsPropertyWrite(kind);
  switch (dispid) {
    // The five settings can only be set, count only read.
    case kOverWrite:
      if (!write) break;
      OverWrite(NewValue(args).ToInteger());
      return {};
    case kPath:
      if (!write) break;
      Path(NewValue(args).ToString());
      return {};
    case kMaxSize:
      if (!write) break;
      MaxSize(NewValue(args).ToLong());
      return {};
    case kNewFileName:
      if (!write) break;
      NewFileName(NewValue(args).ToString());
      return {};
    case kUpToFile:
      if (!write) break;
      UpToFile(NewValue(args).ToLong());
      return {};
    case kCount:
      if (write) break;
      return count();
  }
  if (write) throw Error::NoSuchMember(std::to_string(dispid));
  switch (dispid) {
    case kOnStartPage: OnStartPage(RefArg(args, 0)); return {};
    case kOnEndPage: OnEndPage(); return {};
    case kUpload: return Variant(Upload(OptionalArg(args, 0), OptionalArg(args, 1), OptionalArg(args, 2)));
    case kFileName: return Variant(FileName(RefArg(args, 0)));
    case kSize: return Variant(Size(RefArg(args, 0)));
    case kForm: return Form(RefArg(args, 0));
  }
  throw Error::NoSuchMember(std::to_string(dispid));
}

}  // namespace corvane
