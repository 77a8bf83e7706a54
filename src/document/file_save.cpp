#include "document/file_save.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>

#include "common/safe_write.h"
#include "document/file_lock.h"
#include "document/recovery.h"
#include "settings/data_folder.h"

namespace nebro::document {

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

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

SaveError ErrorOf(SafeWriteFailure failure, int e) {
  switch (failure) {
    case SafeWriteFailure::None: return SaveError::None;
    case SafeWriteFailure::NoFileName: return SaveError::FolderMissing;
    case SafeWriteFailure::FollowLink: return SaveError::Other;
    case SafeWriteFailure::NotRegularFile: return SaveError::NotRegularFile;
    case SafeWriteFailure::RefusedByCaller: return SaveError::LockedElsewhere;
    case SafeWriteFailure::ReserveSpace: return SaveError::NoSpace;
    case SafeWriteFailure::Write:
    case SafeWriteFailure::Flush:
    case SafeWriteFailure::BackupOld: return ErrorFromErrno(e, SaveError::IoError);
    case SafeWriteFailure::TargetReadOnly:
    case SafeWriteFailure::OpenInPlace: {
      // The file itself refuses: that is a read-only file, whatever the folder would allow.
      const SaveError error = ErrorFromErrno(e, SaveError::Other);
      const bool busy = failure == SafeWriteFailure::TargetReadOnly && e == ETXTBSY;
      return error == SaveError::PermissionDenied || busy ? SaveError::ReadOnlyFile : error;
    }
    default: return ErrorFromErrno(e, SaveError::Other);
  }
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

}  // namespace

SaveResult SaveDocumentFile(const std::string& path, const char* text, size_t length,
                            TextEncoding encoding, int& lockFd) {
  if (text == nullptr) length = 0;
  const std::string_view pieces[] = {encoding == TextEncoding::Utf8Bom ? kUtf8Mark : "",
                                     std::string_view(text, length)};
  SafeWriteOptions options;
  options.keepOpen = true;
  options.refuse = [&lockFd](const std::string& target, const struct stat& existing) {
    UniqueFd probe(open(target.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    return probe.Valid() && !SameFile(lockFd, existing) && LockedByOther(probe.Get());
  };
  // Locked before it gets its name, so no other program can slip in between.
  options.onFlushed = [&lockFd](int fd) {
    struct stat written {};
    // Our own old lock on this same file (rewritten in place) would refuse the new one.
    if (fstat(fd, &written) == 0 && SameFile(lockFd, written)) CloseDocumentLock(lockFd);
    LockWholeFile(fd);
  };
  // A rewrite in place keeps the old content in the data folder until the new content is
  // whole on disk: a crash in between leaves a copy the next start offers back, and a rewrite
  // that fails midway (a disk error) writes the copy back, so the file is as it was. Where the
  // data folder cannot be written at all the save goes ahead without one; a copy that fails
  // midway (a full disk) refuses the save.
  const std::string folder = settings::GetSettingsFolder();
  const bool canKeep = !folder.empty() && faccessat(AT_FDCWD, folder.c_str(), W_OK, AT_EACCESS) == 0;
  // A copy left by an earlier save whose write-back failed stays: it holds the older content.
  std::string backup;
  for (int turn = 1; canKeep && (backup.empty() || access(backup.c_str(), F_OK) == 0); ++turn) {
    backup = RecoveryBackupFileFor(folder, getpid(), turn);
  }
  options.backupBeforeInPlace = [&](int fd, uint64_t size) {
    return backup.empty() || WriteRecoveryBackup(backup, path, static_cast<int64_t>(std::time(nullptr)), fd, size);
  };
  options.afterInPlace = [&](int fd, bool complete) {
    // A copy that could not be written back stays for the next start to offer.
    if (!backup.empty() && (complete || RestoreRecoveryBackup(backup, fd))) unlink(backup.c_str());
  };
  const SafeWriteResult written = SafeWriteFile(path, pieces, options);

  SaveResult r;
  r.target = written.target;
  r.errnoValue = written.errnoValue;
  if (!written.Ok()) {
    r.error = ErrorOf(written.failure, written.errnoValue);
    r.detail = written.failure == SafeWriteFailure::RefusedByCaller
                   ? "lock the file"
                   : std::string(SafeWriteStepText(written.failure));
    if (written.errnoValue != 0) r.detail += std::string(": ") + std::strerror(written.errnoValue);
    return r;
  }
  CloseDocumentLock(lockFd);
  lockFd = written.fd;
  return r;
}

std::string SaveFailureReason(const SaveResult& result) {
  switch (result.error) {
    case SaveError::None: return "";
    case SaveError::NoSpace: return "No space left on device";
    case SaveError::ReadOnlyFile: return "The file is read-only";
    case SaveError::ReadOnlyFileSystem: return "The disk is mounted read-only";
    case SaveError::PermissionDenied: return "Permission denied";
    case SaveError::LockedElsewhere: return "The file is open in another program";
    case SaveError::NotRegularFile: return "The name belongs to a folder or a device, not a file";
    case SaveError::FolderMissing: return "The folder no longer exists";
    case SaveError::IoError: return "The disk reported an input/output error";
    case SaveError::Other: break;
  }
  return result.errnoValue != 0 ? std::strerror(result.errnoValue) : "The file could not be written";
}

}  // namespace nebro::document
