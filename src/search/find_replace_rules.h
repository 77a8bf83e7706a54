// The Find & Replace dialog's rules that need no window: its texts, status lines and their
// colours, the two histories, the Replace All range, what Highlight All marks, the indicators it
// draws with, and its control numbers. The GTK dialog only wires widgets to these.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "common/colour.h"
#include "search/find_replace_search.h"

namespace nebro::search {

inline constexpr const char* kFindDialogTitle = "Nebro - Find & Replace";

// Control numbers (kept so tests can find the controls) and their texts.
enum FindDialogControl : int {
  kFindWhatCombo = 501,
  kReplaceWithCombo = 502,
  kMatchCaseCheck = 503,
  kWholeWordCheck = 504,
  kWrapAroundCheck = 505,
  kPreserveCaseCheck = 506,
  kInSelectionCheck = 507,
  kColorResultsCheck = 508,
  kFindNextButton = 510,
  kFindPrevButton = 511,
  kReplaceButton = 512,
  kReplaceAllButton = 513,
  kHighlightAllButton = 514,
  kCloseButton = 515,
  kStatusText = 516,
  kOptionsGroup = 517,
  kFindWhatLabel = 518,
  kReplaceWithLabel = 519,
  kStatusLabel = 520,
};

// The text of a control, or "" for the combo boxes and the status line.
const char* FindDialogControlText(int id);

// Status lines, byte for byte. "No matches." comes from Find Next/Prev, "No matches found." from
// Highlight All.
inline constexpr const char* kNoMatchesText = "No matches.";
inline constexpr const char* kNoMoreMatchesText = "No more matches.";
inline constexpr const char* kNoMatchesFoundText = "No matches found.";
inline constexpr const char* kReplacedSearchingText = "Replaced. Searching for next...";
inline constexpr const char* kNoTextSelectedText = "No text selected. Running on entire document.";
inline constexpr const char* kNoOccurrencesText = "No occurrences found.";

// "1 match found." or "%zu matches found." with the total count.
FindStatus MatchCountStatus(size_t count, FindStatusKind kind);

// Replace All's closing line: "No occurrences found." (a warning) or "%d occurrence(s)
// replaced." (a result count).
FindStatus ReplaceAllStatus(int count);

// The status text colour: warnings #FFB400, result counts #28A050, otherwise the theme's
// dialog text.
Colour FindStatusColour(FindStatusKind kind, Colour dialogText);

// The dialog reads at most 255 UTF-16 units of a field; a surrogate pair is not split.
inline constexpr size_t kFindFieldMaxUnits = 255;
std::string ClipFindFieldText(std::string_view utf8);

// The range Replace All works on. With "Replace in selection" and an empty selection the whole
// document is used, the check box is cleared and the warning is shown first.
struct ReplaceAllRange {
  int64_t start = 0;
  int64_t end = 0;
  bool clearInSelection = false;
};
ReplaceAllRange ResolveReplaceAllRange(int64_t documentLength, int64_t selectionStart,
                                       int64_t selectionEnd, bool inSelection);

// What Highlight All does with a built list: with "Color results" mark every match and select
// the last; without it mark and select nothing. The status is the count, or "No matches found."
struct HighlightAllOutcome {
  bool mark = false;
  bool selectLast = false;
  FindMatch last;
  FindStatus status;
};
HighlightAllOutcome DecideHighlightAll(const std::vector<FindMatch>& matches, bool colorResults);

// The editor indicators the dialog draws with (rounded boxes under the text).
struct FindIndicatorStyle {
  int indicator;
  Colour colour;
  int alpha;
};
inline constexpr FindIndicatorStyle kHighlightAllIndicator{8, Rgb(0xFF, 0xDC, 0x00), 70};
inline constexpr FindIndicatorStyle kReplacedIndicator{9, Rgb(0xFF, 0xA5, 0x00), 80};
inline constexpr FindIndicatorStyle kReplacedAllIndicator{9, Rgb(0xFF, 0xA5, 0x00), 120};
inline constexpr FindIndicatorStyle kCurrentMatchIndicator{10, Rgb(0x00, 0x78, 0xD7), 80};

// The dialog's position over its parent on one axis: parent + (parent size - dialog size) / 2.
int CentredOrigin(int parentOrigin, int parentSize, int dialogSize);

}  // namespace nebro::search
