// Class descriptions and member ids of the host objects.
#pragma once

#include "corvane/object.h"

namespace corvane::host {

enum : int32_t {
  kRequestForm = 1, kRequestQueryString, kRequestServerVariables, kRequestTotalBytes, kRequestBinaryRead,
};
enum : int32_t { kResponseWrite = 1, kResponseBinaryWrite, kResponseRedirect, kResponseAddHeader };
enum : int32_t { kSessionItem = 0, kSessionRemove = 1, kSessionAbandon, kSessionSessionID };
enum : int32_t { kApplicationItem = 0 };
enum : int32_t { kServerCreateObject = 1, kServerURLEncode, kServerHTMLEncode };
enum : int32_t {
  kContextRequest = 1, kContextResponse, kContextSession, kContextServer, kContextApplication,
};

const ClassInfo& RequestClass();
const ClassInfo& ResponseClass();
const ClassInfo& SessionClass();
const ClassInfo& ApplicationClass();
const ClassInfo& ServerClass();
const ClassInfo& ScriptingContextClass();

}  // namespace corvane::host
