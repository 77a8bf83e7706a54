#include "export/export_output.h"

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace nebro::exports {

ExportBytes::ExportBytes(ExportBytes&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)),
      size_(std::exchange(other.size_, 0)),
      capacity_(std::exchange(other.capacity_, 0)) {}

ExportBytes& ExportBytes::operator=(ExportBytes&& other) noexcept {
  if (this != &other) {
    std::free(data_);
    data_ = std::exchange(other.data_, nullptr);
    size_ = std::exchange(other.size_, 0);
    capacity_ = std::exchange(other.capacity_, 0);
  }
  return *this;
}

ExportBytes::~ExportBytes() { std::free(data_); }

void ExportBytes::release() {
  std::free(data_);
  data_ = nullptr;
  size_ = capacity_ = 0;
}

bool ExportBytes::Reserve(size_t total) {
  if (total <= capacity_) return true;
  // No object can be larger than PTRDIFF_MAX: such a size is refused before it reaches the
  // allocator (which may abort instead of failing).
  if (total > static_cast<size_t>(PTRDIFF_MAX)) return false;
  void* grown = std::realloc(data_, total);
  if (!grown) return false;
  data_ = static_cast<char*>(grown);
  capacity_ = total;
  return true;
}

bool ExportBytes::Grow(size_t more) {
  if (more > SIZE_MAX - size_) return false;
  const size_t needed = size_ + more;
  size_t next = capacity_ + capacity_ / 2;
  if (next < needed || next < capacity_) next = needed;
  if (next < 4096) next = 4096;
  return Reserve(next);
}

bool ExportBytes::Append(std::string_view bytes) {
  if (!MakeRoom(bytes.size())) return false;
  if (!bytes.empty()) std::memcpy(tail(), bytes.data(), bytes.size());
  size_ += bytes.size();
  return true;
}

SafeWriteOptions ExportWriteOptions() {
  SafeWriteOptions options;
  options.writeDevicesDirectly = true;  // "--export txt in.txt /dev/stdout" writes to the terminal
  return options;
}

ExportResult ExportResultOf(const SafeWriteResult& written) {
  switch (written.failure) {
    case SafeWriteFailure::None: return ExportResult::Ok;
    case SafeWriteFailure::ReserveSpace:
    case SafeWriteFailure::Write:
    case SafeWriteFailure::Flush:
    case SafeWriteFailure::Rename: return ExportResult::WriteFailed;
    default: return ExportResult::CannotCreate;
  }
}

ExportResult WriteExportFile(const std::string& path, std::string_view bytes) {
  return ExportResultOf(SafeWriteFile(path, bytes, ExportWriteOptions()));
}

}  // namespace nebro::exports
