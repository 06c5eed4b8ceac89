// The helper classes pages create by name: Scripting.Dictionary, Scripting.FileSystemObject,
// ADODB.Stream and System.Collections.ArrayList. Each ClassInfo carries the platform's ProgID and
// CLSID and a factory, for the class table.
//
// The file classes (FileSystemObject, ADODB.Stream) reach only the drive folders and the site's
// folder: a path is either a drive path ("d:\up\a.txt", corvane/drive_path.h) or an absolute local
// path inside the site folder or the drive root. Any other path raises 70 (permission denied).
#pragma once

#include <string>

#include "corvane/object.h"

namespace corvane::scripting {

const ClassInfo& DictionaryClass();
const ClassInfo& FileSystemObjectClass();
const ClassInfo& StreamClass();
const ClassInfo& ArrayListClass();
// The site's accounts: corvane.Password (password hashes, password.h) and corvane.SignInThrottle
// (sign_in_throttle.h).
const ClassInfo& PasswordClass();
const ClassInfo& SignInThrottleClass();

// The site's folder, whose files pages may reach by absolute local path (Server.MapPath gives such
// paths). The server sets it at start; until then only drive paths are allowed. Thread-safe.
void SetSiteFolder(std::string folder);
std::string SiteFolder();

}  // namespace corvane::scripting
