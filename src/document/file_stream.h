// Loading a file for the editor without holding all of its bytes at once: the same decisions as
// ReadDocumentFile (refusals, byte-order mark, UTF-16, line endings), with the UTF-8 text handed
// to a sink piece by piece. The editor's document is then the only full copy of the text.
#pragma once

#include <cstddef>
#include <functional>

#include "document/file_load.h"

namespace nebro::document {

struct TextSink {
  // Called once, before any text, with the exact number of UTF-8 bytes that will follow.
  // Returning false stops the load as out of memory.
  std::function<bool(size_t totalBytes)> begin;
  // Called with consecutive pieces of the text; false stops the load as out of memory.
  std::function<bool(const char* data, size_t length)> add;
};

// On any decision but Loaded the sink may have received part of the text and must be thrown
// away by the caller. LoadResult::text stays empty. Safe on any thread.
LoadResult StreamDocumentFile(OpenedDocument opened, uint64_t maxBytes, const TextSink& sink);

}  // namespace nebro::document
