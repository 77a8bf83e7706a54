#include "common/safe_write.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/random.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <memory>

namespace nebro {

struct SafeFileWriter::Content {
  std::span<const std::string_view> pieces;  // the whole content, known up front
  int fd = -1;                               // or: the first `size` bytes of this file
  uint64_t size = 0;

  uint64_t Size() const {
    if (fd >= 0) return size;
    uint64_t total = 0;
    for (std::string_view piece : pieces) total += piece.size();
    return total;
  }
};

namespace {

// write() moves at most about 2 GiB per call on Linux; larger pieces take several calls.
constexpr size_t kMaxWrite = size_t{1} << 30;

int OpenRetrying(const char* path, int flags, mode_t mode = 0) {
  int fd;
  do {
    fd = open(path, flags | O_CLOEXEC | O_NOCTTY, mode);
  } while (fd < 0 && errno == EINTR);
  return fd;
}

bool WriteAll(int fd, std::string_view bytes, int& error) {
  const char* data = bytes.data();
  size_t length = bytes.size();
  while (length > 0) {
    const ssize_t n = write(fd, data, std::min(length, kMaxWrite));
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      error = n < 0 ? errno : EIO;  // a write that takes nothing would otherwise spin forever
      return false;
    }
    data += n;
    length -= static_cast<size_t>(n);
  }
  return true;
}

bool WriteAllAt(int fd, std::string_view bytes, off_t offset, int& error) {
  const char* data = bytes.data();
  size_t length = bytes.size();
  while (length > 0) {
    const ssize_t n = pwrite(fd, data, std::min(length, kMaxWrite), offset);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      error = n < 0 ? errno : EIO;
      return false;
    }
    data += n;
    offset += n;
    length -= static_cast<size_t>(n);
  }
  return true;
}

// Copies the first `size` bytes of `from` to the start of `to`.
bool CopyAt(int from, int to, uint64_t size, int& error) {
  constexpr size_t kChunk = size_t{1} << 20;
  const std::unique_ptr<char[]> buffer(new char[kChunk]);
  for (uint64_t done = 0; done < size;) {
    const ssize_t n = pread(from, buffer.get(), std::min<uint64_t>(kChunk, size - done),
                            static_cast<off_t>(done));
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      error = n < 0 ? errno : EIO;  // the staged bytes ended early
      return false;
    }
    if (!WriteAllAt(to, {buffer.get(), static_cast<size_t>(n)}, static_cast<off_t>(done), error)) {
      return false;
    }
    done += static_cast<uint64_t>(n);
  }
  return true;
}

bool IsNoSpace(int e) { return e == ENOSPC || e == EDQUOT || e == EFBIG; }

std::string FolderOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  if (slash == 0) return "/";
  return path.substr(0, slash);
}

std::string NameOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

// Follows symbolic links (up to 40, as the kernel does) to the name that really holds the file;
// a dangling link gives its target. False, with errno set, for a loop or an unreadable link.
bool FollowLinks(const std::string& path, std::string& target) {
  target = path;
  for (int hops = 0; hops <= 40; ++hops) {
    struct stat st {};
    if (lstat(target.c_str(), &st) != 0 || !S_ISLNK(st.st_mode)) return true;
    std::string link(static_cast<size_t>(st.st_size > 0 ? st.st_size : 255) + 1, '\0');
    const ssize_t n = readlink(target.c_str(), link.data(), link.size());
    if (n < 0) return false;
    if (static_cast<size_t>(n) >= link.size()) {  // grew since lstat: try again, bigger
      link.resize(4096);
      const ssize_t m = readlink(target.c_str(), link.data(), link.size());
      if (m < 0 || static_cast<size_t>(m) >= link.size()) return false;
      link.resize(static_cast<size_t>(m));
    } else {
      link.resize(static_cast<size_t>(n));
    }
    if (!link.empty() && link[0] == '/') {
      target = link;
    } else {
      const std::string folder = FolderOf(target);
      target = (folder == "/" ? "" : folder) + "/" + link;
    }
  }
  errno = ELOOP;
  return false;
}

