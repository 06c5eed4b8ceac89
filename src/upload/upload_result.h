// The answers of SystemInit.Upload: "OK" or the message for a stop code, in Chinese and English.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

namespace corvane::upload {

// Stop codes, as offsets above the interface-error base 0x80040000 (106 is not used).
enum class UploadCode : int32_t {
  kOk = 0,
  kFileExists = 101,       // the file is there and may not be replaced
  kContentEmpty = 102,     // a file's content is shorter than 2 bytes
  kFileNameEmpty = 103,    // a file item's name is empty
  kTooLarge = 104,         // a file's content is larger than the limit
  kTooManyItems = 105,     // more than 255 items
  kNoItems = 107,          // no item at all
  kPathNotAbsolute = 108,  // the folder has no ":"
};

// The message for a stop code. `itemName` and `fileName` are those of the last item parsed; they go
// into the messages of 103 and 104.
std::string UploadResultText(UploadCode code, const std::string& itemName, const std::string& fileName);

// The answer for a failure of the runtime: its description (never empty).
std::string FailureText(const std::exception_ptr& failure);

}  // namespace corvane::upload
