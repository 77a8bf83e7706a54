// Literal searching for the Find & Replace dialog over the editor's UTF-8 bytes: the editor's
// own forward search, the match list that Find Next/Prev and Highlight All work from, and the
// choice of the next or previous match.
//
// Readings chosen where the editor component's behaviour had to be restated on plain bytes:
// - Matches start on character boundaries (a malformed byte is a character of its own).
// - Without "Match case" both sides are folded character by character with the Unicode simple
//   lower-case mapping; foldings that expand (German sharp s to "ss") are not made, and a match
//   may differ in byte length from the find text (the Kelvin sign matches "k").
// - "Whole word": a match is a whole word when it starts on a word or punctuation character
//   whose predecessor is of another class and ends likewise; word characters are ASCII letters,
//   digits, '_' and every byte from 0x80 up, so any non-ASCII character counts as a letter;
//   line ends, control characters and blanks are separators; the document edges count as blanks.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nebro::search {

// A byte range [start, end) in the document.
struct FindMatch {
  int64_t start = 0;
  int64_t end = 0;
  bool operator==(const FindMatch&) const = default;
};

struct FindTextOptions {
  bool matchCase = false;
  bool wholeWord = false;
};

// The editor's forward text search: the first occurrence of `findText` that lies wholly inside
// [minPos, maxPos) and starts at or after minPos. An empty find text is "found" as the empty
// range at minPos.
std::optional<FindMatch> FindTextRange(std::string_view document, int64_t minPos, int64_t maxPos,
                                       std::string_view findText, const FindTextOptions& options);

// Every occurrence from the start of the document, in order and without overlap: each search
// continues at the end of the previous match; an empty find text gives no matches.
std::vector<FindMatch> BuildMatchList(std::string_view document, std::string_view findText,
                                      const FindTextOptions& options);

// The dialog's match list with the search text and flags that produced it.
struct MatchListCache {
  bool valid = false;
  std::string text;
  FindTextOptions options;
  std::vector<FindMatch> matches;
};

// Rebuilds the list when it was emptied or when the text or either flag differs from the cache;
// returns true when it rebuilt.
bool RefreshMatchList(MatchListCache& cache, std::string_view document, std::string_view findText,
                      const FindTextOptions& options);

// Empties the list and forgets the text it belonged to, so the next search rebuilds it (after a
// replacement, and when the dialog closes).
void ForgetMatchList(MatchListCache& cache);

enum class FindStatusKind { Normal = 0, Warning = 1, ResultCount = 2 };

struct FindStatus {
  std::string text;
  FindStatusKind kind = FindStatusKind::Normal;
  bool operator==(const FindStatus&) const = default;
};

// What Find Next / Find Prev does with a built list.
struct FindNextOutcome {
  bool select = false;  // false: the selection stays as it is
  FindMatch match;      // the match to mark, select and scroll to
  size_t index = 0;     // its index in the list
  FindStatus status;
};

// Forward: the first match starting at or after the caret; backward: the last match starting
// before the selection start; with wrap-around the first (last) match when there is none.
FindNextOutcome ChooseFindNextMatch(const std::vector<FindMatch>& matches, bool forward,
                                    int64_t caret, int64_t selectionStart, bool wrapAround);

}  // namespace nebro::search
