#include "export/export_output.h"

#include "export/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace nebro {

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

bool WriteAll(int fd, std::string_view bytes) {
  const char* p = bytes.data();
  size_t left = bytes.size();
  while (left > 0) {
    // write() moves at most about 2 GiB per call on Linux; larger buffers take several calls.
    const size_t chunk = left < (size_t{1} << 30) ? left : (size_t{1} << 30);
    const ssize_t n = ::write(fd, p, chunk);
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    if (n == 0) return false;
    p += n;
    left -= static_cast<size_t>(n);
  }
  return true;
}

namespace {

// The file a path finally names: a symbolic link is followed to its target so that the link
// survives the replacement. A dangling link is replaced like a missing file.
std::string ResolveTarget(const std::string& path) {
  struct stat st;
  if (::lstat(path.c_str(), &st) == 0 && S_ISLNK(st.st_mode)) {
    if (char* real = ::realpath(path.c_str(), nullptr)) {
      std::string resolved(real);
      std::free(real);
      return resolved;
    }
  }
  return path;
}

// Creates a new, empty, uniquely named file in the target's folder.
int CreateSibling(const std::string& target, std::string& siblingPath) {
  static std::atomic<unsigned> counter{0};
  const size_t slash = target.rfind('/');
  const std::string folder = slash == std::string::npos ? std::string() : target.substr(0, slash + 1);
  // Part of the name is enough to recognise the file, and keeps long names within NAME_MAX.
  const std::string name = (slash == std::string::npos ? target : target.substr(slash + 1)).substr(0, 100);
  const auto clock = static_cast<unsigned long long>(
      std::chrono::steady_clock::now().time_since_epoch().count());
  for (int attempt = 0; attempt < 100; ++attempt) {
    char suffix[64];
    std::snprintf(suffix, sizeof suffix, ".%d.%llx.%u.part", static_cast<int>(::getpid()),
                  clock, counter.fetch_add(1));
    siblingPath = folder + "." + name + suffix;
    const int fd = ::open(siblingPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd >= 0 || errno != EEXIST) return fd;
  }
  return -1;
}

ExportResult WriteInPlace(const std::string& target, std::string_view bytes) {
  const int fd = ::open(target.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (fd < 0) return ExportResult::CannotCreate;
  const bool written = WriteAll(fd, bytes);
  const bool closed = ::close(fd) == 0;
  return written && closed ? ExportResult::Ok : ExportResult::WriteFailed;
}

}  // namespace

OpenOutcome OpenOutputFile(const std::string& path, OutputFile& file) {
  file = OutputFile{};
  if (path.empty()) return OpenOutcome::Refused;
  file.target = ResolveTarget(path);

  struct stat existing;
  if (::stat(file.target.c_str(), &existing) == 0) {
    if (S_ISDIR(existing.st_mode)) return OpenOutcome::Refused;
    if (::access(file.target.c_str(), W_OK) != 0) return OpenOutcome::Refused;
    file.keepMode = true;
    file.mode = existing.st_mode & 07777;
  }
  file.fd = CreateSibling(file.target, file.temp);
  if (file.fd < 0) {
    file.temp.clear();
    // A folder we may not add files to can still hold a file we may overwrite.
    return file.keepMode ? OpenOutcome::InPlaceOnly : OpenOutcome::Refused;
  }
  if (file.keepMode && ::fchmod(file.fd, file.mode) != 0) {
    AbandonOutputFile(file);
    return OpenOutcome::Refused;
  }
  return OpenOutcome::Opened;
}

ExportResult FinishOutputFile(OutputFile& file) {
  const bool closed = ::close(file.fd) == 0;
  file.fd = -1;
  if (!closed || ::rename(file.temp.c_str(), file.target.c_str()) != 0) {
    ::unlink(file.temp.c_str());
    return ExportResult::WriteFailed;
  }
  return ExportResult::Ok;
}

void AbandonOutputFile(OutputFile& file) {
  if (file.fd >= 0) ::close(file.fd);
  file.fd = -1;
  if (!file.temp.empty()) ::unlink(file.temp.c_str());
}

ExportResult WriteExportFile(const std::string& path, std::string_view bytes) {
  OutputFile file;
  switch (OpenOutputFile(path, file)) {
    case OpenOutcome::Refused:
      return ExportResult::CannotCreate;
    case OpenOutcome::InPlaceOnly:
      return WriteInPlace(file.target, bytes);
    case OpenOutcome::Opened:
      break;
  }
  if (!WriteAll(file.fd, bytes)) {
    AbandonOutputFile(file);
    return ExportResult::WriteFailed;
  }
  return FinishOutputFile(file);
}

}  // namespace nebro
