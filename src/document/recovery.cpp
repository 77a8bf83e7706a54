#include "document/recovery.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "common/safe_write.h"

namespace nebro::document {
namespace {

constexpr std::string_view kMagic = "NEBRO RECOVERY 1\n";
constexpr std::string_view kPrefix = "recovery_";
constexpr std::string_view kSuffix = ".txt";
constexpr std::string_view kBackupTag = "-old";

// The line after `key` up to its newline; false when the bytes do not continue with `key`.
bool ReadLine(std::string_view& bytes, std::string_view key, std::string& value) {
  if (bytes.substr(0, key.size()) != key) return false;
  const size_t nl = bytes.find('\n', key.size());
  if (nl == std::string_view::npos) return false;
  value = std::string(bytes.substr(key.size(), nl - key.size()));
  bytes.remove_prefix(nl + 1);
  return true;
}

}  // namespace

std::string RecoveryFileFor(const std::string& folder, pid_t pid) {
  return folder + "/" + std::string(kPrefix) + std::to_string(pid) + std::string(kSuffix);
}

std::string RecoveryBackupFileFor(const std::string& folder, pid_t pid, int turn) {
  return folder + "/" + std::string(kPrefix) + std::to_string(pid) + std::string(kBackupTag) +
         (turn > 1 ? std::to_string(turn) : std::string()) + std::string(kSuffix);
}

namespace {

std::string RecoveryHeader(const std::string& originalPath, int64_t writtenAt, size_t size) {
  std::string bytes(kMagic);
  // A path holds no newline here: one that does is left out rather than breaking the header.
  bytes += "path: " + (originalPath.find('\n') == std::string::npos ? originalPath : std::string()) + "\n";
  bytes += "time: " + std::to_string(writtenAt) + "\n";
  bytes += "size: " + std::to_string(size) + "\n\n";
  return bytes;
}

}  // namespace

std::string EncodeRecoveryCopy(const std::string& originalPath, int64_t writtenAt, std::string_view text) {
  return RecoveryHeader(originalPath, writtenAt, text.size()).append(text);
}

namespace {

// Reads a copy's header off the start of `bytes`, which are left at the text; `length` is the
// text's length that the header gives.
bool ReadHeader(std::string_view& bytes, RecoveryCopy& copy, uint64_t& length) {
  if (bytes.substr(0, kMagic.size()) != kMagic) return false;
  bytes.remove_prefix(kMagic.size());
  std::string time, size;
  if (!ReadLine(bytes, "path: ", copy.originalPath) || !ReadLine(bytes, "time: ", time) ||
      !ReadLine(bytes, "size: ", size) || bytes.substr(0, 1) != "\n") {
    return false;
  }
  bytes.remove_prefix(1);
  char* end = nullptr;
  errno = 0;
  copy.writtenAt = std::strtoll(time.c_str(), &end, 10);
  if (time.empty() || *end || errno) return false;
  length = std::strtoull(size.c_str(), &end, 10);
  return !size.empty() && !*end && !errno;
}

}  // namespace

bool DecodeRecoveryCopy(std::string_view bytes, RecoveryCopy& copy) {
  uint64_t length = 0;
  // A copy cut short by a full disk is not offered as if it were the whole text.
  if (!ReadHeader(bytes, copy, length) || length != bytes.size()) return false;
  copy.text = std::string(bytes);
  return true;
}

bool WriteRecoveryCopy(const std::string& file, const std::string& originalPath, int64_t writtenAt,
                       std::string_view text) {
  const std::string header = RecoveryHeader(originalPath, writtenAt, text.size());
  const std::string_view pieces[] = {header, text};
  return SafeWriteFile(file, pieces).Ok();
}

bool WriteRecoveryBackup(const std::string& file, const std::string& originalPath, int64_t writtenAt, int fd,
                         uint64_t size) {
  SafeFileWriter out;
  if (!out.Open(file).Ok() || !out.Write(RecoveryHeader(originalPath, writtenAt, static_cast<size_t>(size)))) return false;
  std::string buffer(1u << 20, '\0');
  uint64_t done = 0;
  while (done < size) {
    const ssize_t got = pread(fd, buffer.data(), static_cast<size_t>(std::min<uint64_t>(buffer.size(), size - done)),
                              static_cast<off_t>(done));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0 || !out.Write(std::string_view(buffer.data(), static_cast<size_t>(got)))) return false;
    done += static_cast<uint64_t>(got);
  }
  return out.Commit().Ok();
}

