#include "search/find_replace_replace.h"

#include "common/utf.h"
#include "search/find_replace_text.h"

namespace nebro {

using namespace find_replace_internal;

namespace {

bool IsHigh(char16_t u) { return u >= 0xD800 && u <= 0xDBFF; }
bool IsLow(char16_t u) { return u >= 0xDC00 && u <= 0xDFFF; }

bool IsReplaceWordChar(char32_t c) { return c == '_' || IsAlnumChar(c); }

// The code point that ends just before `pos`, or 0 at the start.
char32_t CodePointBefore(std::u16string_view s, size_t pos) {
  if (pos == 0) return 0;
  const char16_t last = s[pos - 1];
  if (IsLow(last) && pos >= 2 && IsHigh(s[pos - 2]))
    return 0x10000 + ((char32_t(s[pos - 2]) - 0xD800) << 10) + (last - 0xDC00);
  return last;
}

// The code point that starts at `pos`, or 0 at the end.
char32_t CodePointAt(std::u16string_view s, size_t pos) {
  if (pos >= s.size()) return 0;
  const char16_t first = s[pos];
  if (IsHigh(first) && pos + 1 < s.size() && IsLow(s[pos + 1]))
    return 0x10000 + ((char32_t(first) - 0xD800) << 10) + (s[pos + 1] - 0xDC00);
  return first;
}

// Walks the UTF-8 range and its UTF-16 form side by side, so UTF-16 positions of occurrences
// can be turned into byte positions without a table.
struct Cursor {
  std::string_view utf8;
  size_t unit = 0;
  size_t byte = 0;

  size_t ByteOf(size_t targetUnit) {
    while (unit < targetUnit && byte < utf8.size()) {
      size_t length = 1;
      const char32_t c = DecodeUtf8At(utf8, byte, &length);
      unit += c >= 0x10000 ? 2 : 1;
      byte += length;
    }
    return byte;
  }
};

}  // namespace

ReplaceAllResult ReplaceAllLiteral(std::string_view rangeText, std::string_view findText,
                                   std::string_view replaceText, const ReplaceAllOptions& options) {
  ReplaceAllResult result;
  if (findText.empty()) {
    result.newText = std::string(rangeText);
    return result;
  }
  std::u16string haystack = Utf8ToUtf16(rangeText);
  std::u16string needle = Utf8ToUtf16(findText);
  if (!options.matchCase) {
    LowerUtf16InPlace(haystack);
    LowerUtf16InPlace(needle);
  }

  const std::u16string replacement = Utf8ToUtf16(replaceText);
  const std::string plainReplacement(replaceText);
  Cursor cursor{rangeText};
  size_t copiedTo = 0;  // bytes of the range already handled
  size_t pos = 0;
  while (true) {
    const size_t hit = haystack.find(needle, pos);
    if (hit == std::u16string::npos) break;
    const size_t end = hit + needle.size();
    if (options.wholeWord &&
        (IsReplaceWordChar(CodePointBefore(haystack, hit)) ||
         IsReplaceWordChar(CodePointAt(haystack, end)))) {
      pos = hit + 1;
      continue;
    }
    const size_t byteStart = cursor.ByteOf(hit);
    const size_t byteEnd = cursor.ByteOf(end);
    result.newText.append(rangeText.substr(copiedTo, byteStart - copiedTo));
    std::string inserted;
    if (options.preserveCase) {
      inserted = Utf16ToUtf8(ApplyFindPreserveCase(
          replacement, Utf8ToUtf16(rangeText.substr(byteStart, byteEnd - byteStart))));
    } else {
      inserted = plainReplacement;
    }
    const auto insertedAt = static_cast<int64_t>(result.newText.size());
    result.newText.append(inserted);
    result.replaced.push_back({insertedAt, insertedAt + static_cast<int64_t>(inserted.size())});
    ++result.count;
    copiedTo = byteEnd;
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

}  // namespace nebro
