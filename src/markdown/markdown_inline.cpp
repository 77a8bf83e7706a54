// Inline Markdown and HTML escaping over UTF-8 bytes.
//
// Every delimiter and every character that needs escaping is ASCII, and an ASCII byte is never
// part of a multi-byte UTF-8 sequence, so working on bytes gives the same result as working on
// UTF-16 code units: "the previous character is an asterisk" means the same in both. What needs
// care is what the UTF-16 text would hold: ill-formed input comes out as U+FFFD byte for byte the
// way Utf8ToUtf16 replaces it, and a character beyond U+FFFF as the two U+FFFD that converting
// its surrogates one unit at a time gives.
#include "markdown/markdown_inline.h"

#include <algorithm>
#include <array>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "common/utf.h"
#include "markdown/markdown_html.h"

namespace nebro::markdown {
namespace detail {
namespace {

enum Kind : uint8_t {
  kText,
  kEscape,  // & < > " ' and tab
  kAsterisk,
  kUnderscore,
  kBacktick,
  kHigh,  // non-ASCII
};

constexpr std::array<uint8_t, 256> MakeKinds(bool withDelimiters) {
  std::array<uint8_t, 256> kinds{};
  for (int c = 0x80; c < 0x100; ++c) kinds[c] = kHigh;
  for (unsigned char c : {'&', '<', '>', '"', '\'', '\t'}) kinds[c] = kEscape;
  if (withDelimiters) {
    kinds['*'] = kAsterisk;
    kinds['_'] = kUnderscore;
    kinds['`'] = kBacktick;
  }
  return kinds;
}

constexpr std::array<uint8_t, 256> kInlineKinds = MakeKinds(true);
constexpr std::array<uint8_t, 256> kEscapeKinds = MakeKinds(false);

// A short output text padded to sixteen bytes: the loops store all sixteen at once and advance by
// `size`, which spares a branch per piece.
struct Piece {
  char text[15];
  uint8_t size;
};

constexpr Piece MakePiece(std::string_view text) {
  Piece p{};
  for (size_t k = 0; k < text.size(); ++k) p.text[k] = text[k];
  p.size = static_cast<uint8_t>(text.size());
  return p;
}

constexpr std::array<Piece, 256> MakeEscapes() {
  std::array<Piece, 256> pieces{};
  pieces['&'] = MakePiece("&amp;");
  pieces['<'] = MakePiece("&lt;");
  pieces['>'] = MakePiece("&gt;");
  pieces['"'] = MakePiece("&quot;");
  pieces['\''] = MakePiece("&#39;");
  pieces['\t'] = MakePiece("    ");
  return pieces;
}

constexpr std::array<Piece, 256> kEscapes = MakeEscapes();
// Indexed by whether the element is open: the tag that toggles it.
constexpr Piece kEmTags[2] = {MakePiece("<em>"), MakePiece("</em>")};
constexpr Piece kStrongTags[2] = {MakePiece("<strong>"), MakePiece("</strong>")};
constexpr Piece kCodeTags[2] = {MakePiece("<code>"), MakePiece("</code>")};

inline char* PutPiece(char* o, const Piece& p) {
  std::memcpy(o, &p, sizeof p);
  return o + p.size;
}

// No input byte grows by more than this: a backtick becomes "</code>". A step of the loops
// consumes at most 4 bytes, so a chunk may run 3 bytes past its end, and a piece stores sixteen.
constexpr size_t kMaxGrowth = 7;
constexpr size_t kChunk = 64 * 1024;
constexpr size_t ChunkSpace(size_t bytes) { return (bytes + 4) * kMaxGrowth + sizeof(Piece); }

// Length of the well-formed UTF-8 sequence that starts with the non-ASCII byte s[i], or 0 when
// that byte starts none (the rules of Utf8ToUtf16: no overlong forms, no surrogates, nothing
// above U+10FFFF, no sequence cut short by the end).
inline size_t SequenceLength(const unsigned char* s, size_t i, size_t n) {
  const unsigned b = s[i];
  auto cont = [&](size_t k) { return (s[i + k] & 0xC0) == 0x80; };
  if (b >= 0xC2 && b <= 0xDF) return i + 1 < n && cont(1) ? 2 : 0;
  if (b >= 0xE0 && b <= 0xEF) {
    if (i + 2 >= n || !cont(1) || !cont(2)) return 0;
    if (b == 0xE0 && s[i + 1] < 0xA0) return 0;
    if (b == 0xED && s[i + 1] >= 0xA0) return 0;
    return 3;
  }
  if (b >= 0xF0 && b <= 0xF4) {
    if (i + 3 >= n || !cont(1) || !cont(2) || !cont(3)) return 0;
    if (b == 0xF0 && s[i + 1] < 0x90) return 0;
    if (b == 0xF4 && s[i + 1] >= 0x90) return 0;
    return 4;
  }
  return 0;
}

constexpr char kReplacement[] = "\xEF\xBF\xBD";  // U+FFFD

// Copies the character at s[i] (non-ASCII) or what stands for it; returns the bytes consumed.
// Literal text is converted one UTF-16 code unit at a time, so a character beyond U+FFFF, which
// UTF-16 holds as a surrogate pair, comes out as two U+FFFD.
inline size_t CopyHigh(const unsigned char* s, size_t i, size_t n, char*& o) {
  const size_t len = SequenceLength(s, i, n);
  if (len == 0) {
    std::memcpy(o, kReplacement, 3);
    o += 3;
    return 1;
  }
  if (len == 4) {
    std::memcpy(o, kReplacement, 3);
    std::memcpy(o + 3, kReplacement, 3);
    o += 6;
    return 4;
  }
  std::memcpy(o, s + i, len);
  o += len;
  return len;
}

// Copies plain bytes from s[i] on to o, sixteen at a time, stopping at the first byte that needs
// a look (a delimiter when `withDelimiters`, a byte to escape, a non-ASCII byte) or where fewer
// than sixteen bytes are left before `stop`. The caller's space covers the full store.
template <bool withDelimiters>
inline void SkipPlain(const unsigned char* s, size_t& i, size_t stop, char*& o) {
#if defined(__SSE2__)
  while (stop - i >= 16) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
    auto is = [&v](char c) { return _mm_cmpeq_epi8(v, _mm_set1_epi8(c)); };
    __m128i hit = _mm_or_si128(_mm_or_si128(is('&'), is('<')), _mm_or_si128(is('>'), is('"')));
    hit = _mm_or_si128(hit, _mm_or_si128(is('\''), is('\t')));
    if constexpr (withDelimiters) {
      hit = _mm_or_si128(hit, _mm_or_si128(_mm_or_si128(is('*'), is('_')), is('`')));
    }
    // The sign bit marks non-ASCII bytes by itself.
    const unsigned mask = static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(hit, v)));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(o), v);
    if (mask != 0) {
      const unsigned k = static_cast<unsigned>(__builtin_ctz(mask));
      i += k;
      o += k;
      return;
    }
    i += 16;
    o += 16;
  }
