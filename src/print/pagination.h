// Splitting a document into printed pages. The rule is shared by the print preview (which runs
// it on a worker thread) and by printing; the caller supplies how tall a line is when laid out
// with word wrapping in the content width, so the same code serves the screen and the printer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "print/page_frame.h"

namespace nebro::print {

// A line of the document: its bytes without the line break.
struct LineSpan {
  size_t start = 0;
  size_t length = 0;
  bool operator==(const LineSpan&) const = default;
};

// CR, LF and CR LF each end a line; the piece after the last break is a line only when it is not
// empty, so a trailing line break adds no empty last line and an empty text has no lines.
std::vector<LineSpan> SplitPrintLines(std::string_view text, size_t lineCountHint = 0);

inline std::string_view LineText(std::string_view text, const LineSpan& line) {
  return text.substr(line.start, line.length);
}

// How lines are measured: `textHeight` gives the height in pixels of a non-empty line wrapped at
// word breaks in `width` pixels (0 or less when measuring failed); `emptyLineHeight` is the
// font's line height, used for empty lines and failed measurements.
struct LineMeasure {
  std::function<int(std::string_view line, int width)> textHeight;
  int emptyLineHeight = 0;
};

// Pixels between two lines.
inline constexpr int kPrintLineSpacing = 2;
// Cancellation is looked at before every fiftieth line.
inline constexpr size_t kCancelPollInterval = 50;

// The height a line takes on the page, without the spacing.
int PrintLineHeight(std::string_view line, int width, const LineMeasure& measure);

struct PaginationHooks {
  LineMeasure measure;
  // Polled before lines 0, 50, 100, ...; true stops the split.
  std::function<bool()> cancelRequested;
  // Called each time a page is added: the pages so far and the lines processed so far.
  std::function<void(int pages, int64_t lines)> pageAdded;
};

struct PaginationResult {
  std::vector<int32_t> pageStarts;  // first line of every page; always starts with 0
  bool cancelled = false;
};

// The page split: each line adds its height + 2 to the page; when the sum passes the content
// height and more lines follow, the next line starts a new page and the sum restarts at 0. The
// line that crosses the bottom stays on the page it started on, so a line taller than a page is
// a page of its own.
PaginationResult PaginateLines(std::string_view text, const std::vector<LineSpan>& lines,
                               int contentWidth, int contentHeight, const PaginationHooks& hooks);

// The lines [first, last) of a page (0-based); empty past the last page.
struct PageLineRange {
  size_t first = 0;
  size_t last = 0;
  bool operator==(const PageLineRange&) const = default;
};
PageLineRange LinesOfPage(const std::vector<int32_t>& pageStarts, size_t page, size_t lineCount);

// Where each line of a page is drawn: from `top` down, each line at the current y, then y moves
// by its height + 2. Empty lines are placed (and take room) but have nothing to draw.
struct PlacedLine {
  size_t line = 0;
  int y = 0;
  int height = 0;
};
std::vector<PlacedLine> LayoutPageLines(std::string_view text, const std::vector<LineSpan>& lines,
                                        PageLineRange range, int top, int width,
                                        const LineMeasure& measure);

}  // namespace nebro::print
