#include "search/find_replace_rules.h"

#include <algorithm>
#include <cstdio>

#include "common/utf.h"

namespace nebro::search {

const char* FindDialogControlText(int id) {
  switch (id) {
    case kFindWhatLabel: return "Find what:";
    case kReplaceWithLabel: return "Replace with:";
    case kOptionsGroup: return "Options";
    case kMatchCaseCheck: return "Match case";
    case kWholeWordCheck: return "Whole word";
    case kWrapAroundCheck: return "Wrap around";
    case kPreserveCaseCheck: return "Preserve case";
    case kInSelectionCheck: return "Replace in selection";
    case kColorResultsCheck: return "Color results";
    case kFindNextButton: return "Find Next";
    case kFindPrevButton: return "Find Prev";
    case kReplaceButton: return "Replace";
    case kReplaceAllButton: return "Replace All";
    case kHighlightAllButton: return "Highlight All";
    case kCloseButton: return "Close";
    case kStatusLabel: return "Status:";
    default: return "";
  }
}

FindStatus MatchCountStatus(size_t count, FindStatusKind kind) {
  if (count == 1) return {"1 match found.", kind};
  char buf[64];
  std::snprintf(buf, sizeof buf, "%zu matches found.", count);
  return {buf, kind};
}

FindStatus ReplaceAllStatus(int count) {
  if (count <= 0) return {kNoOccurrencesText, FindStatusKind::Warning};
  char buf[64];
  std::snprintf(buf, sizeof buf, "%d occurrence(s) replaced.", count);
  return {buf, FindStatusKind::ResultCount};
}

Colour FindStatusColour(FindStatusKind kind, Colour dialogText) {
  switch (kind) {
    case FindStatusKind::Warning: return Rgb(0xFF, 0xB4, 0x00);
    case FindStatusKind::ResultCount: return Rgb(0x28, 0xA0, 0x50);
    case FindStatusKind::Normal: break;
  }
  return dialogText;
}

std::string ClipFindFieldText(std::string_view utf8) {
  std::u16string units = Utf8ToUtf16(utf8);
  if (units.size() <= kFindFieldMaxUnits) return std::string(utf8);
  size_t keep = kFindFieldMaxUnits;
  if (units[keep - 1] >= 0xD800 && units[keep - 1] <= 0xDBFF) --keep;
  units.resize(keep);
  return Utf16ToUtf8(units);
}

ReplaceAllRange ResolveReplaceAllRange(int64_t documentLength, int64_t selectionStart,
                                       int64_t selectionEnd, bool inSelection) {
  if (!inSelection) return {0, documentLength, false};
  if (selectionStart == selectionEnd) return {0, documentLength, true};
  return {std::min(selectionStart, selectionEnd), std::max(selectionStart, selectionEnd), false};
}

HighlightAllOutcome DecideHighlightAll(const std::vector<FindMatch>& matches, bool colorResults) {
  HighlightAllOutcome out;
  if (matches.empty()) {
    out.status = {kNoMatchesFoundText, FindStatusKind::Warning};
    return out;
  }
  out.mark = colorResults;
  out.selectLast = colorResults;
  out.last = matches.back();
  out.status = MatchCountStatus(matches.size(), FindStatusKind::ResultCount);
  return out;
}

int CentredOrigin(int parentOrigin, int parentSize, int dialogSize) {
  return parentOrigin + (parentSize - dialogSize) / 2;
}

}  // namespace nebro::search
