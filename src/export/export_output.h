// What every exporter shares: its result codes, the progress and cancel hooks a worker hands
// in, the growable byte buffer the generators write into, and how their files are written so
// that no half-written export is ever left behind.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "common/safe_write.h"

namespace nebro::exports {

enum class ExportResult {
  Ok,
  Cancelled,     // the cancel hook answered true; nothing was written
  CannotCreate,  // the output file could not be created or opened for writing
  WriteFailed,   // the file was opened but writing, closing or renaming it failed
  OutOfMemory,   // the output buffer could not grow
  BadInput,      // the style bytes do not match the text bytes one for one
};

// Hooks of a running export. Both may be empty.
struct ExportMonitor {
  // Asked once per output line, before the line is written; true stops the export.
  std::function<bool()> isCancelled;
  // Told the 1-based number of the line about to be written, every ProgressStep() lines.
  std::function<void(uint32_t line)> onProgress;
};

// A growable byte buffer on malloc/realloc: very large buffers grow by remapping pages
// rather than by copying, which keeps building a several-hundred-megabyte page cheap.
class ExportBytes {
 public:
  ExportBytes() = default;
  ExportBytes(const ExportBytes&) = delete;
  ExportBytes& operator=(const ExportBytes&) = delete;
  ExportBytes(ExportBytes&& other) noexcept;
  ExportBytes& operator=(ExportBytes&& other) noexcept;
  ~ExportBytes();

  const char* data() const { return data_; }
  size_t size() const { return size_; }
  size_t capacity() const { return capacity_; }
  bool empty() const { return size_ == 0; }
  std::string_view view() const { return {data_ ? data_ : "", size_}; }
  std::string str() const { return std::string(view()); }
  void clear() { size_ = 0; }
  // Frees the memory as well.
  void release();

  // Makes the capacity at least `total` bytes; false when memory runs out.
  bool Reserve(size_t total);
  // Makes room for `more` bytes after the current end; false when memory runs out.
  bool MakeRoom(size_t more) { return capacity_ - size_ >= more || Grow(more); }
  // Where the next byte goes; valid up to MakeRoom's promise.
  char* tail() { return data_ + size_; }
  // Marks the bytes written at tail() up to `end` as part of the content.
  void CommitTo(const char* end) { size_ = static_cast<size_t>(end - data_); }
  bool Append(std::string_view bytes);

 private:
  bool Grow(size_t more);

  char* data_ = nullptr;
  size_t size_ = 0;
  size_t capacity_ = 0;
};

// Writes `bytes` as the whole content of `path` through SafeWriteFile (common/safe_write.h):
// a failed write leaves the previous file (or none) in place, an existing file keeps its
// permission bits and a symbolic link keeps pointing at the file it named. A device or a pipe
// named as the output takes the bytes directly.
ExportResult WriteExportFile(const std::string& path, std::string_view bytes);

// The rules every export file write uses (the device and pipe rule above).
SafeWriteOptions ExportWriteOptions();
// A file write in the exporters' codes: refused before any byte went out (no name, a folder,
// a read-only file, no file could be made) is CannotCreate, anything later WriteFailed.
ExportResult ExportResultOf(const SafeWriteResult& written);

}  // namespace nebro::exports
