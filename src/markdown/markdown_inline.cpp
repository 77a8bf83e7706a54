// Inline Markdown and HTML escaping over UTF-8 bytes.
//
// Every delimiter and every character that needs escaping is ASCII, and an ASCII byte is never
// part of a multi-byte UTF-8 sequence, so working on bytes gives the same result as working on
// UTF-16 code units: "the previous character is an asterisk" means the same in both. The only
// thing to get right is ill-formed input, which must come out as U+FFFD byte for byte the way
// Utf8ToUtf16 would have replaced it.
#include "markdown/markdown_inline.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "common/utf.h"
#include "markdown/markdown_html.h"

namespace nebro {
namespace markdown_detail {
namespace {

enum Kind : uint8_t {
  kText,
  kAsterisk,
  kUnderscore,
  kBacktick,
  kAmpersand,
  kLess,
  kGreater,
  kQuote,
  kApostrophe,
  kTab,
  kHigh,
};

constexpr std::array<uint8_t, 256> MakeKinds(bool withDelimiters) {
  std::array<uint8_t, 256> kinds{};
  for (int c = 0x80; c < 0x100; ++c) kinds[c] = kHigh;
  kinds['&'] = kAmpersand;
  kinds['<'] = kLess;
  kinds['>'] = kGreater;
  kinds['"'] = kQuote;
  kinds['\''] = kApostrophe;
  kinds['\t'] = kTab;
  if (withDelimiters) {
    kinds['*'] = kAsterisk;
    kinds['_'] = kUnderscore;
    kinds['`'] = kBacktick;
  }
  return kinds;
}

constexpr std::array<uint8_t, 256> kInlineKinds = MakeKinds(true);
constexpr std::array<uint8_t, 256> kEscapeKinds = MakeKinds(false);

// No input byte grows by more than this: a backtick becomes "</code>". A step of the loops
// consumes at most 4 bytes, so a chunk may run 3 bytes past its end.
constexpr size_t kMaxGrowth = 7;
constexpr size_t kChunk = 64 * 1024;
constexpr size_t ChunkSpace(size_t bytes) { return (bytes + 4) * kMaxGrowth; }

template <size_t N>
inline char* Put(char* o, const char (&text)[N]) {
  std::memcpy(o, text, N - 1);
  return o + N - 1;
}

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

// Copies the character at s[i] (non-ASCII) or its replacement; returns the bytes consumed.
inline size_t CopyHigh(const unsigned char* s, size_t i, size_t n, char*& o) {
  const size_t len = SequenceLength(s, i, n);
  if (len == 0) {
    o = Put(o, "\xEF\xBF\xBD");
    return 1;
  }
  for (size_t k = 0; k < len; ++k) *o++ = static_cast<char>(s[i + k]);
  return len;
}

// The escapes shared by both loops; false for a byte that is not one of them.
inline bool PutEscape(uint8_t kind, char*& o) {
  switch (kind) {
    case kAmpersand:
      o = Put(o, "&amp;");
      return true;
    case kLess:
      o = Put(o, "&lt;");
      return true;
    case kGreater:
      o = Put(o, "&gt;");
      return true;
    case kQuote:
      o = Put(o, "&quot;");
      return true;
    case kApostrophe:
      o = Put(o, "&#39;");
      return true;
    case kTab:
      o = Put(o, "    ");
      return true;
    default:
      return false;
  }
}

}  // namespace

void HtmlBuffer::Grow(size_t n) {
  const size_t wanted = std::max({used_ + n, out_.size() * 2, size_t{4096}});
  out_.resize(wanted);
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
      unsigned char c = s[i];
      uint8_t kind = kInlineKinds[c];
      if (kind == kText) {
        do {
          *o++ = static_cast<char>(c);
          if (++i == stop) break;
          c = s[i];
        } while (kInlineKinds[c] == kText);
        continue;
      }
      switch (kind) {
        case kAsterisk:
          if (codeOpen) {
            *o++ = '*';
            ++i;
          } else if (i + 1 < n && s[i + 1] == '*') {
            o = strongOpen ? Put(o, "</strong>") : Put(o, "<strong>");
            strongOpen = !strongOpen;
            i += 2;
          } else if (i == 0 || s[i - 1] != '*') {
            o = emOpen ? Put(o, "</em>") : Put(o, "<em>");
            emOpen = !emOpen;
            ++i;
          } else {
            *o++ = '*';
            ++i;
          }
          break;
        case kUnderscore:
          if (!codeOpen && (i == 0 || s[i - 1] != '_') && (i + 1 >= n || s[i + 1] != '_')) {
            o = emOpen ? Put(o, "</em>") : Put(o, "<em>");
            emOpen = !emOpen;
          } else {
            *o++ = '_';
          }
          ++i;
          break;
        case kBacktick:
          o = codeOpen ? Put(o, "</code>") : Put(o, "<code>");
          codeOpen = !codeOpen;
          ++i;
          break;
        case kHigh:
          i += CopyHigh(s, i, n, o);
          break;
        default:
          PutEscape(kind, o);
          ++i;
          break;
      }
    }
    out.Commit(o);
  }
  char* o = out.Space(32);
  if (codeOpen) o = Put(o, "</code>");
  if (emOpen) o = Put(o, "</em>");
  if (strongOpen) o = Put(o, "</strong>");
  out.Commit(o);
}

void AppendEscaped(HtmlBuffer& out, const unsigned char* s, size_t n) {
  size_t i = 0;
  while (i < n) {
    const size_t stop = std::min(n, i + kChunk);
    char* o = out.Space(ChunkSpace(stop - i));
    while (i < stop) {
      const unsigned char c = s[i];
      const uint8_t kind = kEscapeKinds[c];
      if (kind == kText) {
        *o++ = static_cast<char>(c);
        ++i;
      } else if (kind == kHigh) {
        i += CopyHigh(s, i, n, o);
      } else {
        PutEscape(kind, o);
        ++i;
      }
    }
    out.Commit(o);
  }
}

}  // namespace markdown_detail

namespace {

const unsigned char* Bytes(std::string_view s) {
  return reinterpret_cast<const unsigned char*>(s.data());
}

}  // namespace

std::string RenderInlineMarkdown(std::string_view utf8) {
  std::string html;
  markdown_detail::HtmlBuffer out(html);
  markdown_detail::AppendInline(out, Bytes(utf8), utf8.size());
  out.Finish();
  return html;
}

std::string RenderInlineMarkdown(std::u16string_view text) {
  // Delimiters are ASCII, so a surrogate pair never straddles a flush: converting the whole
  // text first gives what converting each run of literal text would.
  return RenderInlineMarkdown(std::string_view(Utf16ToUtf8(text)));
}

std::string EscapeHtmlUtf8(std::string_view utf8) {
  std::string html;
  markdown_detail::HtmlBuffer out(html);
  markdown_detail::AppendEscaped(out, Bytes(utf8), utf8.size());
  out.Finish();
  return html;
}

std::string EscapeHtmlUtf8(std::u16string_view text) {
  return EscapeHtmlUtf8(std::string_view(Utf16ToUtf8(text)));
}

}  // namespace nebro
