#include "search/find_replace_text.h"

#include <locale.h>
#include <wctype.h>

#include "common/utf.h"

namespace nebro::search::find_replace_internal {

namespace {

bool IsTrail(unsigned char b) { return (b & 0xC0) == 0x80; }

// The character tables of C.UTF-8, opened once and never freed: the process locale may be "C",
// whose tables know only ASCII.
locale_t UnicodeLocale() {
  static const locale_t loc = [] {
    locale_t l = newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(0));
    if (l == static_cast<locale_t>(0)) l = newlocale(LC_CTYPE_MASK, "C.utf8", static_cast<locale_t>(0));
    return l;
  }();
  return loc;
}

bool IsAsciiUpper(char32_t c) { return c >= 'A' && c <= 'Z'; }
bool IsAsciiLower(char32_t c) { return c >= 'a' && c <= 'z'; }

size_t Utf16Units(char32_t c) { return c >= 0x10000 ? 2 : 1; }

// Maps every code point of `in` through `map`, keeping the unit count of each code point.
template <typename Map>
void MapUtf16(std::u16string& text, Map map) {
  const size_t n = text.size();
  for (size_t i = 0; i < n; ++i) {
    char32_t c = text[i];
    if (c < 0x80) {
      text[i] = static_cast<char16_t>(map(c));
      continue;
    }
    if (c >= 0xD800 && c <= 0xDBFF && i + 1 < n && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
      c = 0x10000 + ((c - 0xD800) << 10) + (text[i + 1] - 0xDC00);
      const char32_t m = map(c);
      if (m >= 0x10000 && m <= 0x10FFFF) {
        text[i] = static_cast<char16_t>(0xD800 + ((m - 0x10000) >> 10));
        text[i + 1] = static_cast<char16_t>(0xDC00 + ((m - 0x10000) & 0x3FF));
      }
      ++i;
      continue;
    }
    if (c >= 0xD800 && c <= 0xDFFF) continue;  // unpaired surrogate: no case
    const char32_t m = map(c);
    if (Utf16Units(m) == 1 && !(m >= 0xD800 && m <= 0xDFFF)) text[i] = static_cast<char16_t>(m);
  }
}

}  // namespace

size_t EditorCharWidth(std::string_view text, size_t pos, bool* valid) {
  size_t length = 1;
  DecodeUtf8At(text, pos, &length);
  if (valid) {
    const auto b = static_cast<unsigned char>(text[pos]);
    *valid = b < 0x80 || length > 1;
  }
  return length;
}

bool IsEditorCharBoundary(std::string_view text, size_t pos) {
  for (size_t k = 1; k <= 3 && k <= pos; ++k) {
    const auto b = static_cast<unsigned char>(text[pos - k]);
    if (IsTrail(b)) continue;
    // The nearest byte that is no trail byte: `pos` is inside its character only when that
    // character is well-formed and reaches past `pos`. A lead byte is never itself inside a
    // character, so nothing further back matters.
    return EditorCharWidth(text, pos - k) <= k;
  }
  return true;
}

CharClass EditorCharClass(unsigned char b) {
  if (b == '\r' || b == '\n') return CharClass::NewLine;
  if (b < 0x20 || b == ' ') return CharClass::Space;
  if (b >= 0x80 || (b >= '0' && b <= '9') || (b >= 'A' && b <= 'Z') || (b >= 'a' && b <= 'z') ||
      b == '_')
    return CharClass::Word;
  return CharClass::Punctuation;
}

bool IsEditorWordAt(std::string_view text, size_t start, size_t end) {
  if (start >= end || end > text.size()) return false;
  const auto wordish = [](CharClass c) { return c == CharClass::Word || c == CharClass::Punctuation; };
  // Start of a word: the first character is word or punctuation and the one before differs.
  const CharClass first = EditorCharClass(static_cast<unsigned char>(text[start]));
  const CharClass before =
      start > 0 ? EditorCharClass(static_cast<unsigned char>(text[start - 1])) : CharClass::Space;
  if (!wordish(first) || first == before) return false;
  // End of a word: the last character is word or punctuation and the one after differs; the end
  // of the document always ends a word.
  if (end == text.size()) return true;
  const CharClass last = EditorCharClass(static_cast<unsigned char>(text[end - 1]));
  const CharClass after = EditorCharClass(static_cast<unsigned char>(text[end]));
  return wordish(last) && last != after;
}

char32_t LowerChar(char32_t c) {
  if (c < 0x80) return IsAsciiUpper(c) ? c + 32 : c;
  const locale_t loc = UnicodeLocale();
  if (loc == static_cast<locale_t>(0)) return c;
  return static_cast<char32_t>(towlower_l(static_cast<wint_t>(c), loc));
}

char32_t UpperChar(char32_t c) {
  if (c < 0x80) return IsAsciiLower(c) ? c - 32 : c;
  const locale_t loc = UnicodeLocale();
  if (loc == static_cast<locale_t>(0)) return c;
  return static_cast<char32_t>(towupper_l(static_cast<wint_t>(c), loc));
}

bool IsUpperChar(char32_t c) {
  if (c < 0x80) return IsAsciiUpper(c);
  const locale_t loc = UnicodeLocale();
  return loc != static_cast<locale_t>(0) && iswupper_l(static_cast<wint_t>(c), loc) != 0;
}

bool IsAlnumChar(char32_t c) {
  if (c < 0x80) return IsAsciiUpper(c) || IsAsciiLower(c) || (c >= '0' && c <= '9');
  const locale_t loc = UnicodeLocale();
  return loc != static_cast<locale_t>(0) && iswalnum_l(static_cast<wint_t>(c), loc) != 0;
}

void LowerUtf16InPlace(std::u16string& text) { MapUtf16(text, LowerChar); }

std::u16string LowerUtf16(std::u16string_view text) {
  std::u16string out(text);
  MapUtf16(out, LowerChar);
  return out;
}

std::u16string UpperUtf16(std::u16string_view text) {
  std::u16string out(text);
  MapUtf16(out, UpperChar);
  return out;
}

std::string FoldUtf8(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  size_t i = 0;
  while (i < text.size()) {
    const auto b = static_cast<unsigned char>(text[i]);
    if (b < 0x80) {
      out.push_back(static_cast<char>(LowerChar(b)));
      ++i;
      continue;
    }
    size_t len = 1;
    const char32_t c = DecodeUtf8At(text, i, &len);
    if (len == 1) {
      out.push_back(text[i]);  // malformed: compared as the raw byte
    } else {
      AppendUtf8(out, LowerChar(c));
    }
    i += len;
  }
  return out;
}

}  // namespace nebro::search::find_replace_internal
