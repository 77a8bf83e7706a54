// The Regex Search window's rules that need no window: its texts and control numbers, its two
// histories, and the text of a result-list entry, made from a match record when the row is shown.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "search/regex_engine.h"

namespace nebro::search {

inline constexpr const char* kRegexWindowTitle = "Regex Search - Nebro";
inline constexpr const char* kRegexWindowName = "NebroRegexSearch";

// Control numbers, used as widget names.
enum RegexWindowControl : int {
  kRegexPatternCombo = 801,
  kRegexReplaceCombo = 802,
  kRegexMatchCaseCheck = 803,
  kRegexWholeWordCheck = 804,
  kRegexPreserveCaseCheck = 805,
  kRegexBatchSizeEdit = 806,
  kRegexMaxMatchesEdit = 807,
  kRegexIncludeLinesCheck = 808,
  kRegexOutputFormatList = 809,
  kRegexFindNextButton = 810,
  kRegexReplaceButton = 811,
  kRegexReplaceAllButton = 812,
  kRegexCancelButton = 813,
  kRegexOpenResultsButton = 814,
  kRegexCloseButton = 815,
  kRegexStatusText = 816,
  kRegexPatternLabel = 819,
  kRegexReplaceLabel = 820,
  kRegexOptionsGroup = 821,
  kRegexBatchSizeLabel = 822,
  kRegexMaxMatchesLabel = 823,
  kRegexOutputFormatLabel = 824,
  kRegexResultList = 825,
  kRegexColorResultsCheck = 826,
  kRegexProgressBar = 827,
  kRegexApplyButton = 828,
  kRegexFindAllButton = 829,
  kRegexFindPrevButton = 830,
};

// Button and status texts, byte for byte.
inline constexpr const char* kRegexFindAllText = "Find All";
inline constexpr const char* kRegexFindMoreText = "Find More";
inline constexpr const char* kRegexReadyText = "Ready";
inline constexpr const char* kRegexEmptyPatternText = "Please enter a pattern.";
inline constexpr const char* kRegexNoMatchText = "No match found.";
inline constexpr const char* kRegexNoSelectionText = "No selection. Use Find/Next first.";
inline constexpr const char* kRegexSelectionMismatchText = "Selection does not match pattern.";
inline constexpr const char* kRegexNothingToReplaceText = "No matches found to replace.";
inline constexpr const char* kRegexNoResultsFileText = "No results file to open.";
inline constexpr const char* kRegexResultsOpenedText = "Results file opened.";
inline constexpr const char* kRegexCancellingText = "Cancelling...";
inline constexpr const char* kRegexSettingsSavedText = "Settings saved.";
inline constexpr const char* kRegexSearchingText = "Searching...";
inline constexpr const char* kRegexInvalidPatternText = "Invalid regex pattern.";
inline constexpr const char* kRegexThreadFailedText = "Failed to start search thread.";

// "Found: \"text\" at position N", "Replaced: \"text\"", "Replaced N occurrence(s).",
// "Found N matches.", "Search complete. Found N matches."
std::string RegexFoundStatus(std::u16string_view text, int64_t position);
std::string RegexReplacedStatus(std::u16string_view text);
std::string RegexReplacedAllStatus(uint64_t count);
std::string RegexStoppedStatus(uint64_t total);
std::string RegexCompleteStatus(uint64_t total);

// The window's history of ten entries of at most 511 units, most recent first: an entry equal to
// the text moves to the top, otherwise the last one falls out. Empty texts are not kept.
void PushRegexHistory(char16_t (&list)[10][512], std::u16string_view text);

// The text of one list entry. Format 0 "Only matches": the matched text; 1 "With line numbers":
// "Ln L  Col S  text" with line numbers, else "[S-E]  text" (S and E are UTF-16 indices); 2 "Full
// lines": the document line holding the match ("Ln L  " before it with line numbers), or the
// matched text when that line is empty. `lineUtf8` is that line (format 2 only). Line breaks
// inside the shown text read as blanks and very long texts are cut, so a row stays one line.
std::string RegexListEntryText(const RegexMatch& match, int32_t outputFormat,
                               bool includeLineNumbers, std::string_view lineUtf8);

// The line of `utf8` around byte `offset`: from after the previous LF up to the next LF or CR.
std::string_view LineAround(std::string_view utf8, uint64_t offset);

}  // namespace nebro::search
