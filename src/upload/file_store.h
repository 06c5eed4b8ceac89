// Storing an uploaded file under a drive path ("d:\up\"), as the upload's SaveFile does it.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace corvane::upload {

// FileExists of the file system object: true for an existing file (a folder is not a file); false
// also for a name that cannot exist, such as one holding a NUL character.
bool LocalFileExists(const std::string& localPath);

// Binary open, write from the first byte, close: creates the file when it is missing and writes
// `data` over its start. An existing file is not truncated, so the bytes past the new length stay.
// Raises 76 (path not found) when a folder on the way is missing, 52 for a name holding NUL, 61
// when the disk is full (or the process's file size limit is reached) and 75 (path/file access
// error) for any other failure, such as a folder in the file's place or no permission. When the
// write fails, a file that it created is removed again.
void WriteFileFromStart(const std::string& localPath, std::string_view data);

// The writes of one upload: the data last written to each local path. A body whose items lead the
// parse back over the same file asks for the same write again; with nothing written to that path
// in between it would change nothing, and is skipped. Data are told apart by where they lie in the
// body, not by their bytes.
struct WriteLog {
  std::map<std::string, std::string_view> last;
};

// SaveFile(folder, fileName, data, overWrite): `newFileName`, when not "", replaces fileName;
// `folder` gets a trailing "\" when it has none (the caller's variable: later files see it); the
// full drive path folder + fileName is mapped to a local path (76 when it would leave its drive
// folder). When overWrite is 2 or no file exists there, the data are written and the answer is
// true; otherwise nothing is written and the answer is false.
bool SaveFile(std::string& folder, std::string fileName, std::string_view data, int32_t overWrite,
              const std::string& newFileName, WriteLog* log = nullptr);

}  // namespace corvane::upload