#else
  (void)s, (void)i, (void)stop, (void)o;
#endif
}

}  // namespace

void HtmlBuffer::Grow(size_t n) {
  const size_t wanted = std::max({used_ + n, out_.size() * 2, size_t{4096}});
  out_.resize(wanted);
}

std::string UnitsToUtf8(std::u16string_view text) {
  // Sized exactly first, then written through a pointer: whole documents pass through here.
  size_t size = 0;
  for (const char16_t unit : text) size += unit < 0x80 ? 1 : unit < 0x800 ? 2 : 3;
  std::string utf8(size, '\0');
  char* o = utf8.data();
  for (const char16_t unit : text) {
    if (unit < 0x80) {
      *o++ = static_cast<char>(unit);
    } else if (unit < 0x800) {
      *o++ = static_cast<char>(0xC0 | (unit >> 6));
      *o++ = static_cast<char>(0x80 | (unit & 0x3F));
    } else if (unit >= 0xD800 && unit <= 0xDFFF) {
      std::memcpy(o, kReplacement, 3);
      o += 3;
    } else {
      *o++ = static_cast<char>(0xE0 | (unit >> 12));
      *o++ = static_cast<char>(0x80 | ((unit >> 6) & 0x3F));
      *o++ = static_cast<char>(0x80 | (unit & 0x3F));
    }
  }
  return utf8;
}