// A fresh hidden name beside the file: ".<name>.nebro-<16 hex digits>", at most 255 bytes.
std::string TemporaryName(const std::string& folder, const std::string& name) {
  uint64_t random = 0;
  if (getrandom(&random, sizeof random, GRND_NONBLOCK) != static_cast<ssize_t>(sizeof random)) {
    timespec now {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    random = (static_cast<uint64_t>(now.tv_nsec) << 20) ^ static_cast<uint64_t>(getpid()) ^
             static_cast<uint64_t>(now.tv_sec);
  }
  char suffix[32];
  std::snprintf(suffix, sizeof suffix, ".nebro-%016llx", static_cast<unsigned long long>(random));
  const std::string base = name.substr(0, 200);
  return (folder == "/" ? "" : folder) + "/." + base + suffix;
}

// Temporary files of earlier writes of the same target that a crash or a kill left behind: no
// writer holds their lock any more (a writer keeps one on its file for as long as it writes)
// and they have not changed for a minute.
void RemoveStaleTemporaries(const std::string& folder, const std::string& name) {
  const std::string prefix = "." + name.substr(0, 200) + ".nebro-";
  DIR* dir = opendir(folder.c_str());
  if (!dir) return;
  const time_t now = time(nullptr);
  while (const dirent* entry = readdir(dir)) {
    const std::string_view candidate = entry->d_name;
    if (candidate.size() != prefix.size() + 16 || candidate.substr(0, prefix.size()) != prefix) continue;
    const std::string path = (folder == "/" ? "" : folder) + "/" + std::string(candidate);
    const int fd = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) continue;
    struct stat st {};
    struct flock probe = {};
    probe.l_type = F_WRLCK;
    if (fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && now - st.st_mtime > 60 &&
        fcntl(fd, F_OFD_GETLK, &probe) == 0 && probe.l_type == F_UNLCK) {
      unlink(path.c_str());
    }
    close(fd);
  }
  closedir(dir);
}

void SyncFolder(const std::string& folder) {
  const int fd = OpenRetrying(folder.c_str(), O_RDONLY | O_DIRECTORY);
  if (fd < 0) return;
  fsync(fd);  // the rename is done; a folder entry that fails to persist is not worth a failure
  close(fd);
}

}  // namespace

SafeFileWriter::~SafeFileWriter() { Abandon(); }

void SafeFileWriter::Fail(SafeWriteFailure failure, int errnoValue) {
  result_.failure = failure;
  result_.errnoValue = errnoValue;
}

void SafeFileWriter::RemoveNewFile() {
  if (fd_ >= 0) close(fd_);
  fd_ = -1;
  if (!temp_.empty()) unlink(temp_.c_str());
  temp_.clear();
}

void SafeFileWriter::Abandon() {
  RemoveNewFile();
  mode_ = Mode::Closed;
}

void SafeFileWriter::Start(const std::string& path, const SafeWriteOptions& options,
                           const Content* known) {
  Abandon();
  options_ = options;
  result_ = SafeWriteResult();
  written_ = 0;
  exists_ = false;
  preferInPlace_ = false;
  noTemporaryErrno_ = 0;
  if (path.empty()) return Fail(SafeWriteFailure::NoFileName, ENOENT);
  // Asked of the path itself, since /dev/stdout and its kind are links into /proc whose text
  // ("pipe:[123]") names no file.
  if (options_.writeDevicesDirectly && stat(path.c_str(), &old_) == 0 &&
      (S_ISCHR(old_.st_mode) || S_ISFIFO(old_.st_mode))) {
    result_.target = path;
    if (faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) {
      return Fail(SafeWriteFailure::TargetReadOnly, errno);
    }
    fd_ = OpenRetrying(path.c_str(), O_WRONLY);
    if (fd_ < 0) return Fail(SafeWriteFailure::OpenInPlace, errno);
    mode_ = Mode::Device;
    result_.inPlace = true;
    return;
  }
  if (!FollowLinks(path, result_.target)) return Fail(SafeWriteFailure::FollowLink, errno);
  const char* target = result_.target.c_str();

  if (stat(target, &old_) == 0) {
    exists_ = true;
    if (!S_ISREG(old_.st_mode)) return Fail(SafeWriteFailure::NotRegularFile, 0);
  } else if (errno != ENOENT) {
    return Fail(SafeWriteFailure::CheckTarget, errno);
  }

  if (exists_) {
    // A read-only file stays untouched even where its folder would let a rename replace it.
    // Asked without opening it for writing, which programs watching the file take for a change.
    if (faccessat(AT_FDCWD, target, W_OK, AT_EACCESS) != 0) {
      return Fail(SafeWriteFailure::TargetReadOnly, errno);
    }
    if (options_.refuse && options_.refuse(result_.target, old_)) {
      return Fail(SafeWriteFailure::RefusedByCaller, 0);
    }
    // Replacing a file that has other names would leave them with the old content.
    if (old_.st_nlink > 1) {
      if (known && RewriteInPlace(*known)) {
        mode_ = Mode::Done;
        return;
      }
      preferInPlace_ = !known;
    }
  }
  OpenBeside(known);
}

