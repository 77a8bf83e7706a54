// The regex engine of Regex Search: compiling a pattern with the dialog's options, collecting
// matches in batches, and the single searches of Find / Next, Find Prev and Replace.
//
// Patterns are ECMAScript-style expressions matched by PCRE2's 16-bit library (with its JIT when
// the system allows it) over UTF-16 text. Positions are UTF-16 code-unit indices; line numbers
// count LF characters only.
//
// A compiled Regex carries its own match buffers and JIT stack, so it belongs to one thread at a
// time: the worker compiles its own copy of the pattern.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nebro::search {

// One found match.
struct RegexMatch {
  int64_t start = 0;  // first UTF-16 unit of the match in the whole document
  int64_t end = 0;    // start + length in UTF-16 units
  std::u16string text;
  int64_t line = 0;  // 1-based line of `start`, counted by LF

  bool operator==(const RegexMatch&) const = default;
};

// How a search call ended.
enum class RegexStatus {
  Ok,              // ran to its end, with or without matches
  Cancelled,       // the cancel flag was seen
  TooComplex,      // the engine gave up: match limit, JIT stack or memory exhausted
  InvalidPattern,  // the pattern did not compile
};

// Text shown in the status line when a search stops with RegexStatus::TooComplex.
inline constexpr std::u16string_view kRegexTooComplexText = u"Pattern too complex; search stopped.";

// Returns `text` when it is well-formed UTF-16, else a copy in `storage` whose unpaired
// surrogates are U+FFFD (the same length, so every position stays where it was). Every search
// function reads its text this way.
std::u16string_view WellFormedUtf16(std::u16string_view text, std::u16string& storage);

struct Regex;  // defined in regex_engine.cpp
struct RegexDeleter {
  void operator()(Regex* regex) const;
};
using RegexPtr = std::unique_ptr<Regex, RegexDeleter>;

// Compiles `pattern`. With `wholeWord` the expression text is "\b(?:" + pattern + ")\b" (the
// wrapping is textual, so an alternation is wrapped as a whole); without `matchCase` the match
// ignores case (Unicode case folding beyond ASCII). Returns null when the pattern does not
// compile; `error`, when given, then receives the engine's message.
RegexPtr BuildRegex(std::u16string_view pattern, bool matchCase, bool wholeWord,
                    std::string* error = nullptr);

// Number of capture groups of the expression.
uint32_t RegexGroupCount(const Regex& regex);

// What a Find All run keeps between FindBatch calls over one unchanged text: the cancel flag,
// the outcome of the one UTF-16 check of the text (and a repaired copy when it held unpaired
// surrogates, which then read as U+FFFD), and the last LF count, so that line numbers cost one
// pass over the text per run. A fresh context is needed when the text changes.
struct FindBatchContext {
  const std::atomic<bool>* cancel = nullptr;
  // Set when the text is known to be well-formed UTF-16, as Utf8ToUtf16 makes it: the check is
  // then skipped. A text with unpaired surrogates must not be given with this set.
  bool wellFormed = false;

  // Kept by FindBatch.
  const char16_t* checkedData = nullptr;
  size_t checkedSize = 0;
  bool repaired = false;
  std::u16string repairedText;
  int64_t linePos = 0;
  int64_t lineNumber = 1;
  // Set by a caller that collects one batch in several calls: where the batch began, the one
  // place an empty match is stepped over. Unset (-1), each call is a batch of its own.
  int64_t batchStart = -1;
};

struct RegexBatch {
  std::vector<RegexMatch> matches;
  RegexStatus status = RegexStatus::Ok;
};

// Collects up to `want` matches starting at `cursor` and stores the next position back into
// `cursor`. Each search covers [pos, end of text) and treats `pos` as the start of input, so `^`
// and `\b` see nothing before it (`^a` over "aaa" gives three matches). After a match the next
// search starts at its end; only an empty match at the position where this call began is stepped
// over (by one character, a whole surrogate pair when there is one). An empty match anywhere else
// is collected again and again until the batch is full, except at the very end of the text, where
// no further search is made. The cancel flag is polled before every search and also interrupts a
// long search.
RegexBatch FindBatch(std::u16string_view text, Regex& regex, uint64_t& cursor, uint64_t want,
                     FindBatchContext& context);

// The captures of one match: [0] the whole match, [n] group n, or nothing when that group took
// no part in the match.
using RegexCaptures = std::vector<std::optional<std::u16string>>;

struct RegexFound {
  RegexStatus status = RegexStatus::Ok;
  std::optional<RegexMatch> match;
};

// Find / Next: the first match of the sub-range that starts at `from` (searched as FindBatch
// searches, `from` being the start of input); when there is none, the first match of the whole
// text.
RegexFound FindNextMatch(std::u16string_view text, Regex& regex, uint64_t from);

// Find Prev: enumerates the matches of the whole text with iterator semantics and takes the last
// one that ends at or before `anchor`; when there is none, the last match of the text.
RegexFound FindPrevMatch(std::u16string_view text, Regex& regex, uint64_t anchor);

// A group's place in the text; start is -1 when the group took no part in the match.
struct RegexSpan {
  int64_t start = -1;
  int64_t end = -1;
};

// Calls `onMatch` for every match of the whole text in order, with the iterator semantics of
// Replace All and Find Prev: each search sees the text before its start (so `^` matches only at
// the start of the text), and after an empty match the same place is tried once more for a
// non-empty match before the search moves on by one character. `groups[0]` is the whole match.
// Returning false from `onMatch` ends the enumeration.
RegexStatus ForEachMatch(std::u16string_view text, Regex& regex,
                         const std::function<bool(const std::vector<RegexSpan>& groups,
                                                  std::u16string_view checkedText)>& onMatch);

// Replace: whether the whole of `text` matches the expression, and the captures when it does.
std::optional<RegexCaptures> MatchWhole(Regex& regex, std::u16string_view text);

}  // namespace nebro::search
