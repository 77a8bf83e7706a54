// Replacing for the Find & Replace dialog: the literal Replace All scan, the single Replace's
// selection test, and the dialog's preserve-case rule.
//
// Replace All compares characters the way the dialog's wide-character scan does: both sides
// lower-cased character by character unless "Match case" is on, and with "Whole word" an
// occurrence counts only when the character before it and the one after it, inside the range,
// are no letters, digits or '_' (Unicode letters and digits included). It reads the UTF-8 range
// directly rather than a UTF-16 copy; the text between replacements is copied from the original
// bytes, and a malformed byte is a character of its own that equals only itself, so malformed
// UTF-8 outside the occurrences survives unchanged.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "search/find_replace_search.h"

namespace nebro::search {

struct ReplaceAllOptions {
  bool matchCase = false;
  bool wholeWord = false;
  bool preserveCase = false;
};

struct ReplaceAllResult {
  int count = 0;                    // occurrences replaced
  std::string newText;              // the range's new UTF-8 text
  std::vector<FindMatch> replaced;  // each inserted replacement, in bytes of `newText`
};

// Scans `rangeText` left to right for non-overlapping occurrences of `findText` and replaces
// each with `replaceText` (case-adjusted to the occurrence with "Preserve case"). With no
// occurrence, or an empty find text, the count is 0 and `newText` is the range unchanged.
ReplaceAllResult ReplaceAllLiteral(std::string_view rangeText, std::string_view findText,
                                   std::string_view replaceText, const ReplaceAllOptions& options);

// The dialog's preserve-case rule, applied to the replacement according to the matched text:
// an empty match leaves it alone; a match whose every character is upper-case makes it upper
// case; otherwise a match that starts upper-case makes it title case (first character upper,
// the rest lower) and any other match makes it lower case. Digits, blanks and punctuation are
// not upper-case, so "A1" gives title case and "1A" lower case.
std::u16string ApplyFindPreserveCase(std::u16string_view replacement, std::u16string_view matched);
std::string ApplyFindPreserveCase(std::string_view replacement, std::string_view matched);

// Whether the selected text is the find text: exactly with "Match case", otherwise with both
// lower-cased character by character. "Whole word" plays no part here.
bool SelectionMatchesFindText(std::string_view selection, std::string_view findText,
                              bool matchCase);

// The single Replace: replace the selection when it is the find text, with the replacement
// passed through the preserve-case rule when that option is on.
struct ReplaceOneDecision {
  bool replace = false;
  std::string replacement;
};
ReplaceOneDecision DecideReplaceOne(std::string_view selection, std::string_view findText,
                                    std::string_view replaceText, bool matchCase,
                                    bool preserveCase);

}  // namespace nebro::search
