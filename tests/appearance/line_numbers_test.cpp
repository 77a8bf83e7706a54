// The line-number margin's width, font size and the rows it paints.
#include "appearance/line_numbers.h"

#include <gtest/gtest.h>

using namespace nebro;
using namespace nebro::appearance;

namespace {

long OneToOne(long display) { return display; }

std::vector<long> Numbers(const std::vector<MarginRow>& rows) {
  std::vector<long> out;
  for (const MarginRow& r : rows) out.push_back(r.number);
  return out;
}

}  // namespace

// The margin on the real window (growth with the line count and the zoom, the caret's row,
// scrolled and wrapped views) is checked in line_numbers_guitest; these are the rules' edges.
TEST(LineNumbers, WidthAndFont) {
  // "9" 9 pixels wide: three digits at least, a digit more at each power of ten.
  const std::pair<long, int> widths[] = {{0, 39}, {999, 39}, {1000, 48}, {15'500'000, 84}};
  for (const auto& [lines, width] : widths) EXPECT_EQ(MarginWidth(lines, 9), width) << lines;
  // A width the editor cannot tell counts as 8.
  EXPECT_EQ(MarginWidth(5, 0), 36);
  EXPECT_EQ(MarginWidth(5, -3), 36);

  // The font follows the zoom, but not below six points.
  EXPECT_EQ(MarginFontPoints(11, 4), 15);
  EXPECT_EQ(MarginFontPoints(11, -5), 6);
  EXPECT_EQ(MarginFontPoints(11, -10), 6);
}

TEST(LineNumbers, RowsFillTheMargin) {
  // 100 pixels of 16-pixel rows: six full rows and a partial seventh.
  MarginView v{0, 16, 100, 0, 1000};
  auto rows = MarginRowsToPaint(v, OneToOne);
  EXPECT_EQ(Numbers(rows), (std::vector<long>{1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(rows[6].top, 96);
  v.clientHeight = 96;  // exactly six rows' height: no seventh row
  EXPECT_EQ(MarginRowsToPaint(v, OneToOne).size(), 6u);
  v.clientHeight = 0;
  EXPECT_TRUE(MarginRowsToPaint(v, OneToOne).empty());

  // Scrolled to display line 50, the caret scrolled out of view: nothing marked.
  v = {50, 20, 60, -200, 1000};
  rows = MarginRowsToPaint(v, OneToOne);
  EXPECT_EQ(Numbers(rows), (std::vector<long>{51, 52, 53}));
  for (const MarginRow& r : rows) EXPECT_FALSE(r.current);

  // A line height the editor cannot tell counts as 16.
  v = {0, 0, 48, 16, 1000};
  rows = MarginRowsToPaint(v, OneToOne);
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[1].top, 16);
  EXPECT_TRUE(rows[1].current);
}
