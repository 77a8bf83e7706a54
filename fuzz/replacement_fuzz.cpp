// Fuzzes the replacement expansion and preserve-case with any template, any groups (missing ones
// too) and any matched text, checked against a plain model of the template rules.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

#include "search/regex_replace.h"

namespace {

// "$&"/"$0" the match, "$1".."$9" a group or nothing, any other '$' literal.
std::u16string Model(std::u16string_view t, const nebro::search::RegexCaptures& groups) {
  std::u16string out;
  for (size_t i = 0; i < t.size(); ++i) {
    if (t[i] == u'$' && i + 1 < t.size()) {
      const char16_t c = t[i + 1];
      if (c == u'&' || (c >= u'0' && c <= u'9')) {
        const size_t n = c == u'&' ? 0 : static_cast<size_t>(c - u'0');
        if (n < groups.size() && groups[n]) out += *groups[n];
        ++i;
        continue;
      }
    }
    out += t[i];
  }
  return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::u16string units(size / 2, u'\0');
  for (size_t i = 0; i < units.size(); ++i) units[i] = static_cast<char16_t>(data[2 * i] | (data[2 * i + 1] << 8));
  // Units split at U+0001 into the template and the groups; U+0002 marks a group that did not
  // take part.
  nebro::search::RegexCaptures groups;
  std::u16string templ;
  size_t start = 0;
  bool first = true;
  for (size_t i = 0; i <= units.size(); ++i) {
    if (i < units.size() && units[i] != u'\x01') continue;
    const std::u16string piece = units.substr(start, i - start);
    if (first) templ = piece;
    else if (piece == u"\x02") groups.push_back(std::nullopt);
    else groups.push_back(piece);
    first = false;
    start = i + 1;
  }
  if (groups.empty()) groups.push_back(u"match");
  if (nebro::search::ExpandReplacement(templ, groups) != Model(templ, groups)) {
    std::fprintf(stderr, "replacement_fuzz: the expansion differs from the rules\n");
    std::abort();
  }
  // Taking the case of the same match twice changes nothing more.
  const std::u16string matched = groups[0] ? *groups[0] : u"";
  const std::u16string cased = nebro::search::ApplyPreserveCase(templ, matched);
  if (nebro::search::ApplyPreserveCase(cased, matched) != cased) {
    std::fprintf(stderr, "replacement_fuzz: preserve-case is not stable\n");
    std::abort();
  }
  return 0;
}
