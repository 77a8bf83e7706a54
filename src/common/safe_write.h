// Replacing a file's whole content so that no failure, crash or full disk ever leaves it half
// written. Every file the program writes for the user (documents, exports, the settings) goes
// through here, so they all share one set of rules:
//
// - The new bytes go to a fresh hidden file in the target's folder, every write is checked, the
//   file is flushed to disk (fsync) and only then renamed over the target; the folder is flushed
//   after the rename. Until the rename the old file is untouched, and every failure removes the
//   new file again.
// - A symbolic link is followed (relative targets from the link's folder, a dangling link
//   creates its target) and the file it names is written: the link stays a link.
// - An existing file keeps its permission bits and, where the system allows, its owner and
//   group. A new file gets 0666 less the umask.
// - Where replacing is impossible or would do harm (the folder takes no new file, the file has
//   other hard links, its owner could not be kept, it is mounted over another file) it is
//   rewritten in place instead, but only after space for the new content has been reserved, so
//   a full disk is found before any old byte is overwritten. A file system that cannot reserve
//   space gets the ordinary replacement (or, for a folder that takes no file, the refusal).
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace nebro {

// The step that stopped a write. Callers turn it, with errno, into their own result codes.
enum class SafeWriteFailure {
  None,
  NoFileName,       // the path is empty (errno ENOENT)
  FollowLink,       // a symbolic link loops (ELOOP) or cannot be read
  CheckTarget,      // the target could not be examined, other than by not existing
  NotRegularFile,   // the name is taken by a folder, a device, a pipe... (errno 0)
  TargetReadOnly,   // the existing file may not be written (errno of the access check)
  RefusedByCaller,  // SafeWriteOptions::refuse said no (errno 0)
  CreateTemporary,  // no new file could be made beside the target
  KeepPermissions,  // the new file could not take the old one's permission bits
  OpenInPlace,      // rewriting in place: the target would not open for writing
  ReserveSpace,     // rewriting in place: no room for the new content
  Write,            // a write failed (or, streaming, an earlier one did)
  Flush,            // fsync (or closing a device) failed
  Rename,           // the new file could not take the target's name
  BackupOld,        // rewriting in place: the old content could not be kept aside first
};

struct SafeWriteResult {
  SafeWriteFailure failure = SafeWriteFailure::None;
  int errnoValue = 0;
  std::string target;    // the file written: the path with its symbolic links followed
  bool inPlace = false;  // the target was rewritten rather than replaced
  int fd = -1;           // with keepOpen: a read-write descriptor of the written file, to close

  bool Ok() const { return failure == SafeWriteFailure::None; }
};

struct SafeWriteOptions {
  // Asked about an existing regular file once it is known to be writable, before anything is
  // created; true refuses the write (RefusedByCaller).
  std::function<bool(const std::string& target, const struct stat& existing)> refuse;
  // Given the descriptor of the finished content once it is on disk: just before the rename
  // gives it the target's name, or right after an in-place rewrite. Nothing fails after an
  // in-place call; after the other a failed rename still removes the new file.
  std::function<void(int fd)> onFlushed;
  // A rewrite in place is the one write a crash could leave half old, half new. When set, this
  // is given a read-only descriptor of the old content and its size before any byte changes,
  // to keep a copy elsewhere; false refuses the write (BackupOld). `afterInPlace(fd, complete)`
  // runs when the rewrite has ended: complete when the new content is whole on disk (the copy
  // may go), else the file may be part old, part new, and the copy may be written back through
  // `fd` (the target, open for reading and writing).
  std::function<bool(int fd, uint64_t size)> backupBeforeInPlace;
  std::function<void(int fd, bool complete)> afterInPlace;
  // The result keeps the written file open (SafeWriteResult::fd) instead of closing it.
  bool keepOpen = false;
  // A device or a pipe named as the target gets the bytes directly, as a shell redirection
  // would, instead of being refused. Nothing written there can be taken back.
  bool writeDevicesDirectly = false;
};

// Writes `pieces`, one after the other, as the whole content of `path`.
SafeWriteResult SafeWriteFile(const std::string& path, std::span<const std::string_view> pieces,
                              const SafeWriteOptions& options = {});
inline SafeWriteResult SafeWriteFile(const std::string& path, std::string_view bytes,
                                     const SafeWriteOptions& options = {}) {
  return SafeWriteFile(path, std::span<const std::string_view>(&bytes, 1), options);
}

// The same write for content produced piece by piece: Open, Write as often as needed, then
// Commit to put it in place or Abandon to leave the target as it was. Write may be called from
// another thread than Open and Commit, one thread at a time. When the target can only be
// rewritten in place the pieces are gathered in memory until Commit.
class SafeFileWriter {
 public:
  SafeFileWriter() = default;
  SafeFileWriter(const SafeFileWriter&) = delete;
  SafeFileWriter& operator=(const SafeFileWriter&) = delete;
  ~SafeFileWriter();  // abandons what was not committed

  // On failure nothing was created.
  SafeWriteResult Open(const std::string& path, const SafeWriteOptions& options = {});
  // False once a write has failed; the failure is Commit's result.
  bool Write(std::string_view bytes);
  SafeWriteResult Commit();
  void Abandon();

 private:
  friend SafeWriteResult SafeWriteFile(const std::string&, std::span<const std::string_view>,
                                       const SafeWriteOptions&);
  enum class Mode { Closed, Beside, Staged, Device, Done };
  struct Content;

  void Start(const std::string& path, const SafeWriteOptions& options, const Content* known);
  bool OpenBeside(const Content* known);
  bool RewriteInPlace(const Content& content);
  SafeWriteResult Finish(const Content* known);
  void Fail(SafeWriteFailure failure, int errnoValue);
  void RemoveNewFile();

  SafeWriteOptions options_;
  SafeWriteResult result_;
  Mode mode_ = Mode::Closed;
  int fd_ = -1;           // where Write puts the bytes
  std::string temp_;      // the new file beside the target, while it exists
  uint64_t written_ = 0;
  bool exists_ = false;
  struct stat old_ {};
  bool preferInPlace_ = false;   // rewrite in place at Commit where space can be reserved
  int noTemporaryErrno_ = 0;     // Staged: why no file could be made beside the target
};

// The step of `failure` in a few words, for log lines: "create a temporary file".
std::string_view SafeWriteStepText(SafeWriteFailure failure);

}  // namespace nebro
