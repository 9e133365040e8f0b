// The file writers lose nothing: every failure leaves an existing file as it
// was and no temporary file beside it, and returns -1. The failures are
// forced for real: a file-size limit and an unwritable folder in a child
// process (POSIX), a target that is a folder, a folder that does not exist.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "effects/effects.h"
#include "hdr/hdr_files.h"
#include "support/pictures.h"

#if !defined(_WIN32)
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

using namespace effects::test;
namespace fs = std::filesystem;

namespace {

constexpr int32_t kSide = 64;  // files of about 16 to 64 KiB

// Each writer on a kSide x kSide picture.
struct Writer {
  const char* name;
  std::function<int32_t(const char*)> write;
};

std::vector<Writer> writers() {
  static const auto p32 = pattern<Pixel32>(kSide * kSide);
  static const auto p64 = pattern<Pixel64>(kSide * kSide);
  static const auto p128 = pattern<Pixel128>(kSide * kSide);
  static std::vector<float> scratch(kSide * kSide * 3);
  return {
      {"RGBE_WriteHeader_32", [](const char* f) { return RGBE_WriteHeader_32(f, kSide, kSide, p32.data(), scratch.data()); }},
      {"RGBE_WriteHeader_64", [](const char* f) { return RGBE_WriteHeader_64(f, kSide, kSide, p64.data(), scratch.data()); }},
      {"RGBE_WriteHeader_128", [](const char* f) { return RGBE_WriteHeader_128(f, kSide, kSide, p128.data(), scratch.data()); }},
      {"VexoSaveVXLFile32", [](const char* f) { return VexoSaveVXLFile32(f, kSide, kSide, 1, 2, p32.data()); }},
      {"VexoSaveVXLFile64", [](const char* f) { return VexoSaveVXLFile64(f, kSide, kSide, 1, 2, p64.data()); }},
      {"VexoSaveVXLFile128", [](const char* f) { return VexoSaveVXLFile128(f, kSide, kSide, 1, 2, p128.data()); }},
  };
}

// A folder of its own per test, so that a temporary file left behind shows.
class WriteFolder {
 public:
  explicit WriteFolder(const std::string& name) : path_(scratchPath("writes_" + name)) {
    fs::remove_all(path_);
    fs::create_directories(path_);
  }
  ~WriteFolder() {
    std::error_code ec;
    fs::permissions(path_, fs::perms::owner_all, fs::perm_options::add, ec);
    fs::remove_all(path_, ec);
  }
  std::string file(const std::string& name) const { return (fs::path(path_) / name).string(); }
  std::vector<std::string> contents() const {
    std::vector<std::string> names;
    for (const auto& e : fs::directory_iterator(path_)) names.push_back(e.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

void putFile(const std::string& path, const std::string& text) {
  std::FILE* f = std::fopen(path.c_str(), "wb");
  ASSERT_NE(f, nullptr) << path;
  std::fwrite(text.data(), 1, text.size(), f);
  std::fclose(f);
}

const std::string kOld = "the picture the user saved yesterday\n";

TEST(FileWrites, ReplaceAnExistingFileWholeAndLeaveNothingElse) {
  for (const Writer& w : writers()) {
    SCOPED_TRACE(w.name);
    WriteFolder folder("replace");
    const std::string target = folder.file("picture");
    ASSERT_EQ(w.write(target.c_str()), 0);
    const auto fresh = fileBytes(target);
    putFile(target, kOld);
    EXPECT_EQ(w.write(target.c_str()), 0);
    EXPECT_EQ(fileBytes(target), fresh);
    EXPECT_EQ(folder.contents(), std::vector<std::string>{"picture"});
  }
}

TEST(FileWrites, TargetsThatCannotBeWrittenFailAndTouchNothing) {
  for (const Writer& w : writers()) {
    SCOPED_TRACE(w.name);
    WriteFolder folder("unwritable");
    fs::create_directory(folder.file("folder"));
    putFile(folder.file("folder/inside"), kOld);
    // A folder in the target's place, a folder that is not there, a name
    // that ends in a separator.
    EXPECT_EQ(w.write(folder.file("folder").c_str()), -1);
    EXPECT_EQ(w.write(folder.file("nowhere/picture").c_str()), -1);
    EXPECT_EQ(w.write((folder.file("folder") + "/").c_str()), -1);
    EXPECT_EQ(w.write(""), -1);
    EXPECT_TRUE(fs::is_directory(folder.file("folder")));
    EXPECT_EQ(fileBytes(folder.file("folder/inside")), bytesOf(kOld));
    EXPECT_EQ(folder.contents(), std::vector<std::string>{"folder"});
  }
}

#if !defined(_WIN32)

// Runs `f` in a child process and gives its result (as a signed byte), or
// -128 when the child did not end normally.
int inChild(const std::function<int()>& f) {
  std::fflush(nullptr);
  const pid_t pid = fork();
  if (pid == 0) _exit(static_cast<uint8_t>(f()));
  int status = 0;
  waitpid(pid, &status, 0);
  return WIFEXITED(status) ? static_cast<int8_t>(WEXITSTATUS(status)) : -128;
}

TEST(FileWrites, AFileSizeLimitMidwayKeepsTheOldFile) {
  for (const Writer& w : writers()) {
    SCOPED_TRACE(w.name);
    WriteFolder folder("limit");
    const std::string target = folder.file("picture");
    putFile(target, kOld);
    const int result = inChild([&] {
      std::signal(SIGXFSZ, SIG_IGN);  // the write then fails with EFBIG
      const rlimit limit{4096, 4096};
      setrlimit(RLIMIT_FSIZE, &limit);
      return w.write(target.c_str());
    });
    EXPECT_EQ(result, -1);
    EXPECT_EQ(fileBytes(target), bytesOf(kOld));
    EXPECT_EQ(folder.contents(), std::vector<std::string>{"picture"});
  }
}

TEST(FileWrites, AReadOnlyFolderKeepsTheOldFile) {
  for (const Writer& w : writers()) {
    SCOPED_TRACE(w.name);
    WriteFolder folder("readonly");
    const std::string target = folder.file("picture");
    putFile(target, kOld);
    chmod(folder.path().c_str(), 0555);
    const int result = inChild([&] {
      // The superuser writes anywhere: become nobody first.
      if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) return 99;
      return w.write(target.c_str());
    });
    chmod(folder.path().c_str(), 0755);
    EXPECT_EQ(result, -1);
    EXPECT_EQ(fileBytes(target), bytesOf(kOld));
    EXPECT_EQ(folder.contents(), std::vector<std::string>{"picture"});
  }
}

// Opening a file for writing keeps its permissions and writes through a
// symbolic link; the replacement does the same.
TEST(FileWrites, PermissionsAndSymbolicLinksAreKept) {
  const Writer w = writers()[0];
  WriteFolder folder("links");
  const std::string target = folder.file("picture");
  putFile(target, kOld);
  chmod(target.c_str(), 0640);
  fs::create_symlink("picture", folder.file("link"));
  ASSERT_EQ(w.write(folder.file("link").c_str()), 0);
  EXPECT_TRUE(fs::is_symlink(folder.file("link")));
  EXPECT_NE(fileBytes(target), bytesOf(kOld));
  struct stat st;
  ASSERT_EQ(stat(target.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 07777, 0640u);
  EXPECT_EQ(folder.contents(), (std::vector<std::string>{"link", "picture"}));
}

#endif

}  // namespace
