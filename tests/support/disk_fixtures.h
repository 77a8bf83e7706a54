// Real files in a temporary folder for the tests that read and write files, and the means to
// meet the situations users meet: a read-only file, a read-only disk, a full disk.
//
// The tests run as root, for whom permission bits stop nothing. Where a test needs them to
// count it lowers the file-system identity of the test thread to "nobody" (setfsuid) for a
// while; read-only and full disks are a read-only bind mount and a tiny tmpfs, mounted in a
// mount namespace private to the test process, so nothing outside sees them. Without the
// privileges for that the tests concerned are skipped and say why.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/fsuid.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace nebro::test {

inline constexpr uid_t kNobody = 65534;

class TempFolder {
 public:
  TempFolder() {
    char pattern[] = "/tmp/nebro-test-XXXXXX";
    const char* made = mkdtemp(pattern);
    if (made) path_ = made;
    chmod(path_.c_str(), 0777);  // "nobody" must be able to enter and, in some tests, write
  }
  ~TempFolder() {
    for (auto it = mounts_.rbegin(); it != mounts_.rend(); ++it) umount2(it->c_str(), MNT_DETACH);
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::string& Path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }

  // Remembers a mount point to take down before the folder is removed.
  void AddMount(const std::string& dir) { mounts_.push_back(dir); }

 private:
  std::string path_;
  std::vector<std::string> mounts_;
};

inline void WriteBytes(const std::string& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

inline std::string ReadBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Sets a file's access and modification times, without following a symbolic link.
inline bool SetFileTime(const std::string& path, int64_t nanosecondsSinceEpoch) {
  timespec times[2];
  times[0].tv_sec = times[1].tv_sec = nanosecondsSinceEpoch / 1'000'000'000;
  times[0].tv_nsec = times[1].tv_nsec = nanosecondsSinceEpoch % 1'000'000'000;
  return utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW) == 0;
}

#ifdef NEBRO_TEST_DATA  // tests only; the benchmarks share the folders but store nothing
// Compares with the stored expectation tests/data/<name>. On a mismatch (or a missing file) the
// actual bytes are left beside it as <name>.new for inspection.
inline void ExpectStored(std::string_view actual, const std::string& name) {
  const std::string path = std::string(NEBRO_TEST_DATA) + "/" + name;
  if (std::filesystem::exists(path) && ReadBytes(path) == actual) {
    std::filesystem::remove(path + ".new");
    return;
  }
  WriteBytes(path + ".new", std::string(actual));
  ADD_FAILURE() << "output differs from " << path << " (or it is missing); ours is in " << path << ".new";
}
#endif

inline std::vector<std::string> FolderNames(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename().string());
  }
  return names;
}

// True when `folder` holds exactly these names: no temporary file was left behind.
inline bool OnlyNames(const std::string& folder, std::vector<std::string> expected) {
  std::vector<std::string> names = FolderNames(folder);
  std::sort(names.begin(), names.end());
  std::sort(expected.begin(), expected.end());
  return names == expected;
}

// While alive, the calling thread reaches files as "nobody", so permission bits apply even when
// the tests run as root. Does nothing for a test run by an ordinary user.
// A folder that takes no new file (mode 0555) holding one file anybody may write, with
// `content`; returns that file's path.
inline std::string MakeClosedFolderWithWritableFile(const std::string& closed, const std::string& content) {
  mkdir(closed.c_str(), 0777);
  const std::string file = closed + "/writable.txt";
  WriteBytes(file, content);
  chmod(file.c_str(), 0666);
  chmod(closed.c_str(), 0555);
  return file;
}

class AsNobody {
 public:
  AsNobody() : active_(geteuid() == 0) {
    if (!active_) return;
    setfsgid(kNobody);
    setfsuid(kNobody);
  }
  ~AsNobody() {
    if (!active_) return;
    setfsuid(0);
    setfsgid(0);
  }
  AsNobody(const AsNobody&) = delete;
  AsNobody& operator=(const AsNobody&) = delete;

 private:
  bool active_;
};

// Gives the test process its own mount namespace (once) so that its mounts stay private.
inline bool PrivateMounts() {
  static const bool ok = [] {
    if (unshare(CLONE_NEWNS) != 0) return false;
    return mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
  }();
  return ok;
}

// A tmpfs of `bytes` at `dir` (created), or false when mounting is not allowed here.
inline bool MountSmallTmpfs(TempFolder& folder, const std::string& dir, size_t bytes) {
  if (!PrivateMounts()) return false;
  mkdir(dir.c_str(), 0777);
  const std::string options = "size=" + std::to_string(bytes) + ",mode=0777";
  if (mount("tmpfs", dir.c_str(), "tmpfs", 0, options.c_str()) != 0) return false;
  folder.AddMount(dir);
  return true;
}

// `source` (a folder) seen again, read-only, at `dir` (created).
inline bool MountReadOnlyView(TempFolder& folder, const std::string& source, const std::string& dir) {
  if (!PrivateMounts()) return false;
  mkdir(dir.c_str(), 0777);
  if (mount(source.c_str(), dir.c_str(), nullptr, MS_BIND, nullptr) != 0) return false;
  folder.AddMount(dir);
  return mount(nullptr, dir.c_str(), nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr) == 0;
}

// Runs `write` in a child process whose files cannot grow past `bytes`, so that a write stops
// part-way as on a full disk while the test runner keeps its own limit. Returns what `write`
// returned (0 to 255), or -1 when the child did not exit.
inline int WithFileSizeLimit(rlim_t bytes, const std::function<int()>& write) {
  const pid_t child = fork();
  if (child == 0) {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{bytes, bytes};
    setrlimit(RLIMIT_FSIZE, &limit);
    _exit(write());
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
  return WEXITSTATUS(status);
}

inline constexpr const char* kNoMountsReason =
    "cannot mount here (needs root and CAP_SYS_ADMIN for a private mount namespace)";

}  // namespace nebro::test
