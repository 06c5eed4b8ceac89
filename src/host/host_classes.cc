#include "host/host_classes.h"

namespace corvane::host {

// Host objects are not creatable: they have no ProgID and no factory.
const ClassInfo& RequestClass() {
  static const ClassInfo info{.className = "Request", .members = {
      {"Form", kRequestForm}, {"QueryString", kRequestQueryString},
      {"ServerVariables", kRequestServerVariables}, {"TotalBytes", kRequestTotalBytes},
      {"BinaryRead", kRequestBinaryRead}}};
  return info;
}

const ClassInfo& ResponseClass() {
  static const ClassInfo info{.className = "Response", .members = {
      {"Write", kResponseWrite}, {"BinaryWrite", kResponseBinaryWrite},
      {"Redirect", kResponseRedirect}, {"AddHeader", kResponseAddHeader}}};
  return info;
}

const ClassInfo& SessionClass() {
  static const ClassInfo info{.className = "Session", .members = {
      {"Item", kSessionItem}, {"Contents", kSessionItem}, {"Remove", kSessionRemove},
      {"Abandon", kSessionAbandon}, {"SessionID", kSessionSessionID}}};
  return info;
}

const ClassInfo& ApplicationClass() {
  static const ClassInfo info{.className = "Application",
                              .members = {{"Item", kApplicationItem}, {"Contents", kApplicationItem}}};
  return info;
}

const ClassInfo& ServerClass() {
  static const ClassInfo info{.className = "Server", .members = {
      {"CreateObject", kServerCreateObject}, {"URLEncode", kServerURLEncode},
      {"HTMLEncode", kServerHTMLEncode}}};
  return info;
}

const ClassInfo& ScriptingContextClass() {
  static const ClassInfo info{.className = "ScriptingContext", .members = {
      {"Request", kContextRequest}, {"Response", kContextResponse}, {"Session", kContextSession},
      {"Server", kContextServer}, {"Application", kContextApplication}}};
  return info;
}

}  // namespace corvane::host
