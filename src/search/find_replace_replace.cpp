#include "search/find_replace_replace.h"

#include <vector>

#include "common/utf.h"
#include "search/find_replace_text.h"

namespace nebro::search {

using namespace find_replace_internal;

namespace {

bool IsHigh(char16_t u) { return u >= 0xD800 && u <= 0xDBFF; }
bool IsLow(char16_t u) { return u >= 0xDC00 && u <= 0xDFFF; }

// The code point that starts at `pos` of a UTF-16 text, or 0 at the end.
char32_t CodePointAt(std::u16string_view s, size_t pos) {
  if (pos >= s.size()) return 0;
  const char16_t first = s[pos];
  if (IsHigh(first) && pos + 1 < s.size() && IsLow(s[pos + 1]))
    return 0x10000 + ((char32_t(first) - 0xD800) << 10) + (s[pos + 1] - 0xDC00);
  return first;
}

// Replace All reads the range's UTF-8 directly. A malformed byte is a character of its own that
// equals only the same malformed byte (the UTF-16 form would make it U+FFFD) and is no letter.
constexpr char32_t kMalformed = 0x110000;

char32_t CharAt(std::string_view s, size_t pos, size_t* length) {
  const char32_t c = DecodeUtf8At(s, pos, length);
  const auto b = static_cast<unsigned char>(s[pos]);
  return (*length == 1 && b >= 0x80) ? kMalformed + b : c;
}

// The character that ends just before `pos` (a character boundary), or 0 at the start.
char32_t CharBefore(std::string_view s, size_t pos) {
  if (pos == 0) return 0;
  const auto last = static_cast<unsigned char>(s[pos - 1]);
  if (last < 0x80) return last;
  for (size_t k = 2; k <= 4 && k <= pos; ++k) {
    if ((static_cast<unsigned char>(s[pos - k]) & 0xC0) == 0x80) continue;
    size_t length = 1;
    const char32_t c = DecodeUtf8At(s, pos - k, &length);
    if (length == k) return c;
    break;
  }
  return kMalformed + last;
}

bool IsReplaceWordChar(char32_t c) { return c == '_' || (c < kMalformed && IsAlnumChar(c)); }

char32_t Folded(char32_t c, bool matchCase) {
  return (matchCase || c >= kMalformed) ? c : LowerChar(c);
}

// Whether the find text's characters (already folded) start at byte `pos`; sets the end.
bool MatchesAt(std::string_view s, size_t pos, const std::vector<char32_t>& needle,
               bool matchCase, size_t* end) {
  for (const char32_t want : needle) {
    if (pos >= s.size()) return false;
    size_t length = 1;
    if (Folded(CharAt(s, pos, &length), matchCase) != want) return false;
    pos += length;
  }
  *end = pos;
  return true;
}

// The next occurrence at or after byte `from`, on character boundaries: [start, end).
bool NextOccurrence(std::string_view s, size_t from, std::string_view find,
                    const std::vector<char32_t>& needle, bool matchCase, size_t* start,
                    size_t* end) {
  if (matchCase) {
    // Equal bytes between two character boundaries are equal characters.
    for (size_t pos = from;;) {
      const size_t hit = s.find(find, pos);
      if (hit == std::string_view::npos) return false;
      if (IsEditorCharBoundary(s, hit) && IsEditorCharBoundary(s, hit + find.size())) {
        *start = hit;
        *end = hit + find.size();
        return true;
      }
      pos = hit + 1;
    }
  }
  const char32_t first = needle.front();
  size_t pos = from;
  while (pos < s.size()) {
    const auto b = static_cast<unsigned char>(s[pos]);
    if (b < 0x80 && Folded(b, false) != first) {
      ++pos;
      continue;
    }
    if (MatchesAt(s, pos, needle, false, end)) {
      *start = pos;
      return true;
    }
    size_t length = 1;
    DecodeUtf8At(s, pos, &length);
    pos += length;
  }
  return false;
}

}  // namespace

ReplaceAllResult ReplaceAllLiteral(std::string_view rangeText, std::string_view findText,
                                   std::string_view replaceText, const ReplaceAllOptions& options) {
  ReplaceAllResult result;
  if (findText.empty()) {
    result.newText = std::string(rangeText);
    return result;
  }
  std::vector<char32_t> needle;
  for (size_t i = 0; i < findText.size();) {
    size_t length = 1;
    needle.push_back(Folded(CharAt(findText, i, &length), options.matchCase));
    i += length;
  }

  const std::u16string replacement = Utf8ToUtf16(replaceText);
  size_t copiedTo = 0;  // bytes of the range already handled
  size_t pos = 0;
  size_t start = 0;
  size_t end = 0;
  size_t afterLength = 0;
  while (NextOccurrence(rangeText, pos, findText, needle, options.matchCase, &start, &end)) {
    if (options.wholeWord &&
        (IsReplaceWordChar(CharBefore(rangeText, start)) ||
         (end < rangeText.size() && IsReplaceWordChar(CharAt(rangeText, end, &afterLength))))) {
      // Not a whole word: look again one character further on.
      size_t length = 1;
      DecodeUtf8At(rangeText, start, &length);
      pos = start + length;
      continue;
    }
    result.newText.append(rangeText.substr(copiedTo, start - copiedTo));
    const std::string inserted =
        options.preserveCase
            ? Utf16ToUtf8(ApplyFindPreserveCase(
                  replacement, Utf8ToUtf16(rangeText.substr(start, end - start))))
            : std::string(replaceText);
    const auto insertedAt = static_cast<int64_t>(result.newText.size());
    result.newText.append(inserted);
    result.replaced.push_back({insertedAt, insertedAt + static_cast<int64_t>(inserted.size())});
    ++result.count;
    copiedTo = end;
    pos = end;
  }
  result.newText.append(rangeText.substr(copiedTo));
  return result;
}

std::u16string ApplyFindPreserveCase(std::u16string_view replacement, std::u16string_view matched) {
  if (matched.empty()) return std::u16string(replacement);
  bool allUpper = true;
  for (size_t i = 0; i < matched.size(); i += CodePointAt(matched, i) >= 0x10000 ? 2 : 1) {
    if (!IsUpperChar(CodePointAt(matched, i))) {
      allUpper = false;
      break;
    }
  }
  if (allUpper) return UpperUtf16(replacement);
  if (!IsUpperChar(CodePointAt(matched, 0))) return LowerUtf16(replacement);
  if (replacement.empty()) return {};
  const size_t firstUnits = CodePointAt(replacement, 0) >= 0x10000 ? 2 : 1;
  return UpperUtf16(replacement.substr(0, firstUnits)) +
         LowerUtf16(replacement.substr(firstUnits));
}

std::string ApplyFindPreserveCase(std::string_view replacement, std::string_view matched) {
  return Utf16ToUtf8(ApplyFindPreserveCase(Utf8ToUtf16(replacement), Utf8ToUtf16(matched)));
}

bool SelectionMatchesFindText(std::string_view selection, std::string_view findText,
                              bool matchCase) {
  std::u16string a = Utf8ToUtf16(selection);
  std::u16string b = Utf8ToUtf16(findText);
  if (!matchCase) {
    LowerUtf16InPlace(a);
    LowerUtf16InPlace(b);
  }
  return a == b;
}

ReplaceOneDecision DecideReplaceOne(std::string_view selection, std::string_view findText,
                                    std::string_view replaceText, bool matchCase,
                                    bool preserveCase) {
  ReplaceOneDecision decision;
  if (findText.empty() || selection.empty()) return decision;
  if (!SelectionMatchesFindText(selection, findText, matchCase)) return decision;
  decision.replace = true;
  decision.replacement = preserveCase ? ApplyFindPreserveCase(replaceText, selection)
                                      : std::string(replaceText);
  return decision;
}

}  // namespace nebro::search
