#include "registration/entry_points.h"

#include "corvane/registry.h"

extern "C" {

int32_t DllRegisterServer() { return 0; }
int32_t DllUnregisterServer() { return 0; }

int32_t DllGetClassObject(const char* clsid, const corvane::ClassInfo** factory) {
  const corvane::ClassInfo* c = clsid ? corvane::FindClass(clsid) : nullptr;
  if (factory) *factory = c;
  return c ? 0 : static_cast<int32_t>(0x80040111u);
}

int32_t DllCanUnloadNow() { return corvane::Dispatch::LiveObjects() == 0 ? 0 : 1; }
}
