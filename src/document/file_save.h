// Saving the document: always UTF-8, with the UTF-8 mark only for files that were loaded with
// one, line endings exactly as the editor holds them. A failed save leaves the file on disk as it
// was and says why; nothing the user had is lost.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "document/text_decode.h"

namespace nebro::document {

enum class SaveError {
  None,
  NoSpace,             // the disk (or the user's quota) is full
  ReadOnlyFile,        // the file exists and may not be written
  ReadOnlyFileSystem,  // the file or its folder lies on a read-only mount
  PermissionDenied,    // the folder may not be written (or another permission refusal)
  LockedElsewhere,     // another program holds the file's lock
  NotRegularFile,      // the name is taken by a folder, a device, a pipe...
  FolderMissing,       // the folder of the file does not exist (any more)
  IoError,             // the device reported an error while writing or flushing
  Other,
};

struct SaveResult {
  SaveError error = SaveError::None;
  int errnoValue = 0;
  std::string target;  // the file actually written: `path` with its symbolic links followed
  std::string detail;  // a log line: the step that failed and the system's words for it

  bool Ok() const { return error == SaveError::None; }
};

// Writes `length` bytes of UTF-8 at `text` (the editor's buffer, not copied) to `path`, with a
// UTF-8 mark first when `encoding` is Utf8Bom; every other encoding gets no mark.
//
// The file is written by SafeWriteFile (common/safe_write.h): replaced through a flushed
// temporary file, symbolic links followed, permissions and owner kept, rewritten in place only
// where that is safe. On top of that a file whose lock another program holds is refused.
//
// `lockFd` is the document's lock (or -1). On success it is closed and replaced by a locked
// descriptor of the file just written, so that both Save and Save As leave the document locked
// on its new file. On failure it is left as it was.
SaveResult SaveDocumentFile(const std::string& path, const char* text, size_t length,
                            TextEncoding encoding, int& lockFd);

// Why a save failed, in the user's words: the second line under "Cannot save file.".
std::string SaveFailureReason(const SaveResult& result);

}  // namespace nebro::document
