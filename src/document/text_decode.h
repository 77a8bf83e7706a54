// What a loaded file's bytes mean: the binary refusals, the byte-order mark, UTF-16 to UTF-8 and
// the line-ending mode. Pure functions over bytes; safe on any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace nebro::document {

// The encoding recorded for the open document. Saving always writes UTF-8 and only looks at
// whether the file had a UTF-8 byte-order mark.
enum class TextEncoding : int {
  Utf8Bom = 0,
  Utf8 = 1,
  Utf16Le = 2,
  Utf16Be = 3,
  Ansi = 4,  // never produced by loading
};

// Scintilla's end-of-line modes (SC_EOL_CRLF, SC_EOL_CR, SC_EOL_LF).
enum class LineEndingMode : int {
  CRLF = 0,
  CR = 1,
  LF = 2,
};

// Only this many leading bytes are looked at for NUL and control bytes.
inline constexpr size_t kBinarySniffBytes = 1024;

enum class BinaryVerdict {
  Text,
  KnownFormat,     // PDF, executable, ZIP, PNG, JPEG, GIF, bitmap, compound document, ELF, RIFF
  TooManyNulls,    // three zero bytes in the sniffed range
  TooManyControls, // six control bytes (other than TAB, LF, CR) in the sniffed range
};

// The three refusals in their order. A UTF-16 byte-order mark bypasses all three; the
// signatures need at least 4 bytes.
BinaryVerdict CheckBinary(const unsigned char* data, size_t size);

// One heap block of bytes with the text starting `offset` bytes in, so that a byte-order mark
// is skipped without copying the rest. Allocated without zero-filling.
struct TextBuffer {
  std::unique_ptr<char[]> block;
  size_t offset = 0;
  size_t size = 0;  // bytes of text after `offset`

  const char* data() const { return block.get() + offset; }
  std::string_view view() const { return {data(), size}; }
};

// Allocates `bytes` without initialising them (at least one byte, so data() is never null).
// Throws std::bad_alloc like new.
TextBuffer AllocateTextBuffer(size_t bytes);

// The encoding that the leading bytes announce: Utf8Bom (EF BB BF, needs 3 bytes), Utf16Le
// (FF FE), Utf16Be (FE FF), else Utf8.
TextEncoding DetectEncoding(const unsigned char* data, size_t size);

// Turns the raw file bytes in `raw` into the editor's UTF-8 text. UTF-8 (with or without a mark)
// keeps the same block and only moves the offset past the mark; UTF-16 is converted into a new
// block of exactly the needed size and `raw` is freed. Returns the encoding found.
// Throws std::bad_alloc when the converted text does not fit in memory (raw is then untouched).
TextEncoding DecodeToUtf8(TextBuffer& raw);

// UTF-16 code units (little- or big-endian bytes, an odd trailing byte ignored) to UTF-8; each
// unpaired surrogate becomes U+FFFD. The exact output size first, then the conversion into a
// buffer of at least that size; returns the bytes written.
size_t Utf16BytesToUtf8Size(const unsigned char* data, size_t size, bool bigEndian);
size_t Utf16BytesToUtf8(const unsigned char* data, size_t size, bool bigEndian, char* out);

// The end-of-line mode the text suggests: any CR gives CRLF when there is also any LF anywhere,
// else CR; only LF gives LF; neither gives nothing (the editor keeps its mode).
std::optional<LineEndingMode> DetectLineEndingMode(std::string_view text);

}  // namespace nebro::document
