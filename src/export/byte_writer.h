// A write cursor over ExportBytes for the generators' inner loops: room is asked for in blocks,
// then bytes go in through a plain pointer. Given a file, the writer passes its bytes on to the
// file whenever the buffer runs full, so one small buffer carries an output of any size.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

#include "export/export_output.h"
#include "export/output_file.h"

namespace nebro {

class ByteWriter {
 public:
  // Without a file (fd < 0) the buffer grows to hold the whole output.
  explicit ByteWriter(ExportBytes& out, int fd = -1) : out_(out), fd_(fd) { Reload(); }
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

  // Makes everything written part of the buffer, or, with a file, writes the rest out.
  bool Finish() {
    out_.CommitTo(p_);
    if (fd_ < 0) return true;
    if (!WriteAll(fd_, out_.view())) {
      failure_ = ExportResult::WriteFailed;
      return false;
    }
    out_.clear();
    Reload();
    return true;
  }

 private:
  bool Refill(size_t n) {
    if (fd_ >= 0) {
      if (!Finish()) return false;
      if (static_cast<size_t>(end_ - p_) >= n) return true;
    }
    out_.CommitTo(p_);
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
  int fd_;
  char* p_ = nullptr;
  char* end_ = nullptr;
  ExportResult failure_ = ExportResult::Ok;
};

// Bytes gathered before they go to the file when an export streams into one.
// Small enough to stay in the processor's cache between writes.
inline constexpr size_t kStreamBufferSize = 512 * 1024;

// Runs `generate(ExportBytes&, int fd)` so that its output ends up in the file at `path`: it
// streams into a new file beside the target, which replaces the target only when generation
// succeeded. Where only overwriting the target in place is possible, the output is built in
// memory first so that a cancel or failure still leaves the target untouched.
template <class Generate>
ExportResult StreamToFile(const std::string& path, Generate&& generate) {
  OutputFile file;
  switch (OpenOutputFile(path, file)) {
    case OpenOutcome::Refused:
      return ExportResult::CannotCreate;
    case OpenOutcome::InPlaceOnly: {
      ExportBytes whole;
      const ExportResult built = generate(whole, -1);
      return built == ExportResult::Ok ? WriteExportFile(path, whole.view()) : built;
    }
    case OpenOutcome::Opened:
      break;
  }
  ExportBytes buffer;
  ExportResult result = buffer.Reserve(kStreamBufferSize) ? generate(buffer, file.fd)
                                                            : ExportResult::OutOfMemory;
  if (result != ExportResult::Ok) {
    AbandonOutputFile(file);
    return result;
  }
  return FinishOutputFile(file);
}

}  // namespace nebro
