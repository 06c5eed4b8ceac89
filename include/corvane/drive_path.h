// Drive paths ("d:\up\a.txt") mapped onto folders.
//
// Drive letter X (either case) is the folder named by the lower-case letter under the drive root: the
// setting CORVANE_DRIVE_ROOT (environment), default "./drives". "\" and "/" both separate. A path
// that would leave its drive folder (through "..") raises 76 (path not found). A relative path
// resolves against the process's working folder and may not climb above it either. The setting is
// read on every call, so a test or a host may change it.
//
// The mapped path is absolute ("d:" and "d:\" are the drive folder itself). A path that ends in a
// separator keeps a trailing "/", so that it still names a folder. A rooted path without a drive
// ("/etc/passwd", "\up") names no drive and raises 76; a ":" other than the drive's raises 52.
#pragma once

#include <string>
#include <string_view>

namespace corvane {

// The local file system path for a drive path or a relative path.
std::string MapDrivePath(std::string_view path);
std::string DriveRoot();

}  // namespace corvane
