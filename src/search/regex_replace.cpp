#include "search/regex_replace.h"

#include "common/utf.h"

#include <locale.h>
#include <wctype.h>

namespace nebro::search {

namespace {

// Letter classes and case mappings come from a UTF-8 locale of their own, so that the result
// does not depend on the locale the process happens to run in ("C" knows only ASCII letters).
locale_t UnicodeLocale() {
  static const locale_t locale = [] {
    locale_t l = newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(0));
    if (!l) l = newlocale(LC_CTYPE_MASK, "en_US.UTF-8", static_cast<locale_t>(0));
    return l;
  }();
  return locale;
}

bool IsAlpha(char32_t c) {
  const locale_t l = UnicodeLocale();
  return l ? iswalpha_l(static_cast<wint_t>(c), l) != 0 : iswalpha(static_cast<wint_t>(c)) != 0;
}
bool IsUpper(char32_t c) {
  const locale_t l = UnicodeLocale();
  return l ? iswupper_l(static_cast<wint_t>(c), l) != 0 : iswupper(static_cast<wint_t>(c)) != 0;
}
bool IsLower(char32_t c) {
  const locale_t l = UnicodeLocale();
  return l ? iswlower_l(static_cast<wint_t>(c), l) != 0 : iswlower(static_cast<wint_t>(c)) != 0;
}
char32_t ToUpper(char32_t c) {
  const locale_t l = UnicodeLocale();
  return static_cast<char32_t>(l ? towupper_l(static_cast<wint_t>(c), l)
                                 : towupper(static_cast<wint_t>(c)));
}
char32_t ToLower(char32_t c) {
  const locale_t l = UnicodeLocale();
  return static_cast<char32_t>(l ? towlower_l(static_cast<wint_t>(c), l)
                                 : towlower(static_cast<wint_t>(c)));
}

// Reads the character at `i` (a surrogate pair as one character) and moves `i` past it.
char32_t NextCodePoint(std::u16string_view s, size_t& i) {
  const char16_t c = s[i++];
  if (c >= 0xD800 && c <= 0xDBFF && i < s.size() && s[i] >= 0xDC00 && s[i] <= 0xDFFF) {
    return 0x10000 + ((static_cast<char32_t>(c) - 0xD800) << 10) + (s[i++] - 0xDC00);
  }
  return c;
}

template <typename Map>
std::u16string MapCase(std::u16string_view s, Map map) {
  std::u16string out;
  out.reserve(s.size());
  for (size_t i = 0; i < s.size();) AppendUtf16(out, map(NextCodePoint(s, i)));
  return out;
}

}  // namespace

std::u16string ExpandReplacement(std::u16string_view replacementTemplate,
                                 const RegexCaptures& match) {
  std::u16string out;
  out.reserve(replacementTemplate.size());
  const size_t n = replacementTemplate.size();
  for (size_t i = 0; i < n; ++i) {
    const char16_t c = replacementTemplate[i];
    if (c != u'$' || i + 1 == n) {
      out.push_back(c);
      continue;
    }
    const char16_t next = replacementTemplate[i + 1];
    if (next == u'&' || (next >= u'0' && next <= u'9')) {
      const size_t group = next == u'&' ? 0 : static_cast<size_t>(next - u'0');
      if (group < match.size() && match[group]) out += *match[group];
      ++i;
    } else {
      out.push_back(u'$');
    }
  }
  return out;
}

std::u16string ApplyPreserveCase(std::u16string_view replacement, std::u16string_view matchedText) {
  if (replacement.empty() || matchedText.empty()) return std::u16string(replacement);
  bool allUpper = true;
  bool allLower = true;
  for (size_t i = 0; i < matchedText.size();) {
    const char32_t c = NextCodePoint(matchedText, i);
    if (!IsAlpha(c)) continue;
    if (!IsUpper(c)) allUpper = false;
    if (!IsLower(c)) allLower = false;
  }
  if (allUpper) return MapCase(replacement, ToUpper);
  if (allLower) return MapCase(replacement, ToLower);
  size_t first = 0;
  if (IsUpper(NextCodePoint(matchedText, first))) {
    std::u16string out = MapCase(replacement, ToLower);
    size_t i = 0;
    const char32_t head = NextCodePoint(out, i);
    std::u16string capital;
    AppendUtf16(capital, ToUpper(head));
    return capital + out.substr(i);
  }
  return std::u16string(replacement);
}

RegexReplaceAllResult ReplaceAllText(std::u16string_view text, std::u16string_view pattern,
                                     std::u16string_view replacement, bool matchCase,
                                     bool wholeWord, bool preserveCase) {
  RegexReplaceAllResult result;
  RegexPtr regex = BuildRegex(pattern, matchCase, wholeWord);
  if (!regex) {
    result.status = RegexStatus::InvalidPattern;
    return result;
  }
  // Unpaired surrogates read as U+FFFD, in the searched text and in the result alike.
  std::u16string storage;
  const std::u16string_view subject = WellFormedUtf16(text, storage);
  std::u16string out;
  RegexCaptures captures;
  size_t copied = 0;
  result.status =
      ForEachMatch(subject, *regex, [&](const std::vector<RegexSpan>& groups, std::u16string_view) {
        const size_t start = static_cast<size_t>(groups[0].start);
        const size_t end = static_cast<size_t>(groups[0].end);
        out.append(subject.substr(copied, start - copied));
        captures.resize(groups.size());
        for (size_t g = 0; g < groups.size(); ++g) {
          if (groups[g].start < 0) {
            captures[g].reset();
          } else {
            captures[g] =
                std::u16string(subject.substr(groups[g].start, groups[g].end - groups[g].start));
          }
        }
        std::u16string piece = ExpandReplacement(replacement, captures);
        if (preserveCase) piece = ApplyPreserveCase(piece, *captures[0]);
        out += piece;
        copied = end;
        ++result.count;
        return true;
      });
  if (result.status != RegexStatus::Ok) {
    result.count = 0;
    return result;
  }
  out.append(subject.substr(copied));
  result.text = std::move(out);
  return result;
}

}  // namespace nebro::search
