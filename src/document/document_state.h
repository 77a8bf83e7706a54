// The open document's state, owned by the main window.
#pragma once

#include <string>

#include "document/text_decode.h"

namespace nebro::document {

struct DocumentState {
  std::string path;  // empty for an untitled document
  bool modified = false;
  TextEncoding encoding = TextEncoding::Utf8;
  int lockFd = -1;  // the loaded file, kept open with its lock
  bool viewerMode = false;
};

// The path as the document records it: absolute (a path typed relative to the folder the editor
// started in would fail from anywhere else), without "." and ".." parts; symbolic links stay.
std::string DocumentPath(const std::string& path);

// "Nebro - " + the display name (or "Untitled") + " *" while modified.
std::string DocumentTitle(const DocumentState& doc);

}  // namespace nebro::document
