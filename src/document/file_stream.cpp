#include "document/file_stream.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

#include "document/document_texts.h"

namespace nebro::document {
namespace {

constexpr size_t kChunk = 1u << 20;

// Files whose size says 0 but that have content (/proc, /sys) are read whole into memory first,
// at most this much.
constexpr uint64_t kSizelessCap = 64u << 20;

// Where the bytes come from: the file itself, or, for a sizeless file, what was read of it.
struct Source {
  int fd = -1;
  const std::string* bytes = nullptr;
};

// Reads up to `want` bytes at `offset`; returns the count, or -1 with `error` set.
ssize_t ReadAt(const Source& source, char* out, size_t want, uint64_t offset, int& error) {
  if (source.bytes) {
    if (offset >= source.bytes->size()) return 0;
    const size_t n = static_cast<size_t>(std::min<uint64_t>(want, source.bytes->size() - offset));
    std::memcpy(out, source.bytes->data() + offset, n);
    return static_cast<ssize_t>(n);
  }
  const int fd = source.fd;
  size_t done = 0;
  while (done < want) {
    const ssize_t got = pread(fd, out + done, want - done, static_cast<off_t>(offset + done));
    if (got < 0) {
      if (errno == EINTR) continue;
      error = errno;
      return -1;
    }
    if (got == 0) break;
    done += static_cast<size_t>(got);
  }
  return static_cast<ssize_t>(done);
}

std::string Format(const char* format, auto... args) {
  char buffer[256];
  const int n = std::snprintf(buffer, sizeof buffer, format, args...);
  return std::string(buffer, n < 0 ? 0 : std::min<size_t>(n, sizeof buffer - 1));
}

inline bool IsHighSurrogateAt(const unsigned char* p, bool bigEndian) {
  const unsigned hi = bigEndian ? p[0] : p[1];
  return hi >= 0xD8 && hi <= 0xDB;
}

// Walks the UTF-16 bytes after the mark in chunks of whole code units, never splitting a
// surrogate pair, and calls `piece(bytes, length)` for each run. False when reading failed.
template <typename Piece>
bool ForEachUtf16Run(const Source& fd, uint64_t start, uint64_t end, bool bigEndian, char* buffer, int& error,
                     Piece&& piece) {
  uint64_t offset = start;
  size_t carried = 0;  // a held-back high surrogate at the front of the buffer
  const uint64_t usable = start + ((end - start) & ~uint64_t{1});  // an odd last byte is dropped
  while (offset < usable) {
    const size_t want = static_cast<size_t>(std::min<uint64_t>(kChunk - carried, usable - offset));
    const ssize_t got = ReadAt(fd, buffer + carried, want, offset, error);
    if (got < 0 || static_cast<size_t>(got) != want) {
      if (got >= 0) error = 0;
      return false;
    }
    offset += want;
    size_t length = carried + want;
    carried = 0;
    if (offset < usable && length >= 2 &&
        IsHighSurrogateAt(reinterpret_cast<unsigned char*>(buffer) + length - 2, bigEndian)) {
      carried = 2;  // its partner is in the next chunk
      length -= 2;
    }
    piece(reinterpret_cast<const unsigned char*>(buffer), length);
    if (carried) std::memcpy(buffer, buffer + length, 2);
  }
  return true;
}

// Reads a file to its end, or false when it is longer than `cap` or reading fails.
bool ReadWhole(int fd, uint64_t cap, std::string& out, int& error) {
  char buffer[65536];
  while (true) {
    const ssize_t got = read(fd, buffer, sizeof buffer);
    if (got < 0) {
      if (errno == EINTR) continue;
      error = errno;
      return false;
    }
    if (got == 0) return true;
    if (out.size() + static_cast<size_t>(got) > cap) return false;
    out.append(buffer, static_cast<size_t>(got));
  }
}

}  // namespace

LoadResult StreamDocumentFile(OpenedDocument opened, uint64_t maxBytes, const TextSink& sink) {
  LoadResult r;
  r.trace = std::move(opened.trace);
  r.readOnly = opened.readOnly;
  r.locked = opened.locked;
  r.lock = std::move(opened.fd);
  auto refuse = [&r](LoadDecision d, std::string_view message, std::string_view title, std::string trace) {
    r.decision = d;
    r.message = std::string(message);
    r.title = std::string(title);
    if (!trace.empty()) r.trace.push_back(std::move(trace));
    r.lock.Reset();
    return std::move(r);
  };
  if (!r.lock.Valid()) {
    r.error = opened.error;
    return refuse(LoadDecision::OpenFailed, OpenErrorText(opened.error, opened.path), kTitleError, {});
  }
  struct stat st {};
  if (fstat(r.lock.Get(), &st) != 0) {
    r.error = errno;
    return refuse(LoadDecision::SizeFailed, kTextCannotGetSize, kTitleErrorMangled,
                  "Nebro: ERROR - Cannot get file size");
  }
  // Pipes, devices and sockets have no end to read to (or never say where it is).
  if (!S_ISREG(st.st_mode)) {
    return refuse(LoadDecision::NotRegular, kTextNotRegular, kTitleCannotOpen,
                  "Nebro: ERROR - Not a regular file (device, pipe or socket)");
  }
  uint64_t size = st.st_size < 0 ? 0 : static_cast<uint64_t>(st.st_size);
  Source fd{r.lock.Get(), nullptr};
  std::string sizeless;
  if (size == 0) {
    int error = 0;
    if (!ReadWhole(fd.fd, kSizelessCap, sizeless, error)) {
      r.error = error;
      return refuse(error ? LoadDecision::ReadFailed : LoadDecision::TooLarge,
                    error ? kTextCannotRead : kTextSizelessTooLong, kTitleErrorMangled,
                    error ? "Nebro: ERROR - Cannot read file" : "Nebro: ERROR - File without a size is too long");
    }
    size = sizeless.size();
    fd.bytes = &sizeless;
  }
  r.fileSize = size;
  const uint64_t limit = std::min<uint64_t>(maxBytes, std::numeric_limits<ptrdiff_t>::max());
  if (size > limit) {
    return refuse(LoadDecision::TooLarge,
                  Format("File is too large to open (%" PRIu64 " bytes).\n\n"
                         "The editor can hold at most %" PRIu64 " bytes on this computer.",
                         size, limit),
                  kTitleErrorMangled, Format("Nebro: ERROR - File too large (%" PRIu64 " bytes)", size));
  }
  auto outOfMemory = [&] {
    return refuse(LoadDecision::TooLarge, Format("Not enough memory to open this file (%" PRIu64 " bytes).", size),
                  kTitleErrorMangled, Format("Nebro: ERROR - Not enough memory for %" PRIu64 " bytes", size));
  };
  auto readFailed = [&](int error) {
    r.error = error;
    return refuse(LoadDecision::ReadFailed, kTextCannotRead, kTitleErrorMangled, "Nebro: ERROR - Cannot read file");
  };

  std::unique_ptr<char[]> buffer(new (std::nothrow) char[kChunk]);
  if (!buffer) return outOfMemory();

  // The refusals and the byte-order mark look at the first kilobyte only.
  int error = 0;
  const size_t headSize = static_cast<size_t>(std::min<uint64_t>(size, kBinarySniffBytes));
  if (ReadAt(fd, buffer.get(), headSize, 0, error) != static_cast<ssize_t>(headSize)) return readFailed(error);
  const auto* head = reinterpret_cast<const unsigned char*>(buffer.get());
  switch (CheckBinary(head, headSize)) {
    case BinaryVerdict::KnownFormat:
      return refuse(LoadDecision::KnownBinary, kTextKnownBinary, kTitleCannotOpen,
                    "Nebro: ERROR - Known binary format detected (PDF/EXE/ZIP/Image)");
    case BinaryVerdict::TooManyNulls:
      return refuse(LoadDecision::TooManyNulls, kTextTooManyNulls, kTitleCannotOpen,
                    "Nebro: ERROR - Binary file detected (too many nulls)");
    case BinaryVerdict::TooManyControls:
      return refuse(LoadDecision::TooManyControls, kTextTooManyControls, kTitleCannotOpen,
                    "Nebro: ERROR - Binary file detected (too many control chars)");
    case BinaryVerdict::Text:
      break;
  }
  r.encoding = DetectEncoding(head, headSize);

  bool hasCr = false, hasLf = false;
  auto noteEndings = [&](const char* p, size_t n) {
    if (!hasCr) hasCr = std::memchr(p, '\r', n) != nullptr;
    if (!hasLf) hasLf = std::memchr(p, '\n', n) != nullptr;
  };

  if (r.encoding == TextEncoding::Utf16Le || r.encoding == TextEncoding::Utf16Be) {
    const bool big = r.encoding == TextEncoding::Utf16Be;
    // First pass: the exact size of the UTF-8 text, so the editor allocates once.
    size_t total = 0;
    if (!ForEachUtf16Run(fd, 2, size, big, buffer.get(), error, [&](const unsigned char* p, size_t n) {
          total += Utf16BytesToUtf8Size(p, n, big);
        })) {
      return readFailed(error);
    }
    if (!sink.begin(total)) return outOfMemory();
    std::unique_ptr<char[]> converted(new (std::nothrow) char[kChunk / 2 * 3 + 4]);
    if (!converted) return outOfMemory();
    bool sinkOk = true;
    if (!ForEachUtf16Run(fd, 2, size, big, buffer.get(), error, [&](const unsigned char* p, size_t n) {
          if (!sinkOk) return;
          const size_t out = Utf16BytesToUtf8(p, n, big, converted.get());
          noteEndings(converted.get(), out);
          sinkOk = sink.add(converted.get(), out);
        })) {
      return readFailed(error);
    }
    if (!sinkOk) return outOfMemory();
  } else {
    const uint64_t skip = r.encoding == TextEncoding::Utf8Bom ? 3 : 0;
    if (!sink.begin(static_cast<size_t>(size - skip))) return outOfMemory();
    for (uint64_t offset = skip; offset < size;) {
      const size_t want = static_cast<size_t>(std::min<uint64_t>(kChunk, size - offset));
      if (ReadAt(fd, buffer.get(), want, offset, error) != static_cast<ssize_t>(want)) return readFailed(error);
      noteEndings(buffer.get(), want);
      if (!sink.add(buffer.get(), want)) return outOfMemory();
      offset += want;
    }
  }
  r.trace.push_back("Nebro: File read successfully");
  if (hasCr) r.eolMode = hasLf ? LineEndingMode::CRLF : LineEndingMode::CR;
  else if (hasLf) r.eolMode = LineEndingMode::LF;
  r.decision = LoadDecision::Loaded;
  return r;
}

}  // namespace nebro::document
