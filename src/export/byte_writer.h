// A write cursor over ExportBytes for the generators' inner loops: room is asked for in blocks,
// then bytes go in through a plain pointer. Commit() makes what was written part of the
// buffer's content (Room also commits when it has to grow the buffer).
#pragma once

#include <charconv>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "export/export_output.h"

namespace nebro {

class ByteWriter {
 public:
  explicit ByteWriter(ExportBytes& out) : out_(out) { Reload(); }
  ByteWriter(const ByteWriter&) = delete;
  ByteWriter& operator=(const ByteWriter&) = delete;

  // Promises `n` bytes of room at the cursor; false when memory runs out.
  bool Room(size_t n) { return static_cast<size_t>(end_ - p_) >= n || Refill(n); }

  // The Put functions assume the room was promised.
  void Put(char c) { *p_++ = c; }
  void Put(std::string_view s) {
    std::memcpy(p_, s.data(), s.size());
    p_ += s.size();
  }
  void PutNumber(int64_t value) { p_ = std::to_chars(p_, p_ + 20, value).ptr; }
  // Room-checked append; false when memory runs out.
  bool Append(std::string_view s) {
    if (!Room(s.size())) return false;
    Put(s);
    return true;
  }

  char*& cursor() { return p_; }
  void Commit() { out_.CommitTo(p_); }

 private:
  bool Refill(size_t n) {
    Commit();
    if (!out_.MakeRoom(n)) return false;
    Reload();
    return true;
  }
  void Reload() {
    p_ = out_.tail();
    end_ = p_ + (out_.capacity() - out_.size());
  }

  ExportBytes& out_;
  char* p_ = nullptr;
  char* end_ = nullptr;
};

}  // namespace nebro
