// The line-number margin's rules without any drawing: its width, its font size, and which
// numbers go on which rows.
#pragma once

#include <functional>
#include <vector>

namespace nebro::appearance {

// Space right of the numbers, inside the margin.
inline constexpr int kMarginRightPadding = 6;
inline constexpr int kMarginMinimumPoints = 6;

// Width for a document of `lineCount` lines when "9" is `nineWidth` pixels wide (8 when below 1):
// one "9" per decimal digit of the line count, at least three, plus 12. So every document up to
// 999 lines gets the same margin, and it widens at 1,000 and 10,000 lines.
int MarginWidth(long lineCount, int nineWidth);

// The numbers follow the editor's zoom, but never below 6 points.
int MarginFontPoints(int fontSize, int zoom);

struct MarginRow {
  int top;      // y of the row; the row is textHeight pixels high
  long number;  // the display line + 1
  bool current; // the caret's row
};

struct MarginView {
  long firstVisibleLine;  // the editor's first visible display line
  int textHeight;         // below 1 counts as 16
  int clientHeight;       // of the margin
  int caretY;             // the caret's y pixel in the editor
  long lineCount;         // document lines
};

// The rows to paint, from the top. A row shows its display line's number (so wrapped lines get
// consecutive numbers, as the status bar counts them); rows stop at the bottom of the margin or
// where `docLineFromVisible` of the display line reaches the line count.
std::vector<MarginRow> MarginRowsToPaint(const MarginView& view, const std::function<long(long)>& docLineFromVisible);

}  // namespace nebro::appearance