bool SafeFileWriter::OpenBeside(const Content* known) {
  const std::string folder = FolderOf(result_.target);
  RemoveStaleTemporaries(folder, NameOf(result_.target));
  std::string temp;
  for (int attempt = 0; attempt < 100; ++attempt) {
    temp = TemporaryName(folder, NameOf(result_.target));
    // A new file gets the usual 0666 less the umask; an existing one gets its own bits below.
    fd_ = OpenRetrying(temp.c_str(), O_RDWR | O_CREAT | O_EXCL, exists_ ? 0600 : 0666);
    if (fd_ >= 0 || errno != EEXIST) break;
  }
  if (fd_ < 0) {
    const int e = errno;
    // A folder we may not write can still hold a file we may.
    if (exists_ && (e == EACCES || e == EPERM)) {
      if (known) {
        if (RewriteInPlace(*known)) {
          mode_ = Mode::Done;
          return true;
        }
      } else if ((fd_ = memfd_create("nebro-staged", MFD_CLOEXEC)) >= 0) {
        mode_ = Mode::Staged;
        noTemporaryErrno_ = e;
        return true;
      }
    }
    Fail(SafeWriteFailure::CreateTemporary, e);
    return false;
  }
  temp_ = temp;
  mode_ = Mode::Beside;
  // Held while the file is written, so a later write of the same target can tell a file still in
  // use from one that a crash left behind.
  struct flock busy = {};
  busy.l_type = F_WRLCK;
  fcntl(fd_, F_OFD_SETLK, &busy);
  if (!exists_) return true;

  struct stat mine {};
  fstat(fd_, &mine);
  if ((mine.st_uid != old_.st_uid || mine.st_gid != old_.st_gid) &&
      fchown(fd_, old_.st_uid, old_.st_gid) != 0) {
    // Renaming would hand the file to us: rewrite it in place where that is safe, keeping its
    // owner; else carry on and the file changes hands.
    if (known && RewriteInPlace(*known)) {
      RemoveNewFile();
      mode_ = Mode::Done;
      return true;
    }
    preferInPlace_ = !known;
  }
  if (fchmod(fd_, old_.st_mode & 07777) != 0) {
    const int e = errno;
    Abandon();
    Fail(SafeWriteFailure::KeepPermissions, e);
    return false;
  }
  return true;
}

// Rewrites the existing target through a descriptor of its own. Space for the new content is
// reserved first, so that a full disk refuses before any old byte changes. Returns false, having
// changed nothing, when the file system cannot reserve space; else the outcome is in result_.
bool SafeFileWriter::RewriteInPlace(const Content& content) {
  const int fd = OpenRetrying(result_.target.c_str(), O_RDWR);
  if (fd < 0) {
    Fail(SafeWriteFailure::OpenInPlace, errno);
    return true;
  }
  const uint64_t total = content.Size();
  auto failed = [&](SafeWriteFailure failure, int e) {
    close(fd);
    Fail(failure, e);
    return true;
  };
  if (total > 0 && fallocate(fd, FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(total)) != 0) {
    const int e = errno;
    if (!IsNoSpace(e)) {
      close(fd);
      return false;
    }
    return failed(SafeWriteFailure::ReserveSpace, e);
  }
  if (options_.backupBeforeInPlace) {
    const int old = OpenRetrying(result_.target.c_str(), O_RDONLY);
    struct stat st {};
    const bool kept = old >= 0 && fstat(old, &st) == 0 &&
                      options_.backupBeforeInPlace(old, static_cast<uint64_t>(st.st_size));
    const int keptErrno = errno;
    if (old >= 0) close(old);
    if (!kept) return failed(SafeWriteFailure::BackupOld, keptErrno);
  }
  auto rewriteFailed = [&](SafeWriteFailure failure, int e) {
    if (options_.afterInPlace) options_.afterInPlace(fd, false);
    return failed(failure, e);
  };
  int e = 0;
  if (content.fd >= 0) {
    if (!CopyAt(content.fd, fd, total, e)) return rewriteFailed(SafeWriteFailure::Write, e);
  } else {
    off_t at = 0;
    for (std::string_view piece : content.pieces) {
      if (!WriteAllAt(fd, piece, at, e)) return rewriteFailed(SafeWriteFailure::Write, e);
      at += static_cast<off_t>(piece.size());
    }
  }
  if (ftruncate(fd, static_cast<off_t>(total)) != 0 || fsync(fd) != 0) {
    return rewriteFailed(SafeWriteFailure::Flush, errno);
  }
  if (options_.afterInPlace) options_.afterInPlace(fd, true);
  Fail(SafeWriteFailure::None, 0);
  result_.inPlace = true;
  if (options_.onFlushed) options_.onFlushed(fd);
  if (options_.keepOpen) {
    result_.fd = fd;
  } else {
    close(fd);
  }
  return true;
}

