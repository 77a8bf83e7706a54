// Replacement texts of Regex Search: the "$n" template, the preserve-case rule and Replace All.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "search/regex_engine.h"

namespace nebro::search {

// The replacement for one match. "$&" and "$0" insert the whole match; "$1".."$9" the text of
// that group when the expression has it and it took part in the match, else nothing (the two
// characters are consumed either way); a '$' before any other character, or at the end, is a
// literal '$' and the next character is read normally (there is no "$$" escape: "$$1" gives '$'
// and group 1). Every other character is copied.
std::u16string ExpandReplacement(std::u16string_view replacementTemplate,
                                 const RegexCaptures& match);

// Adjusts `replacement` to the case pattern of `matchedText`: all upper (also when it has no
// letters at all) upper-cases it, all lower lower-cases it, a leading capital gives a capitalised
// replacement, anything else leaves it as it is. Letters and cases are Unicode's, independent of
// the process locale.
std::u16string ApplyPreserveCase(std::u16string_view replacement, std::u16string_view matchedText);

struct RegexReplaceAllResult {
  RegexStatus status = RegexStatus::Ok;  // InvalidPattern or TooComplex leave `text` empty
  std::u16string text;
  uint64_t count = 0;
};

// Replaces every match of the whole text, enumerated with iterator semantics (an empty match is
// retried as a non-empty one at the same place, then the search moves on by one character; `^`
// matches only at the start of the text). Each match becomes ExpandReplacement of the template,
// then ApplyPreserveCase when `preserveCase` is on.
RegexReplaceAllResult ReplaceAllText(std::u16string_view text, std::u16string_view pattern,
                                     std::u16string_view replacement, bool matchCase,
                                     bool wholeWord, bool preserveCase);

}  // namespace nebro::search