void AppendInline(HtmlBuffer& out, const unsigned char* s, size_t n) {
  bool strongOpen = false;
  bool emOpen = false;
  bool codeOpen = false;
  size_t i = 0;
  while (i < n) {
    const size_t stop = std::min(n, i + kChunk);
    char* o = out.Space(ChunkSpace(stop - i));
    while (i < stop) {
      SkipPlain<true>(s, i, stop, o);
      if (i == stop) break;
      const unsigned char c = s[i];
      switch (kInlineKinds[c]) {
        case kText:
          *o++ = static_cast<char>(c);
          ++i;
          break;
        case kEscape:
          o = PutPiece(o, kEscapes[c]);
          ++i;
          break;
        case kHigh:
          i += CopyHigh(s, i, n, o);
          break;
        case kBacktick:
          o = PutPiece(o, kCodeTags[codeOpen]);
          codeOpen = !codeOpen;
          ++i;
          break;
        case kAsterisk:
          if (codeOpen) {
            *o++ = '*';
            ++i;
          } else if (i + 1 < n && s[i + 1] == '*') {
            o = PutPiece(o, kStrongTags[strongOpen]);
            strongOpen = !strongOpen;
            i += 2;
          } else if (i == 0 || s[i - 1] != '*') {
            o = PutPiece(o, kEmTags[emOpen]);
            emOpen = !emOpen;
            ++i;
          } else {
            *o++ = '*';
            ++i;
          }
          break;
        case kUnderscore:
          if (!codeOpen && (i == 0 || s[i - 1] != '_') && (i + 1 >= n || s[i + 1] != '_')) {
            o = PutPiece(o, kEmTags[emOpen]);
            emOpen = !emOpen;
          } else {
            *o++ = '_';
          }
          ++i;
          break;
      }
    }
    out.Commit(o);
  }
  char* o = out.Space(3 * sizeof(Piece));
  if (codeOpen) o = PutPiece(o, kCodeTags[1]);
  if (emOpen) o = PutPiece(o, kEmTags[1]);
  if (strongOpen) o = PutPiece(o, kStrongTags[1]);
  out.Commit(o);
}

void AppendEscaped(HtmlBuffer& out, const unsigned char* s, size_t n) {
  size_t i = 0;
  while (i < n) {
    const size_t stop = std::min(n, i + kChunk);
    char* o = out.Space(ChunkSpace(stop - i));
    while (i < stop) {
      SkipPlain<false>(s, i, stop, o);
      if (i == stop) break;
      const unsigned char c = s[i];
      switch (kEscapeKinds[c]) {
        case kEscape:
          o = PutPiece(o, kEscapes[c]);
          ++i;
          break;
        case kHigh:
          i += CopyHigh(s, i, n, o);
          break;
        default:
          *o++ = static_cast<char>(c);
          ++i;
          break;
      }
    }
    out.Commit(o);
  }
}

}  // namespace detail

namespace {

const unsigned char* Bytes(std::string_view s) {
  return reinterpret_cast<const unsigned char*>(s.data());
}

}  // namespace

std::string RenderInlineMarkdown(std::string_view utf8) {
  std::string html;
  detail::HtmlBuffer out(html);
  detail::AppendInline(out, Bytes(utf8), utf8.size());
  out.Finish();
  return html;
}

std::string RenderInlineMarkdown(std::u16string_view text) {
  return RenderInlineMarkdown(std::string_view(detail::UnitsToUtf8(text)));
}

std::string EscapeHtmlUtf8(std::string_view utf8) {
  std::string html;
  detail::HtmlBuffer out(html);
  detail::AppendEscaped(out, Bytes(utf8), utf8.size());
  out.Finish();
  return html;
}

std::string EscapeHtmlUtf8(std::u16string_view text) {
  return EscapeHtmlUtf8(std::string_view(detail::UnitsToUtf8(text)));
}

}  // namespace nebro::markdown
