// Writing a file so that a failure loses nothing: the bytes go to a new file
// beside the target (same folder, so the same file system) and that file
// takes the target's place only once every byte is written and on disk
// (rename on POSIX, MoveFileExA with REPLACE_EXISTING | WRITE_THROUGH on
// Windows). Until then the target is exactly as it was; after a failure the
// temporary file is removed.
//
// A target that is a symbolic link is written through the link, as opening
// it for writing would; an existing target's permission bits (and, where
// allowed, owner) carry over to the new file. A target that is a folder is
// refused before anything is written.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

namespace effects::platform {

class ReplacingFile {
 public:
  // Creates the temporary file beside `target`; ok() says whether that worked.
  explicit ReplacingFile(const char* target);
  // Removes the temporary file unless commit() put it in place.
  ~ReplacingFile();
  ReplacingFile(const ReplacingFile&) = delete;
  ReplacingFile& operator=(const ReplacingFile&) = delete;

  bool ok() const { return file_ != nullptr && !failed_; }

  // Appends bytes or formatted text; a failure is remembered and makes
  // commit() fail.
  void write(const void* bytes, size_t n);
  void print(const char* format, ...)
#if defined(__GNUC__)
      __attribute__((format(printf, 2, 3)))
#endif
      ;

  // Flushes, syncs and closes the temporary file and puts it in the target's
  // place. 0 when the target now holds everything written, else -1 (the
  // target as it was, the temporary file gone).
  int commit();

 private:
  void discard();

  std::string target_, temporary_;
  std::FILE* file_ = nullptr;
  bool failed_ = false;
};

}  // namespace effects::platform
