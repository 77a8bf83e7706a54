#include "document/file_save.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "document/file_lock.h"

namespace nebro {

namespace {

constexpr char kUtf8Mark[] = "\xEF\xBB\xBF";

SaveError ErrorFromErrno(int e, SaveError otherwise) {
  switch (e) {
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return SaveError::NoSpace;
    case EROFS:
      return SaveError::ReadOnlyFileSystem;
    case EACCES:
    case EPERM:
      return SaveError::PermissionDenied;
    case ENOENT:
    case ENOTDIR:
      return SaveError::FolderMissing;
    case EISDIR:
      return SaveError::NotRegularFile;
    case EIO:
      return SaveError::IoError;
    default:
      return otherwise;
  }
}

SaveResult Fail(SaveResult r, SaveError error, int e, const char* step) {
  r.error = error;
  r.errnoValue = e;
  r.detail = std::string(step);
  if (e != 0) r.detail += std::string(": ") + std::strerror(e);
  return r;
}

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

bool WriteAll(int fd, const char* data, size_t length, int& error) {
  while (length > 0) {
    const ssize_t n = write(fd, data, std::min<size_t>(length, 1u << 30));
    if (n < 0) {
      if (errno == EINTR) continue;
      error = errno;
      return false;
    }
    data += n;
    length -= static_cast<size_t>(n);
  }
  return true;
}

bool WriteAllAt(int fd, const char* data, size_t length, off_t offset, int& error) {
  while (length > 0) {
    const ssize_t n = pwrite(fd, data, std::min<size_t>(length, 1u << 30), offset);
    if (n < 0) {
      if (errno == EINTR) continue;
      error = errno;
      return false;
    }
    data += n;
    offset += n;
    length -= static_cast<size_t>(n);
  }
  return true;
}

int OpenRetrying(const char* path, int flags, mode_t mode = 0) {
  int fd;
  do {
    fd = open(path, flags | O_CLOEXEC | O_NOCTTY, mode);
  } while (fd < 0 && errno == EINTR);
  return fd;
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

bool SameFile(int fd, const struct stat& st) {
  struct stat other {};
  return fd >= 0 && fstat(fd, &other) == 0 && other.st_dev == st.st_dev && other.st_ino == st.st_ino;
}

// True when some other open of the file holds a lock that would refuse ours.
bool LockedByOther(int fd) {
  struct flock probe {};
  probe.l_type = F_WRLCK;
  probe.l_whence = SEEK_SET;
  if (fcntl(fd, F_OFD_GETLK, &probe) != 0) return false;  // no locks here: nobody holds one
  return probe.l_type != F_UNLCK;
}

void SyncFolder(const std::string& folder) {
  const int fd = OpenRetrying(folder.c_str(), O_RDONLY | O_DIRECTORY);
  if (fd < 0) return;
  fsync(fd);  // the rename is done; a failure to persist the folder entry is not reported
  close(fd);
}

// Rewrites the existing file through a descriptor of its own instead of replacing it. Space for
// the new text is reserved first, so that a full disk refuses before any old byte changes.
// Returns false, having changed nothing, when the file system cannot reserve space; else the
// outcome is in `r`.
bool SaveInPlace(SaveResult& r, const char* text, size_t length, bool mark, int& lockFd) {
  UniqueFd fd(OpenRetrying(r.target.c_str(), O_RDWR));
  if (!fd.Valid()) {
    const int e = errno;
    SaveError error = ErrorFromErrno(e, SaveError::Other);
    if (error == SaveError::PermissionDenied) error = SaveError::ReadOnlyFile;
    r = Fail(std::move(r), error, e, "open the file for writing");
    return true;
  }
  const size_t markLength = mark ? 3 : 0;
  const off_t total = static_cast<off_t>(length + markLength);
  if (total > 0 && fallocate(fd.Get(), FALLOC_FL_KEEP_SIZE, 0, total) != 0) {
    const int e = errno;
    if (e != ENOSPC && e != EDQUOT && e != EFBIG) return false;
    r = Fail(std::move(r), SaveError::NoSpace, e, "reserve space");
    return true;
  }
  int e = 0;
  if ((mark && !WriteAllAt(fd.Get(), kUtf8Mark, 3, 0, e)) ||
      !WriteAllAt(fd.Get(), text, length, static_cast<off_t>(markLength), e)) {
    r = Fail(std::move(r), ErrorFromErrno(e, SaveError::IoError), e, "write");
    return true;
  }
  if (ftruncate(fd.Get(), total) != 0 || fsync(fd.Get()) != 0) {
    e = errno;
    r = Fail(std::move(r), ErrorFromErrno(e, SaveError::IoError), e, "flush");
    return true;
  }
  // Our own old lock on this same file would refuse the new one: drop it first.
  CloseDocumentLock(lockFd);
  LockWholeFile(fd.Get());
  lockFd = fd.Release();
  return true;
}

}  // namespace

bool ResolveSaveTarget(const std::string& path, std::string& target) {
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

SaveResult SaveDocumentFile(const std::string& path, const char* text, size_t length,
                            TextEncoding encoding, int& lockFd) {
  SaveResult r;
  if (text == nullptr) length = 0;
  const bool mark = encoding == TextEncoding::Utf8Bom;
  if (path.empty()) return Fail(std::move(r), SaveError::FolderMissing, ENOENT, "no file name");
  if (!ResolveSaveTarget(path, r.target)) {
    const int e = errno;
    return Fail(std::move(r), SaveError::Other, e, "follow the symbolic link");
  }
  const std::string& target = r.target;

  struct stat old {};
  bool exists = false;
  if (stat(target.c_str(), &old) == 0) {
    exists = true;
    if (!S_ISREG(old.st_mode)) return Fail(std::move(r), SaveError::NotRegularFile, 0, "check the file");
  } else if (errno != ENOENT) {
    const int e = errno;
    return Fail(std::move(r), ErrorFromErrno(e, SaveError::Other), e, "check the file");
  }

  if (exists) {
    // Would the file itself let us write? A read-only file stays untouched even though its
    // folder would let a rename replace it. (Asked without opening it for writing, which other
    // programs watching the file would take for a change.)
    if (faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0) {
      const int e = errno;
      SaveError error = ErrorFromErrno(e, SaveError::Other);
      if (error == SaveError::PermissionDenied || e == ETXTBSY) error = SaveError::ReadOnlyFile;
      return Fail(std::move(r), error, e, "check the file is writable");
    }
    UniqueFd probe(OpenRetrying(target.c_str(), O_RDONLY | O_NONBLOCK));
    if (probe.Valid() && !SameFile(lockFd, old) && LockedByOther(probe.Get())) {
      return Fail(std::move(r), SaveError::LockedElsewhere, 0, "lock the file");
    }
  }

  const std::string folder = FolderOf(target);
  // Replacing a file that has other names would leave them with the old text.
  if (exists && old.st_nlink > 1 && SaveInPlace(r, text, length, mark, lockFd)) return r;

  std::string temp;
  UniqueFd fd;
  for (int attempt = 0; attempt < 100 && !fd.Valid(); ++attempt) {
    temp = TemporaryName(folder, NameOf(target));
    // A new file gets the usual 0666 less the umask; an existing one gets its own bits below.
    fd = UniqueFd(OpenRetrying(temp.c_str(), O_RDWR | O_CREAT | O_EXCL, exists ? 0600 : 0666));
    if (!fd.Valid() && errno != EEXIST) break;
  }
  if (!fd.Valid()) {
    const int e = errno;
    const SaveError error = ErrorFromErrno(e, SaveError::Other);
    // A folder we may not write can still hold a file we may.
    if (exists && error == SaveError::PermissionDenied && SaveInPlace(r, text, length, mark, lockFd)) {
      return r;
    }
    return Fail(std::move(r), error, e, "create a temporary file");
  }

  auto failAndRemove = [&](SaveError error, int e, const char* step) {
    fd.Reset();
    unlink(temp.c_str());
    return Fail(std::move(r), error, e, step);
  };

  if (exists) {
    struct stat mine {};
    fstat(fd.Get(), &mine);
    if ((mine.st_uid != old.st_uid || mine.st_gid != old.st_gid) &&
        fchown(fd.Get(), old.st_uid, old.st_gid) != 0) {
      // Renaming would hand the file to us: rewrite it in place where that is safe, keeping
      // its owner; else carry on and the file changes hands.
      if (SaveInPlace(r, text, length, mark, lockFd)) {
        fd.Reset();
        unlink(temp.c_str());
        return r;
      }
    }
    if (fchmod(fd.Get(), old.st_mode & 07777) != 0) {
      const int e = errno;
      return failAndRemove(ErrorFromErrno(e, SaveError::Other), e, "keep the permissions");
    }
  }

  int e = 0;
  if ((mark && !WriteAll(fd.Get(), kUtf8Mark, 3, e)) || !WriteAll(fd.Get(), text, length, e)) {
    return failAndRemove(ErrorFromErrno(e, SaveError::IoError), e, "write");
  }
  if (fsync(fd.Get()) != 0) {
    e = errno;
    return failAndRemove(ErrorFromErrno(e, SaveError::IoError), e, "flush");
  }
  // Locked before it gets its name, so no other program can slip in between.
  LockWholeFile(fd.Get());
  if (rename(temp.c_str(), target.c_str()) != 0) {
    e = errno;
    // A file mounted over by itself (a bind-mounted file) cannot be replaced, only rewritten.
    if (e == EBUSY && exists && SaveInPlace(r, text, length, mark, lockFd)) {
      fd.Reset();
      unlink(temp.c_str());
      return r;
    }
    return failAndRemove(ErrorFromErrno(e, SaveError::Other), e, "rename over the file");
  }
  SyncFolder(folder);
  CloseDocumentLock(lockFd);
  lockFd = fd.Release();
  return r;
}

std::string_view SaveErrorName(SaveError error) {
  switch (error) {
    case SaveError::None: return "saved";
    case SaveError::NoSpace: return "no space left on the disk";
    case SaveError::ReadOnlyFile: return "the file is read-only";
    case SaveError::ReadOnlyFileSystem: return "the disk is mounted read-only";
    case SaveError::PermissionDenied: return "permission denied";
    case SaveError::LockedElsewhere: return "the file is open in another program";
    case SaveError::NotRegularFile: return "not a regular file";
    case SaveError::FolderMissing: return "the folder does not exist";
    case SaveError::IoError: return "input/output error";
    case SaveError::Other: return "the file could not be written";
  }
  return "the file could not be written";
}

}  // namespace nebro
