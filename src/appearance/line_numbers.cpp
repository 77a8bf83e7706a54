#include "appearance/line_numbers.h"

#include <algorithm>

namespace nebro::appearance {

int MarginWidth(long lineCount, int nineWidth) {
  int digits = 0;
  for (long n = lineCount; n > 0; n /= 10) ++digits;
  digits = std::max(digits, 3);
  const int w = nineWidth < 1 ? 8 : nineWidth;
  return w * digits + 12;
}

int MarginFontPoints(int fontSize, int zoom) { return std::max(fontSize + zoom, kMarginMinimumPoints); }

std::vector<MarginRow> MarginRowsToPaint(const MarginView& view, const std::function<long(long)>& docLineFromVisible) {
  std::vector<MarginRow> rows;
  if (view.clientHeight <= 0) return rows;
  const int h = view.textHeight < 1 ? 16 : view.textHeight;
  const long caretRow = view.caretY / h + view.firstVisibleLine;
  const int rowCount = view.clientHeight / h + 2;
  for (int r = 0; r < rowCount; ++r) {
    const long display = view.firstVisibleLine + r;
    if (docLineFromVisible(display) >= view.lineCount) break;
    if (r * h >= view.clientHeight) break;
    rows.push_back({r * h, display + 1, display == caretRow});
  }
  return rows;
}

}  // namespace nebro::appearance
