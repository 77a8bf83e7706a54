#include "common/utf.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace nebro {

void AppendUtf8(std::string& out, char32_t c) {
  if (c < 0x80) {
    out.push_back(static_cast<char>(c));
  } else if (c < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (c >> 6)));
    out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else if (c < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | (c >> 12)));
    out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | (c >> 18)));
    out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
  }
}

namespace {

// Writes `c` as one unit or a surrogate pair at `out`; returns the end of what it wrote.
char16_t* PutUtf16(char16_t* out, char32_t c) {
  if (c < 0x10000) {
    *out++ = static_cast<char16_t>(c);
    return out;
  }
  c -= 0x10000;
  *out++ = static_cast<char16_t>(0xD800 + (c >> 10));
  *out++ = static_cast<char16_t>(0xDC00 + (c & 0x3FF));
  return out;
}

}  // namespace

void AppendUtf16(std::u16string& out, char32_t c) {
  char16_t units[2];
  out.append(units, PutUtf16(units, c));
}

char32_t DecodeUtf8At(std::string_view text, size_t pos, size_t* length) {
  const auto* s = reinterpret_cast<const unsigned char*>(text.data());
  const unsigned char b = s[pos];
  *length = 1;
  if (b < 0x80) return b;
  size_t len = 0;
  char32_t c = 0;
  char32_t min = 0;
  if (b >= 0xC2 && b <= 0xDF) {
    len = 2; c = b & 0x1F; min = 0x80;
  } else if (b >= 0xE0 && b <= 0xEF) {
    len = 3; c = b & 0x0F; min = 0x800;
  } else if (b >= 0xF0 && b <= 0xF4) {
    len = 4; c = b & 0x07; min = 0x10000;
  } else {
    return 0xFFFD;
  }
  if (pos + len > text.size()) return 0xFFFD;
  for (size_t k = 1; k < len; ++k) {
    if ((s[pos + k] & 0xC0) != 0x80) return 0xFFFD;
    c = (c << 6) | (s[pos + k] & 0x3F);
  }
  if (c < min || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) return 0xFFFD;
  *length = len;
  return c;
}

std::u16string Utf8ToUtf16(std::string_view in) {
  // A text never has more UTF-16 units than UTF-8 bytes, so the units are written into a string
  // of that size and it is cut to what was written.
  std::u16string out(in.size(), u'\0');
  char16_t* o = out.data();
  const auto* s = reinterpret_cast<const unsigned char*>(in.data());
  const size_t n = in.size();
  size_t i = 0;
  while (i < n) {
#if defined(__SSE2__)
    // Runs of ASCII, the common case, go sixteen bytes at a time.
    while (i + 16 <= n) {
      const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
      if (_mm_movemask_epi8(bytes) != 0) break;
      const __m128i zero = _mm_setzero_si128();
      _mm_storeu_si128(reinterpret_cast<__m128i*>(o), _mm_unpacklo_epi8(bytes, zero));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(o + 8), _mm_unpackhi_epi8(bytes, zero));
      i += 16;
      o += 16;
    }
    if (i >= n) break;
#endif
    if (s[i] < 0x80) {
      *o++ = s[i++];
      continue;
    }
    size_t len;
    o = PutUtf16(o, DecodeUtf8At(in, i, &len));
    i += len;
  }
  out.resize(static_cast<size_t>(o - out.data()));
  return out;
}

std::string Utf16ToUtf8(std::u16string_view in) {
  std::string out;
  out.reserve(in.size() + in.size() / 2);
  const size_t n = in.size();
  for (size_t i = 0; i < n; ++i) {
    char32_t c = in[i];
    if (c < 0x80) {
      out.push_back(static_cast<char>(c));
      continue;
    }
    if (c >= 0xD800 && c <= 0xDBFF && i + 1 < n && in[i + 1] >= 0xDC00 && in[i + 1] <= 0xDFFF) {
      c = 0x10000 + ((c - 0xD800) << 10) + (in[i + 1] - 0xDC00);
      ++i;
    } else if (c >= 0xD800 && c <= 0xDFFF) {
      c = 0xFFFD;
    }
    AppendUtf8(out, c);
  }
  return out;
}

}  // namespace nebro
