// The library's four registration entry points, with the platform's result codes. On this platform
// the class table is compiled in, so registering writes nothing; the entry points remain so that a
// host can ask for a class factory by CLSID and learn whether the library is still in use.
#pragma once

#include <cstdint>

namespace corvane {
struct ClassInfo;
}

extern "C" {
// 0 (S_OK): the classes are registered (the table is compiled in).
int32_t DllRegisterServer();
int32_t DllUnregisterServer();
// 0 (S_OK) and *factory = the class's ClassInfo when `clsid` names a registered class;
// 0x80040111 (CLASS_E_CLASSNOTAVAILABLE) and *factory = nullptr otherwise.
int32_t DllGetClassObject(const char* clsid, const corvane::ClassInfo** factory);
// 0 (S_OK) when no object created by the library is alive, 1 (S_FALSE) otherwise.
int32_t DllCanUnloadNow();
}
