#include "document/file_load.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <limits>
#include <new>

#include "common/utf.h"
#include "document/document_texts.h"
#include "document/file_stream.h"

namespace nebro::document {

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
  // The same decisions as the streaming load; the text is gathered into one exact-size block.
  TextBuffer text;
  size_t filled = 0;
  TextSink sink{[&](size_t total) {
                  try {
                    text = AllocateTextBuffer(total);
                  } catch (const std::bad_alloc&) {
                    return false;
                  }
                  text.size = total;
                  return true;
                },
                [&](const char* data, size_t length) {
                  std::memcpy(text.block.get() + filled, data, length);
                  filled += length;
                  return true;
                }};
  LoadResult r = StreamDocumentFile(std::move(opened), maxBytes, sink);
  if (r.decision == LoadDecision::Loaded) r.text = std::move(text);
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

}  // namespace nebro::document