bool RestoreRecoveryBackup(const std::string& file, int fd) {
  const int in = open(file.c_str(), O_RDONLY | O_CLOEXEC);
  if (in < 0) return false;
  std::string buffer(1u << 20, '\0');  // first the header: a few short lines and a path
  const ssize_t got = pread(in, buffer.data(), buffer.size(), 0);
  std::string_view rest(buffer.data(), got > 0 ? static_cast<size_t>(got) : 0);
  RecoveryCopy copy;
  uint64_t length = 0;
  struct stat st {};
  bool ok = ReadHeader(rest, copy, length) && fstat(in, &st) == 0;
  const uint64_t start = static_cast<uint64_t>(rest.data() - buffer.data());
  ok = ok && static_cast<uint64_t>(st.st_size) == start + length;
  for (uint64_t done = 0; ok && done < length;) {
    const ssize_t n = pread(in, buffer.data(), static_cast<size_t>(std::min<uint64_t>(buffer.size(), length - done)),
                            static_cast<off_t>(start + done));
    if (n < 0 && errno == EINTR) continue;
    ok = n > 0;
    for (ssize_t put = 0; ok && put < n;) {
      const ssize_t m = pwrite(fd, buffer.data() + put, static_cast<size_t>(n - put), static_cast<off_t>(done) + put);
      if (m < 0 && errno == EINTR) continue;
      ok = m > 0;
      put += ok ? m : 0;
    }
    done += ok ? static_cast<uint64_t>(n) : 0;
  }
  close(in);
  return ok && ftruncate(fd, static_cast<off_t>(length)) == 0 && fsync(fd) == 0;
}

bool EditorProcessRunning(pid_t pid) {
  if (pid <= 0) return false;
  if (kill(pid, 0) != 0 && errno == ESRCH) return false;
  // The number may have gone to another program since: only an editor counts.
  char link[64];
  std::snprintf(link, sizeof link, "/proc/%d/exe", static_cast<int>(pid));
  char target[4096];
  const ssize_t n = readlink(link, target, sizeof target - 1);
  if (n <= 0) return true;  // not ours to read: assume it is running rather than take its copy
  std::string exe(target, static_cast<size_t>(n));
  const size_t deleted = exe.rfind(" (deleted)");
  if (deleted != std::string::npos && deleted + 10 == exe.size()) exe.erase(deleted);
  const std::string base = exe.substr(exe.rfind('/') + 1);
  return base == "nebro";
}

std::vector<RecoveryCopy> FindOrphanedRecoveryCopies(const std::string& folder) {
  std::vector<RecoveryCopy> found;
  DIR* dir = opendir(folder.c_str());
  if (!dir) return found;
  while (const dirent* entry = readdir(dir)) {
    const std::string_view name = entry->d_name;
    if (name.size() <= kPrefix.size() + kSuffix.size() || name.substr(0, kPrefix.size()) != kPrefix ||
        name.substr(name.size() - kSuffix.size()) != kSuffix) {
      continue;
    }
    std::string number(name.substr(kPrefix.size(), name.size() - kPrefix.size() - kSuffix.size()));
    // "<pid>-old" or "<pid>-old<turn>" for a file's old content.
    const size_t tag = number.rfind(kBackupTag);
    const bool backup = tag != std::string::npos && tag > 0 &&
                        number.find_first_not_of("0123456789", tag + kBackupTag.size()) == std::string::npos;
    if (backup) number.resize(tag);
    char* end = nullptr;
    const long pid = std::strtol(number.c_str(), &end, 10);
    if (number.empty() || *end || pid <= 0 || EditorProcessRunning(static_cast<pid_t>(pid))) continue;
    RecoveryCopy copy;
    copy.beforeSave = backup;
    copy.file = folder + "/" + std::string(name);
    copy.pid = static_cast<pid_t>(pid);
    std::ifstream in(copy.file, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (DecodeRecoveryCopy(bytes, copy)) found.push_back(std::move(copy));
  }
  closedir(dir);
  std::sort(found.begin(), found.end(), [](const RecoveryCopy& a, const RecoveryCopy& b) { return a.writtenAt < b.writtenAt; });
  return found;
}

}  // namespace nebro::document
