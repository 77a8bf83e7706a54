// The exporters' side of writing files: a new file beside the target that replaces it only
// when everything went well, and the write loop.
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

#include "export/export_output.h"

namespace nebro {

struct OutputFile {
  int fd = -1;
  std::string target;  // the file finally written (a symbolic link resolved)
  std::string temp;    // the new file beside it; empty when writing the target in place
  bool keepMode = false;
  mode_t mode = 0;
};

enum class OpenOutcome {
  Opened,       // `fd` is open on a new file beside the target
  InPlaceOnly,  // the folder takes no new file, but the target itself may be overwritten
  Refused,      // the target is a folder, is not writable, or cannot be made
};

// Opens a new, empty file beside the target of `path`.
OpenOutcome OpenOutputFile(const std::string& path, OutputFile& file);
// Closes the file and puts it in place of the target; on failure the new file is removed and
// the target stays as it was.
ExportResult FinishOutputFile(OutputFile& file);
// Closes and removes the new file; the target stays as it was.
void AbandonOutputFile(OutputFile& file);

// write() until every byte is out; false on an error.
bool WriteAll(int fd, std::string_view bytes);

}  // namespace nebro
