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

// "Nebro - " + the display name (or "Untitled") + " *" while modified.
std::string DocumentTitle(const DocumentState& doc);

}  // namespace nebro::document
