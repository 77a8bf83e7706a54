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

TEST(LineNumbers, WidthAndFont) {
  // "9" 9 pixels wide: three digits at least, a digit more at each power of ten.
  const std::pair<long, int> widths[] = {{0, 39},     {999, 39},   {1000, 48},
                                         {9999, 48},  {10000, 57}, {15'500'000, 84}};
  for (const auto& [lines, width] : widths) EXPECT_EQ(MarginWidth(lines, 9), width) << lines;
  // A width the editor cannot tell counts as 8.
  EXPECT_EQ(MarginWidth(5, 0), 36);
  EXPECT_EQ(MarginWidth(5, -3), 36);

  // The font follows the zoom, but not below six points.
  EXPECT_EQ(MarginFontPoints(11, 4), 15);
  EXPECT_EQ(MarginFontPoints(11, -5), 6);
  EXPECT_EQ(MarginFontPoints(11, -10), 6);
}

TEST(LineNumbers, RowsFillTheMarginAndStopAtTheLastLine) {
  // 100 pixels of 16-pixel rows: six full rows and a partial seventh.
  MarginView v{0, 16, 100, 0, 1000};
  auto rows = MarginRowsToPaint(v, OneToOne);
  EXPECT_EQ(Numbers(rows), (std::vector<long>{1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(rows[6].top, 96);
  EXPECT_TRUE(rows[0].current);
  for (size_t i = 1; i < rows.size(); ++i) EXPECT_FALSE(rows[i].current);

  v.clientHeight = 96;  // exactly six rows' height: no seventh row
  EXPECT_EQ(MarginRowsToPaint(v, OneToOne).size(), 6u);
  v.lineCount = 3;  // a three-line document stops after three numbers
  EXPECT_EQ(Numbers(MarginRowsToPaint(v, OneToOne)), (std::vector<long>{1, 2, 3}));
  v.clientHeight = 0;
  EXPECT_TRUE(MarginRowsToPaint(v, OneToOne).empty());
}

TEST(LineNumbers, ScrolledAndWrappedViews) {
  // Scrolled to display line 50; the caret two rows down.
  MarginView v{50, 20, 60, 40, 1000};
  auto rows = MarginRowsToPaint(v, OneToOne);
  EXPECT_EQ(Numbers(rows), (std::vector<long>{51, 52, 53}));
  EXPECT_FALSE(rows[1].current);
  EXPECT_TRUE(rows[2].current);
  EXPECT_EQ(rows[2].top, 40);

  v.caretY = -200;  // the caret scrolled out of view marks nothing
  for (const MarginRow& r : MarginRowsToPaint(v, OneToOne)) EXPECT_FALSE(r.current);

  // A line height the editor cannot tell counts as 16.
  v = {0, 0, 48, 16, 1000};
  rows = MarginRowsToPaint(v, OneToOne);
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[1].top, 16);
  EXPECT_TRUE(rows[1].current);

  // Two document lines, the first wrapped over three display lines: every display line gets
  // its own number, and the rows stop after the last document line.
  auto docLine = [](long display) -> long { return display < 3 ? 0 : display == 3 ? 1 : 2; };
  rows = MarginRowsToPaint(MarginView{0, 16, 160, 16 * 3, 2}, docLine);
  EXPECT_EQ(Numbers(rows), (std::vector<long>{1, 2, 3, 4}));
  EXPECT_TRUE(rows[3].current);
}
