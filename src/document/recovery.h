// Recovery copies: while a document has unsaved changes, a copy of its text waits in the data
// folder, so a crash, a kill or a power cut loses at most the last half minute of typing. Each
// editor writes "recovery_<pid>.txt"; at start-up the copies of editors that no longer run are
// offered back. A copy holds a small header (the original path and when it was written) and
// then the text.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nebro::document {

// Documents larger than this get no recovery copy (writing one would take too long).
inline constexpr size_t kRecoveryLimit = 64u << 20;
inline constexpr const char* kRecoverySkippedNotice = "   No recovery copy: larger than 64 MB";

struct RecoveryCopy {
  std::string file;  // the copy itself
  pid_t pid = 0;     // the editor that wrote it
  bool beforeSave = false;   // a file's old content, kept while a save rewrote it in place
  std::string originalPath;  // empty for an untitled document
  int64_t writtenAt = 0;     // seconds since the epoch
  std::string text;
};

// "<folder>/recovery_<pid>.txt".
std::string RecoveryFileFor(const std::string& folder, pid_t pid);

// "<folder>/recovery_<pid>-old.txt": the old content of a file while a save rewrites it in
// place (a file with other hard links, in a folder that takes no new file...). A later `turn`
// names another ("-old2.txt"...), for a save while an earlier copy could not be written back.
std::string RecoveryBackupFileFor(const std::string& folder, pid_t pid, int turn = 1);

// The bytes of a copy, and the copy read back from them (false for anything else).
std::string EncodeRecoveryCopy(const std::string& originalPath, int64_t writtenAt, std::string_view text);
bool DecodeRecoveryCopy(std::string_view bytes, RecoveryCopy& copy);

// Writes the copy atomically (a crash during the write leaves the previous copy).
bool WriteRecoveryCopy(const std::string& file, const std::string& originalPath, int64_t writtenAt,
                       std::string_view text);

// The same copy of the `size` bytes that `fd` reads, streamed (the file may be large).
bool WriteRecoveryBackup(const std::string& file, const std::string& originalPath, int64_t writtenAt, int fd,
                         uint64_t size);

// Writes the old content that a copy made by WriteRecoveryBackup holds back over the file open
// at `fd`: from its start, cut to its length, flushed. False when the copy is not whole or the
// file would not take it.
bool RestoreRecoveryBackup(const std::string& file, int fd);

// The readable copies in `folder` whose editor is no longer running, oldest first. A copy of an
// editor that still runs is never taken, whatever its age.
std::vector<RecoveryCopy> FindOrphanedRecoveryCopies(const std::string& folder);

// True while process `pid` is a running editor (a process of another program that got the same
// number later does not count).
bool EditorProcessRunning(pid_t pid);

}  // namespace nebro::document
