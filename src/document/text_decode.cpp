#include "document/text_decode.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>

namespace nebro::document {

namespace {

bool HasUtf16Mark(const unsigned char* d, size_t n) {
  return n >= 2 && ((d[0] == 0xFF && d[1] == 0xFE) || (d[0] == 0xFE && d[1] == 0xFF));
}

bool HasKnownSignature(const unsigned char* d, size_t n) {
  if (n < 4) return false;  // "MZ" alone in a 2-byte file is text
  struct Signature {
    unsigned char bytes[4];
    size_t length;
  };
  static constexpr Signature kSignatures[] = {
      {{0x25, 0x50, 0x44, 0x46}, 4},  // %PDF
      {{0x4D, 0x5A}, 2},              // MZ
      {{0x50, 0x4B}, 2},              // PK
      {{0x89, 0x50, 0x4E, 0x47}, 4},  // \x89PNG
      {{0xFF, 0xD8}, 2},              // JPEG
      {{0x47, 0x49, 0x46}, 3},        // GIF
      {{0x42, 0x4D}, 2},              // BM
      {{0xD0, 0xCF, 0x11, 0xE0}, 4},  // compound document
      {{0x7F, 0x45, 0x4C, 0x46}, 4},  // \x7FELF
      {{0x52, 0x49, 0x46, 0x46}, 4},  // RIFF
  };
  for (const Signature& s : kSignatures) {
    if (std::memcmp(d, s.bytes, s.length) == 0) return true;
  }
  return false;
}

inline char16_t UnitAt(const unsigned char* p, bool bigEndian) {
  return bigEndian ? static_cast<char16_t>((p[0] << 8) | p[1])
                   : static_cast<char16_t>(p[0] | (p[1] << 8));
}

// Four code units at once: true when all of them are below 0x80 (the common case of text).
// `block` holds the eight bytes as they lie in the file.
inline bool FourAsciiUnits(const unsigned char* p, bool bigEndian, uint64_t& block) {
  std::memcpy(&block, p, 8);
  // Per unit, the bits that must be zero: the whole high byte and the top bit of the low byte.
  constexpr bool hostLittle = std::endian::native == std::endian::little;
  const uint64_t mask = (bigEndian == hostLittle) ? 0x80FF80FF80FF80FFull : 0xFF80FF80FF80FF80ull;
  return (block & mask) == 0;
}

inline bool IsHigh(char16_t u) { return u >= 0xD800 && u <= 0xDBFF; }
inline bool IsLow(char16_t u) { return u >= 0xDC00 && u <= 0xDFFF; }

}  // namespace

BinaryVerdict CheckBinary(const unsigned char* data, size_t size) {
  if (HasUtf16Mark(data, size)) return BinaryVerdict::Text;
  if (HasKnownSignature(data, size)) return BinaryVerdict::KnownFormat;
  const size_t n = std::min(size, kBinarySniffBytes);
  // The NUL rule is applied over the whole range before the control rule, so three zero bytes
  // win even when six other control bytes come first.
  int nulls = 0;
  int controls = 0;
  for (size_t i = 0; i < n; ++i) {
    const unsigned char b = data[i];
    if (b >= 0x20) continue;
    if (b == 0) ++nulls;
    if (b != 0x09 && b != 0x0A && b != 0x0D) ++controls;
  }
  if (nulls >= 3) return BinaryVerdict::TooManyNulls;
  if (controls >= 6) return BinaryVerdict::TooManyControls;
  return BinaryVerdict::Text;
}

TextBuffer AllocateTextBuffer(size_t bytes) {
  TextBuffer b;
  b.block = std::make_unique_for_overwrite<char[]>(bytes == 0 ? 1 : bytes);
  b.size = bytes;
  return b;
}

TextEncoding DetectEncoding(const unsigned char* d, size_t n) {
  if (n >= 3 && d[0] == 0xEF && d[1] == 0xBB && d[2] == 0xBF) return TextEncoding::Utf8Bom;
  if (n >= 2 && d[0] == 0xFF && d[1] == 0xFE) return TextEncoding::Utf16Le;
  if (n >= 2 && d[0] == 0xFE && d[1] == 0xFF) return TextEncoding::Utf16Be;
  return TextEncoding::Utf8;
}

size_t Utf16BytesToUtf8Size(const unsigned char* data, size_t size, bool bigEndian) {
  const size_t units = size / 2;
  size_t out = 0;
  for (size_t i = 0; i < units; ++i) {
    uint64_t block;
    while (i + 4 <= units && FourAsciiUnits(data + 2 * i, bigEndian, block)) {
      out += 4;
      i += 4;
    }
    if (i == units) break;
    const char16_t u = UnitAt(data + 2 * i, bigEndian);
    if (u < 0x80) {
      out += 1;
    } else if (u < 0x800) {
      out += 2;
    } else if (IsHigh(u) && i + 1 < units && IsLow(UnitAt(data + 2 * i + 2, bigEndian))) {
      out += 4;
      ++i;
    } else {
      out += 3;  // the rest of the BMP, and U+FFFD for an unpaired surrogate
    }
  }
  return out;
}

size_t Utf16BytesToUtf8(const unsigned char* data, size_t size, bool bigEndian, char* out) {
  const size_t units = size / 2;
  char* o = out;
  const int low = bigEndian ? 1 : 0;  // where the significant byte of an ASCII unit lies
  for (size_t i = 0; i < units; ++i) {
    uint64_t block;
    while (i + 4 <= units && FourAsciiUnits(data + 2 * i, bigEndian, block)) {
      const unsigned char* p = data + 2 * i + low;
      o[0] = static_cast<char>(p[0]);
      o[1] = static_cast<char>(p[2]);
      o[2] = static_cast<char>(p[4]);
      o[3] = static_cast<char>(p[6]);
      o += 4;
      i += 4;
    }
    if (i == units) break;
    char32_t c = UnitAt(data + 2 * i, bigEndian);
    if (c < 0x80) {
      *o++ = static_cast<char>(c);
      continue;
    }
    if (IsHigh(static_cast<char16_t>(c)) && i + 1 < units) {
      const char16_t next = UnitAt(data + 2 * i + 2, bigEndian);
      if (IsLow(next)) {
        c = 0x10000 + ((c - 0xD800) << 10) + (next - 0xDC00);
        ++i;
      }
    }
    if (c >= 0xD800 && c <= 0xDFFF) c = 0xFFFD;
    if (c < 0x800) {
      *o++ = static_cast<char>(0xC0 | (c >> 6));
      *o++ = static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      *o++ = static_cast<char>(0xE0 | (c >> 12));
      *o++ = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      *o++ = static_cast<char>(0x80 | (c & 0x3F));
    } else {
      *o++ = static_cast<char>(0xF0 | (c >> 18));
      *o++ = static_cast<char>(0x80 | ((c >> 12) & 0x3F));
      *o++ = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      *o++ = static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  return static_cast<size_t>(o - out);
}

TextEncoding DecodeToUtf8(TextBuffer& raw) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(raw.data());
  const TextEncoding encoding = DetectEncoding(bytes, raw.size);
  switch (encoding) {
    case TextEncoding::Utf8Bom:
      raw.offset += 3;
      raw.size -= 3;
      break;
    case TextEncoding::Utf16Le:
    case TextEncoding::Utf16Be: {
      const bool bigEndian = encoding == TextEncoding::Utf16Be;
      const unsigned char* units = bytes + 2;
      const size_t unitBytes = raw.size - 2;
      const size_t needed = Utf16BytesToUtf8Size(units, unitBytes, bigEndian);
      TextBuffer text = AllocateTextBuffer(needed);
      Utf16BytesToUtf8(units, unitBytes, bigEndian, text.block.get());
      raw = std::move(text);  // frees the raw bytes
      break;
    }
    default:
      break;
  }
  return encoding;
}

std::optional<LineEndingMode> DetectLineEndingMode(std::string_view text) {
  const bool hasCr = text.find('\r') != std::string_view::npos;
  const bool hasLf = text.find('\n') != std::string_view::npos;
  if (hasCr) return hasLf ? LineEndingMode::CRLF : LineEndingMode::CR;
  if (hasLf) return LineEndingMode::LF;
  return std::nullopt;
}

}  // namespace nebro::document
