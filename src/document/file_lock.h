// The open file that stands for the loaded document. It is opened for reading and writing and
// carries an open-file-description write lock over the whole file, so a second Nebro (or any
// program that asks for the same lock) is told the file is in use while it is shown.
#pragma once

namespace nebro::document {

// Owns one file descriptor; closes it when dropped. Moves, never copies.
class UniqueFd {
 public:
  UniqueFd() = default;
  explicit UniqueFd(int fd) : fd_(fd) {}
  UniqueFd(UniqueFd&& other) noexcept : fd_(other.Release()) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept;
  UniqueFd(const UniqueFd&) = delete;
  UniqueFd& operator=(const UniqueFd&) = delete;
  ~UniqueFd() { Reset(); }

  int Get() const { return fd_; }
  bool Valid() const { return fd_ >= 0; }
  // Gives up ownership and returns the descriptor (-1 when there was none).
  int Release();
  // Closes the descriptor, if any; returns false when close() reported an error.
  bool Reset();

 private:
  int fd_ = -1;
};

enum class LockOutcome {
  Locked,        // this descriptor now holds the write lock
  HeldElsewhere, // another open of the file holds a conflicting lock
  Unsupported,   // the file system takes no locks (the file stays usable, just unlocked)
};

// Takes the write lock over the whole file (F_OFD_SETLK, never waits). The descriptor must be
// open for writing. Locks held through another descriptor of this same process conflict too.
LockOutcome LockWholeFile(int fd);

// Closes the document's lock descriptor, if open, and sets it to -1. Closing releases the lock.
void CloseDocumentLock(int& lockFd);

}  // namespace nebro::document
