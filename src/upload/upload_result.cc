#include "upload/upload_result.h"

#include <new>

#include "corvane/error.h"

namespace corvane::upload {

std::string UploadResultText(UploadCode code, const std::string& itemName, const std::string& fileName) {
  switch (code) {
    case UploadCode::kOk: return "OK";
    case UploadCode::kFileExists:
      return "对不起，目标文件在上载的目录中已经存在，如果需要覆盖，请将[overwrite]属性定义为[2]。"
             "(Sorry,the file which you want to upload has already exists.if you want to overwrite it "
             ",please define the property of [overwrite] to [2])";
    case UploadCode::kContentEmpty: return "警告：一文件的内容为空。(warning: Content of a file is empty.)";
    case UploadCode::kFileNameEmpty:
      return "对不起，[" + itemName + "]表单项中的文件名为空。(Sorry,item [" + itemName + "] is empty.)";
    case UploadCode::kTooLarge:
      return "对不起，文件名为[" + fileName + "] 的文件大小超出了范围。(Sorry ,the size of file [" +
             fileName + "] is beyond.)";
    case UploadCode::kTooManyItems:
      return "对不起，文件总数不得超过255(Sorry ,the count of the files must not be over 255.)";
    case UploadCode::kNoItems:
      return "对不起，您没有选择文件上传.(Sorry,you have not selected a file to upload.)";
    case UploadCode::kPathNotAbsolute:
      return "对不起，路径必须为绝对路径.(Sorry,the path must be a absolute path)";
  }
  return "OK";
}

std::string FailureText(const std::exception_ptr& failure) {
  std::string text;
  try {
    std::rethrow_exception(failure);
  } catch (const Error& e) {
    text = e.Description();
  } catch (const std::bad_alloc&) {
    text = "Out of memory";
  } catch (const std::exception& e) {
    text = e.what();
  } catch (...) {
  }
  // The platform's description of an error that has none of its own.
  return text.empty() ? "Application-defined or object-defined error" : text;
}

}  // namespace corvane::upload
