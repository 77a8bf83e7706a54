// A write cursor over ExportBytes for the generators' inner loops: room is asked for in blocks,
// then bytes go in through a plain pointer. Given a file sink, the writer passes its bytes on
// whenever the buffer runs full, so two small buffers carry an output of any size.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "export/export_output.h"
#include "common/safe_write.h"
#include "export/file_sink.h"

namespace nebro::exports {

class ByteWriter {
 public:
  // Without a sink the buffer grows to hold the whole output.
  explicit ByteWriter(ExportBytes& out, FileSink* sink = nullptr) : out_(out), sink_(sink) {
    Reload();
  }
  ByteWriter(const ByteWriter&) = delete;
  ByteWriter& operator=(const ByteWriter&) = delete;

  // Promises `n` bytes of room at the cursor; false when memory runs out or the file write
  // fails (failure() tells which).
  bool Room(size_t n) { return static_cast<size_t>(end_ - p_) >= n || Refill(n); }

  // The Put functions assume the room was promised.
  void Put(std::string_view s) {
    std::memcpy(p_, s.data(), s.size());
    p_ += s.size();
  }
  // Room-checked append.
  bool Append(std::string_view s) {
    if (!Room(s.size())) return false;
    Put(s);
    return true;
  }

  char*& cursor() { return p_; }
  ExportResult failure() const { return failure_; }

  // Makes everything written part of the buffer, or, with a sink, writes the rest out and
  // waits until the file has it all.
  bool Finish() {
    if (!Pass()) return false;
    if (sink_ && !sink_->Drain()) {
      failure_ = ExportResult::WriteFailed;
      return false;
    }
    return true;
  }

 private:
  // Commits what was written and, with a sink, hands it over for writing.
  bool Pass() {
    out_.CommitTo(p_);
    if (sink_) {
      if (!sink_->Flush(out_)) {
        failure_ = ExportResult::WriteFailed;
        return false;
      }
      Reload();
    }
    return true;
  }
  bool Refill(size_t n) {
    if (!Pass()) return false;
    if (static_cast<size_t>(end_ - p_) >= n) return true;
    if (!out_.MakeRoom(n)) {
      failure_ = ExportResult::OutOfMemory;
      return false;
    }
    Reload();
    return true;
  }
  void Reload() {
    p_ = out_.tail();
    end_ = p_ + (out_.capacity() - out_.size());
  }

  ExportBytes& out_;
  FileSink* sink_;
  char* p_ = nullptr;
  char* end_ = nullptr;
  ExportResult failure_ = ExportResult::Ok;
};

// Bytes gathered before they go to the file when an export streams into one.
// Small enough to stay in the processor's cache between writes.
inline constexpr size_t kStreamBufferSize = 512 * 1024;

// Runs `generate(ExportBytes&, FileSink*)` so that its output ends up in the file at `path`:
// it streams into a SafeFileWriter, which puts the file in place only when generation
// succeeded; a cancel or a failure leaves the target untouched.
template <class Generate>
ExportResult StreamToFile(const std::string& path, Generate&& generate) {
  SafeFileWriter file;
  if (!file.Open(path, ExportWriteOptions()).Ok()) return ExportResult::CannotCreate;
  ExportResult result;
  {
    ExportBytes buffer;
    FileSink sink(file, kStreamBufferSize);
    result = buffer.Reserve(kStreamBufferSize) ? generate(buffer, &sink) : ExportResult::OutOfMemory;
  }  // the sink's thread has ended here; nothing writes to the file any more
  if (result != ExportResult::Ok) {
    file.Abandon();
    return result;
  }
  return ExportResultOf(file.Commit());
}

}  // namespace nebro::exports
