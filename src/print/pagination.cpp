#include "print/pagination.h"

#include <algorithm>

namespace nebro::print {

std::vector<LineSpan> SplitPrintLines(std::string_view text, size_t lineCountHint) {
  std::vector<LineSpan> lines;
  lines.reserve(lineCountHint);
  const size_t n = text.size();
  size_t start = 0;
  size_t i = 0;
  while (i < n) {
    // Find the next CR or LF. Most bytes lie above CR, so one comparison passes them.
    const auto* p = reinterpret_cast<const unsigned char*>(text.data()) + i;
    const auto* end = reinterpret_cast<const unsigned char*>(text.data()) + n;
    while (p < end && (*p > '\r' || (*p != '\n' && *p != '\r'))) ++p;
    i = static_cast<size_t>(p - reinterpret_cast<const unsigned char*>(text.data()));
    if (i >= n) break;
    lines.push_back({start, i - start});
    i += (text[i] == '\r' && i + 1 < n && text[i + 1] == '\n') ? 2 : 1;
    start = i;
  }
  if (start < n) lines.push_back({start, n - start});
  return lines;
}

int PrintLineHeight(std::string_view line, int width, const LineMeasure& measure) {
  if (!line.empty() && measure.textHeight) {
    const int h = measure.textHeight(line, width);
    if (h > 0) return h;
  }
  return measure.emptyLineHeight;
}

PaginationResult PaginateLines(std::string_view text, const std::vector<LineSpan>& lines,
                               int contentWidth, int contentHeight, const PaginationHooks& hooks) {
  PaginationResult result;
  result.pageStarts.push_back(0);
  int pages = 1;
  int64_t used = 0;
  const size_t count = lines.size();
  for (size_t i = 0; i < count; ++i) {
    if (i % kCancelPollInterval == 0 && hooks.cancelRequested && hooks.cancelRequested()) {
      result.cancelled = true;
      break;
    }
    used += PrintLineHeight(LineText(text, lines[i]), contentWidth, hooks.measure) +
            kPrintLineSpacing;
    if (used > contentHeight && i + 1 < count) {
      result.pageStarts.push_back(static_cast<int32_t>(i + 1));
      ++pages;
      if (hooks.pageAdded) hooks.pageAdded(pages, static_cast<int64_t>(i + 1));
      used = 0;
    }
  }
  return result;
}

PageLineRange LinesOfPage(const std::vector<int32_t>& pageStarts, size_t page, size_t lineCount) {
  if (page >= pageStarts.size()) return {lineCount, lineCount};
  const size_t first = std::min(static_cast<size_t>(pageStarts[page]), lineCount);
  const size_t last = page + 1 < pageStarts.size()
                          ? std::min(static_cast<size_t>(pageStarts[page + 1]), lineCount)
                          : lineCount;
  return {first, std::max(first, last)};
}

std::vector<PlacedLine> LayoutPageLines(std::string_view text, const std::vector<LineSpan>& lines,
                                        PageLineRange range, int top, int width,
                                        const LineMeasure& measure) {
  std::vector<PlacedLine> placed;
  const size_t last = std::min(range.last, lines.size());
  if (range.first < last) placed.reserve(last - range.first);
  int y = top;
  for (size_t i = range.first; i < last; ++i) {
    const int h = PrintLineHeight(LineText(text, lines[i]), width, measure);
    placed.push_back({i, y, h});
    y += h + kPrintLineSpacing;
  }
  return placed;
}

}  // namespace nebro::print
