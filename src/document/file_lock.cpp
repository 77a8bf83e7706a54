#include "document/file_lock.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace nebro::document {

UniqueFd& UniqueFd::operator=(UniqueFd&& other) noexcept {
  if (this != &other) {
    Reset();
    fd_ = other.Release();
  }
  return *this;
}

int UniqueFd::Release() {
  const int fd = fd_;
  fd_ = -1;
  return fd;
}

bool UniqueFd::Reset() {
  if (fd_ < 0) return true;
  // Linux releases the descriptor even when close() fails, so it is never retried.
  const bool ok = close(fd_) == 0;
  fd_ = -1;
  return ok;
}

LockOutcome LockWholeFile(int fd) {
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  lock.l_start = 0;
  lock.l_len = 0;  // to the end, however far the file grows
  while (fcntl(fd, F_OFD_SETLK, &lock) != 0) {
    if (errno == EINTR) continue;
    if (errno == EAGAIN || errno == EACCES) return LockOutcome::HeldElsewhere;
    return LockOutcome::Unsupported;
  }
  return LockOutcome::Locked;
}

void CloseDocumentLock(int& lockFd) {
  if (lockFd >= 0) close(lockFd);
  lockFd = -1;
}

}  // namespace nebro::document