SafeWriteResult SafeFileWriter::Open(const std::string& path, const SafeWriteOptions& options) {
  Start(path, options, nullptr);
  return result_;
}

bool SafeFileWriter::Write(std::string_view bytes) {
  if (mode_ == Mode::Done) return true;
  if (fd_ < 0 || !result_.Ok()) return false;
  int e = 0;
  if (!WriteAll(fd_, bytes, e)) {
    Fail(SafeWriteFailure::Write, e);
    return false;
  }
  written_ += bytes.size();
  return true;
}

SafeWriteResult SafeFileWriter::Commit() { return Finish(nullptr); }

SafeWriteResult SafeFileWriter::Finish(const Content* known) {
  const Mode mode = mode_;
  mode_ = Mode::Closed;
  if (mode == Mode::Closed) {
    if (result_.Ok()) Fail(SafeWriteFailure::NoFileName, ENOENT);  // never opened
    return result_;
  }
  if (mode == Mode::Done) return result_;
  if (!result_.Ok()) {  // a write failed
    RemoveNewFile();
    return result_;
  }
  if (mode == Mode::Device) {
    const bool closed = close(fd_) == 0;
    fd_ = -1;
    if (!closed) Fail(SafeWriteFailure::Flush, errno);
    return result_;
  }
  if (mode == Mode::Staged) {
    if (!RewriteInPlace(Content{{}, fd_, written_})) {
      Fail(SafeWriteFailure::CreateTemporary, noTemporaryErrno_);
    }
    RemoveNewFile();
    return result_;
  }

  const Content beside{{}, fd_, written_};
  const Content& content = known ? *known : beside;
  // The new file is only the source of an in-place rewrite: no need to flush it first.
  if (preferInPlace_ && RewriteInPlace(content)) {
    RemoveNewFile();
    return result_;
  }
  if (fsync(fd_) != 0) {
    Fail(SafeWriteFailure::Flush, errno);
    RemoveNewFile();
    return result_;
  }
  if (options_.onFlushed) options_.onFlushed(fd_);
  if (rename(temp_.c_str(), result_.target.c_str()) != 0) {
    const int e = errno;
    // A file mounted over another (a bind-mounted file) cannot be replaced, only rewritten.
    if (!(e == EBUSY && exists_ && RewriteInPlace(content))) Fail(SafeWriteFailure::Rename, e);
    RemoveNewFile();
    return result_;
  }
  temp_.clear();
  SyncFolder(FolderOf(result_.target));
  if (options_.keepOpen) {
    result_.fd = fd_;
  } else {
    close(fd_);
  }
  fd_ = -1;
  return result_;
}

SafeWriteResult SafeWriteFile(const std::string& path, std::span<const std::string_view> pieces,
                              const SafeWriteOptions& options) {
  SafeFileWriter writer;
  const SafeFileWriter::Content content{pieces, -1, 0};
  writer.Start(path, options, &content);
  for (std::string_view piece : pieces) {
    if (!writer.Write(piece)) break;
  }
  return writer.Finish(&content);
}

std::string_view SafeWriteStepText(SafeWriteFailure failure) {
  switch (failure) {
    case SafeWriteFailure::None: return "write the file";
    case SafeWriteFailure::NoFileName: return "no file name";
    case SafeWriteFailure::FollowLink: return "follow the symbolic link";
    case SafeWriteFailure::CheckTarget:
    case SafeWriteFailure::NotRegularFile: return "check the file";
    case SafeWriteFailure::TargetReadOnly: return "check the file is writable";
    case SafeWriteFailure::RefusedByCaller: return "check the file may be replaced";
    case SafeWriteFailure::CreateTemporary: return "create a temporary file";
    case SafeWriteFailure::KeepPermissions: return "keep the permissions";
    case SafeWriteFailure::OpenInPlace: return "open the file for writing";
    case SafeWriteFailure::BackupOld: return "keep a copy of the old content";
    case SafeWriteFailure::ReserveSpace: return "reserve space";
    case SafeWriteFailure::Write: return "write";
    case SafeWriteFailure::Flush: return "flush";
    case SafeWriteFailure::Rename: return "rename over the file";
  }
  return "write the file";
}

}  // namespace nebro
