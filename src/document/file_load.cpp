#include "document/file_load.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <limits>
#include <new>

#include "common/utf.h"
#include "document/document_texts.h"

namespace nebro {

namespace {

// Writing was refused, but reading may still work: a read-only file, a read-only mount, an
// immutable file, a running executable.
bool WriteRefused(int error) {
  return error == EACCES || error == EPERM || error == EROFS || error == ETXTBSY;
}

int OpenFile(const std::string& path, int access) {
  int fd;
  do {
    // O_NONBLOCK keeps a FIFO from hanging the open; it changes nothing for regular files.
    fd = open(path.c_str(), access | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
  } while (fd < 0 && errno == EINTR);
  return fd;
}

std::string Format(const char* format, auto... args) {
  char buffer[256];
  const int n = std::snprintf(buffer, sizeof buffer, format, args...);
  return std::string(buffer, n < 0 ? 0 : std::min<size_t>(n, sizeof buffer - 1));
}

LoadResult Refuse(LoadResult r, LoadDecision decision, std::string_view message,
                  std::string_view title, std::string trace) {
  r.decision = decision;
  r.message = std::string(message);
  r.title = std::string(title);
  if (!trace.empty()) r.trace.push_back(std::move(trace));
  r.text = TextBuffer{};
  r.lock.Reset();
  return r;
}

// Reads exactly `size` bytes from the start; false on an error or when the file ends early.
bool ReadWhole(int fd, char* out, uint64_t size, int& error) {
  uint64_t done = 0;
  while (done < size) {
    // One read() moves at most about 2 GiB on Linux; ask for 1 GiB at a time.
    const size_t want = static_cast<size_t>(std::min<uint64_t>(size - done, 1ull << 30));
    const ssize_t got = pread(fd, out + done, want, static_cast<off_t>(done));
    if (got < 0) {
      if (errno == EINTR) continue;
      error = errno;
      return false;
    }
    if (got == 0) {
      error = 0;  // the file shrank since its size was taken
      return false;
    }
    done += static_cast<uint64_t>(got);
  }
  return true;
}

}  // namespace

OpenedDocument OpenDocumentFile(const std::string& path) {
  OpenedDocument opened;
  opened.path = path;
  int fd = OpenFile(path, O_RDWR);
  if (fd < 0 && WriteRefused(errno)) {
    opened.trace.push_back("Nebro: Write access denied, retrying read-only");
    fd = OpenFile(path, O_RDONLY);
    if (fd >= 0) opened.readOnly = true;
  }
  if (fd < 0) {
    opened.error = errno;
    opened.trace.push_back(Format("Nebro: ERROR - Failed to open file, error code: %d", errno));
    return opened;
  }
  opened.fd = UniqueFd(fd);
  struct stat st {};
  if (fstat(fd, &st) == 0 && S_ISDIR(st.st_mode)) {
    opened.fd.Reset();
    opened.error = EISDIR;
    opened.trace.push_back(Format("Nebro: ERROR - Failed to open file, error code: %d", EISDIR));
    return opened;
  }
  if (!opened.readOnly) {
    switch (LockWholeFile(fd)) {
      case LockOutcome::Locked:
        opened.locked = true;
        break;
      case LockOutcome::HeldElsewhere:
        opened.fd.Reset();
        opened.error = kOpenErrorLocked;
        opened.trace.push_back("Nebro: ERROR - Failed to open file, locked by another program");
        return opened;
      case LockOutcome::Unsupported:
        break;  // shown and editable, just not guarded
    }
  }
  opened.trace.push_back("Nebro: File opened successfully");
  return opened;
}

LoadResult ReadDocumentFile(OpenedDocument opened, uint64_t maxBytes) {
  LoadResult r;
  r.trace = std::move(opened.trace);
  r.readOnly = opened.readOnly;
  r.locked = opened.locked;
  r.lock = std::move(opened.fd);
  if (!r.lock.Valid()) {
    r.error = opened.error;
    return Refuse(std::move(r), LoadDecision::OpenFailed, OpenErrorText(opened.error, opened.path),
                  kTitleError, {});
  }
  auto refuse = [&](LoadDecision d, std::string_view message, std::string trace) {
    return Refuse(std::move(r), d, message, kTitleErrorMangled, std::move(trace));
  };

  struct stat st {};
  if (fstat(r.lock.Get(), &st) != 0) {
    r.error = errno;
    return refuse(LoadDecision::SizeFailed, kTextCannotGetSize, "Nebro: ERROR - Cannot get file size");
  }
  const uint64_t size = st.st_size < 0 ? 0 : static_cast<uint64_t>(st.st_size);
  r.fileSize = size;
  const uint64_t limit = std::min<uint64_t>(maxBytes, std::numeric_limits<ptrdiff_t>::max());
  if (size > limit) {
    return refuse(LoadDecision::TooLarge,
                  Format("File is too large to open (%" PRIu64 " bytes).\n\n"
                         "The editor can hold at most %" PRIu64 " bytes on this computer.",
                         size, limit),
                  Format("Nebro: ERROR - File too large (%" PRIu64 " bytes)", size));
  }
  auto outOfMemory = [&] {
    return refuse(LoadDecision::TooLarge,
                  Format("Not enough memory to open this file (%" PRIu64 " bytes).", size),
                  Format("Nebro: ERROR - Not enough memory for %" PRIu64 " bytes", size));
  };

  try {
    r.text = AllocateTextBuffer(static_cast<size_t>(size));
  } catch (const std::bad_alloc&) {
    return outOfMemory();
  }
  int readError = 0;
  if (!ReadWhole(r.lock.Get(), r.text.block.get(), size, readError)) {
    r.error = readError;
    return refuse(LoadDecision::ReadFailed, kTextCannotRead, "Nebro: ERROR - Cannot read file");
  }
  r.trace.push_back("Nebro: File read successfully");

  const auto* bytes = reinterpret_cast<const unsigned char*>(r.text.data());
  switch (CheckBinary(bytes, r.text.size)) {
    case BinaryVerdict::KnownFormat:
      return Refuse(std::move(r), LoadDecision::KnownBinary, kTextKnownBinary, kTitleCannotOpen,
                    "Nebro: ERROR - Known binary format detected (PDF/EXE/ZIP/Image)");
    case BinaryVerdict::TooManyNulls:
      return Refuse(std::move(r), LoadDecision::TooManyNulls, kTextTooManyNulls, kTitleCannotOpen,
                    "Nebro: ERROR - Binary file detected (too many nulls)");
    case BinaryVerdict::TooManyControls:
      return Refuse(std::move(r), LoadDecision::TooManyControls, kTextTooManyControls,
                    kTitleCannotOpen, "Nebro: ERROR - Binary file detected (too many control chars)");
    case BinaryVerdict::Text:
      break;
  }

  try {
    r.encoding = DecodeToUtf8(r.text);
  } catch (const std::bad_alloc&) {
    return outOfMemory();
  }
  r.eolMode = DetectLineEndingMode(r.text.view());
  r.decision = LoadDecision::Loaded;
  return r;
}

LoadResult LoadDocumentFile(const std::string& path, uint64_t maxBytes) {
  return ReadDocumentFile(OpenDocumentFile(path), maxBytes);
}

uint64_t DefaultMaxLoadBytes() {
  const long pages = sysconf(_SC_PHYS_PAGES);
  const long pageSize = sysconf(_SC_PAGESIZE);
  if (pages <= 0 || pageSize <= 0) return std::numeric_limits<ptrdiff_t>::max();
  return static_cast<uint64_t>(pages) * static_cast<uint64_t>(pageSize) / 3;
}

std::string DisplayableUtf8(std::string_view bytes) { return Utf16ToUtf8(Utf8ToUtf16(bytes)); }

std::string LimitUtf16Units(std::string text, size_t maxUnits) {
  size_t units = 0;
  size_t i = 0;
  while (i < text.size()) {
    const auto lead = static_cast<unsigned char>(text[i]);
    const size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    const size_t width = length == 4 ? 2 : 1;  // a surrogate pair on the other side
    if (units + width > maxUnits) break;
    units += width;
    i += length;
  }
  text.resize(std::min(i, text.size()));
  return text;
}

std::string OpenErrorText(int code, std::string_view path) {
  std::string text;
  if (code == kOpenErrorLocked) {
    text = kTextLockedElsewhere;
  } else if (code == ENOENT || code == ENOTDIR) {
    text = Format("File not found (error %d).\n\n", code) + DisplayableUtf8(path);
  } else if (code == EACCES || code == EPERM) {
    text = Format(
        "Access denied (error %d).\n\n"
        "The file may be read-only, protected, or your account lacks permission.",
        code);
  } else {
    text = Format("Cannot open file (error %d).\n\n", code) + DisplayableUtf8(path);
  }
  return LimitUtf16Units(std::move(text), 511);
}

}  // namespace nebro
