// Hands full buffers to a thread of its own that writes them to a file, so that building the
// next part of an export overlaps with the kernel copying the previous part into the file.
#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

#include "common/safe_write.h"
#include "export/export_output.h"

namespace nebro::exports {

class FileSink {
 public:
  // `bufferSize` is the size of the spare buffer handed back by Flush. `file` must be open and
  // outlive the sink; only the sink's thread writes to it meanwhile.
  FileSink(SafeFileWriter& file, size_t bufferSize);
  FileSink(const FileSink&) = delete;
  FileSink& operator=(const FileSink&) = delete;
  // Waits for the write in flight, then ends the thread.
  ~FileSink();

  // Takes `buffer`'s bytes for writing and leaves an empty buffer in their place. Waits while
  // the previous buffer is still being written. False once a write has failed or the spare
  // buffer could not be made.
  bool Flush(ExportBytes& buffer);
  // Waits until everything handed over is written; false if any write failed.
  bool Drain();

 private:
  void Run();

  SafeFileWriter& file_;
  std::mutex mutex_;
  std::condition_variable changed_;
  ExportBytes pending_;  // the bytes being written, or the empty spare
  bool busy_ = false;
  bool failed_ = false;
  bool stop_ = false;
  std::thread thread_;  // last: starts once the fields above are ready
};

}  // namespace nebro::exports
