#include "platform/replacing_file.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdarg>
#include <cstdlib>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <sys/stat.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace effects::platform {
namespace {

std::atomic<unsigned> temporaries{0};

bool isSeparator(char c) {
#if defined(_WIN32)
  if (c == '\\') return true;
#endif
  return c == '/';
}

#if defined(_WIN32)

bool isFolder(const std::string& path) {
  const DWORD attributes = GetFileAttributesA(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}
std::string finalPath(const char* target) { return target; }
int processId() { return _getpid(); }
int createNew(const std::string& path, const std::string&) {
  return _open(path.c_str(), _O_WRONLY | _O_CREAT | _O_EXCL | _O_BINARY, _S_IREAD | _S_IWRITE);
}
bool alreadyThere() { return errno == EEXIST; }
std::FILE* streamOf(int fd) { return _fdopen(fd, "wb"); }
bool syncToDisk(std::FILE* f) { return _commit(_fileno(f)) == 0; }
bool replace(const std::string& from, const std::string& to) {
  return MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
}

#else

bool isFolder(const std::string& path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}
// Writing through a symbolic link changes the file it names; so does this.
std::string finalPath(const char* target) {
  struct stat st;
  if (lstat(target, &st) == 0 && S_ISLNK(st.st_mode)) {
    if (char* real = realpath(target, nullptr)) {
      std::string path(real);
      std::free(real);
      return path;
    }
  }
  return target;
}
int processId() { return static_cast<int>(getpid()); }
// The new file gets what opening the target for writing would have given it:
// the existing file's permission bits and owner, or the default mode.
int createNew(const std::string& path, const std::string& target) {
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  struct stat st;
  if (fd >= 0 && stat(target.c_str(), &st) == 0 && S_ISREG(st.st_mode)) {
    (void)!fchown(fd, st.st_uid, st.st_gid);
    (void)!fchmod(fd, st.st_mode & 07777);
  }
  return fd;
}
bool alreadyThere() { return errno == EEXIST; }
std::FILE* streamOf(int fd) { return fdopen(fd, "wb"); }
bool syncToDisk(std::FILE* f) { return fsync(fileno(f)) == 0; }
bool replace(const std::string& from, const std::string& to) { return std::rename(from.c_str(), to.c_str()) == 0; }

#endif

}  // namespace

ReplacingFile::ReplacingFile(const char* target) {
  if (target == nullptr || *target == '\0') return;
  target_ = finalPath(target);
  if (isSeparator(target_.back()) || isFolder(target_)) return;
  int fd = -1;
  for (int attempt = 0; attempt < 100 && fd < 0; ++attempt) {
    // snprintf rather than std::to_string: the latter's template helpers
    // would be exported from the shared library beside the API.
    char suffix[48];
    std::snprintf(suffix, sizeof suffix, ".%d-%u.tmp", processId(), temporaries++);
    temporary_ = target_ + suffix;
    fd = createNew(temporary_, target_);
    if (fd < 0 && !alreadyThere()) break;
  }
  if (fd < 0) {
    temporary_.clear();
    return;
  }
  file_ = streamOf(fd);
  if (file_ == nullptr) {
#if defined(_WIN32)
    _close(fd);
#else
    close(fd);
#endif
    discard();
  }
}

ReplacingFile::~ReplacingFile() { discard(); }

void ReplacingFile::discard() {
  if (file_ != nullptr) std::fclose(file_);
  file_ = nullptr;
  if (!temporary_.empty()) std::remove(temporary_.c_str());
  temporary_.clear();
}

void ReplacingFile::write(const void* bytes, size_t n) {
  if (!ok() || n == 0) return;
  if (std::fwrite(bytes, 1, n, file_) != n) failed_ = true;
}

void ReplacingFile::print(const char* format, ...) {
  if (!ok()) return;
  va_list args;
  va_start(args, format);
  if (std::vfprintf(file_, format, args) < 0) failed_ = true;
  va_end(args);
}

int ReplacingFile::commit() {
  if (file_ == nullptr) return -1;
  bool good = !failed_ && std::fflush(file_) == 0 && std::ferror(file_) == 0 && syncToDisk(file_);
  if (std::fclose(file_) != 0) good = false;
  file_ = nullptr;
  if (!good || !replace(temporary_, target_)) {
    discard();
    return -1;
  }
  temporary_.clear();
  return 0;
}

}  // namespace effects::platform
