#include "upload/file_store.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "corvane/drive_path.h"
#include "corvane/error.h"

namespace corvane::upload {

namespace {

// Closes the descriptor on every way out.
class FileHandle {
 public:
  explicit FileHandle(int fd) : fd_(fd) {}
  ~FileHandle() {
    if (fd_ >= 0) ::close(fd_);
  }
  FileHandle(const FileHandle&) = delete;
  FileHandle& operator=(const FileHandle&) = delete;
  int get() const { return fd_; }
  int Release() {
    int fd = fd_;
    fd_ = -1;
    return fd;
  }

 private:
  int fd_;
};

Error OpenFailure(int err) {
  switch (err) {
    case ENOENT:
    case ENOTDIR: return Error::PathNotFound();
    case ENAMETOOLONG: return Error::BadFileName();
    case ENOSPC:
    case EDQUOT:
    case EFBIG: return Error::DiskFull();  // past the process's file size limit: no room, as on a full disk
    default: return Error::PathFileAccess();
  }
}

// Opens `localPath` for writing, creating it when it is missing; `created` tells which happened, so
// that a failed write can take back a file that it made.
int OpenForWrite(const std::string& localPath, bool& created) {
  for (;;) {
    int fd = ::open(localPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd >= 0 || errno != EEXIST) {
      created = fd >= 0;
      return fd;
    }
    fd = ::open(localPath.c_str(), O_WRONLY | O_CLOEXEC);
    if (fd >= 0 || errno != ENOENT) {  // ENOENT: removed in between, so create it after all
      created = false;
      return fd;
    }
  }
}

}  // namespace

bool LocalFileExists(const std::string& localPath) {
  if (localPath.find('\0') != std::string::npos) return false;
  struct stat st {};
  return ::stat(localPath.c_str(), &st) == 0 && !S_ISDIR(st.st_mode);
}

void WriteFileFromStart(const std::string& localPath, std::string_view data) {
  if (localPath.find('\0') != std::string::npos) throw Error::BadFileName();
  bool created = false;
  FileHandle file(OpenForWrite(localPath, created));
  if (file.get() < 0) throw OpenFailure(errno);
  // A write that fails (a full disk, the file size limit) raises; a file that this write created is
  // removed first, so that no partial file is left that looks like a stored upload.
  auto fail = [&](int err) {
    ::close(file.Release());
    if (created) ::unlink(localPath.c_str());
    return OpenFailure(err == ENOENT ? EIO : err);
  };
  size_t done = 0;
  while (done < data.size()) {
    ssize_t n = ::pwrite(file.get(), data.data() + done, data.size() - done, static_cast<off_t>(done));
    if (n < 0) {
      if (errno == EINTR) continue;
      throw fail(errno);
    }
    done += static_cast<size_t>(n);
  }
  if (::close(file.get()) != 0 && errno != EINTR) {
    const int err = errno;
    file.Release();
    if (created) ::unlink(localPath.c_str());
    throw OpenFailure(err == ENOENT ? EIO : err);
  }
  file.Release();
}

bool SaveFile(std::string& folder, std::string fileName, std::string_view data, int32_t overWrite,
              const std::string& newFileName, WriteLog* log) {
  if (!newFileName.empty()) fileName = newFileName;
  if (folder.empty() || folder.back() != '\\') folder += '\\';
  const std::string local = MapDrivePath(folder + fileName);
  if (overWrite == 2 || !LocalFileExists(local)) {
    if (log) {
      auto it = log->last.find(local);
      if (it != log->last.end() && it->second.data() == data.data() && it->second.size() == data.size() &&
          LocalFileExists(local))
        return true;
    }
    WriteFileFromStart(local, data);
    if (log) log->last[local] = data;
    return true;
  }
  return false;
}

}  // namespace corvane::upload
