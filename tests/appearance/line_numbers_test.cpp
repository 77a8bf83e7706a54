// The line-number margin's width, font size and the rows it paints.
#include "appearance/line_numbers.h"

#include <gtest/gtest.h>

using namespace nebro;

TEST(LineNumbers, WidthHasThreeDigitsAtLeastAndGrowsAtEachPowerOfTen) {
  // "9" 9 pixels wide: 3 digits -> 39, 4 -> 48, 5 -> 57.
  EXPECT_EQ(MarginWidth(0, 9), 39);
  EXPECT_EQ(MarginWidth(1, 9), 39);
  EXPECT_EQ(MarginWidth(5, 9), 39);
  EXPECT_EQ(MarginWidth(999, 9), 39);
  EXPECT_EQ(MarginWidth(1000, 9), 48);
  EXPECT_EQ(MarginWidth(9999, 9), 48);
  EXPECT_EQ(MarginWidth(10000, 9), 57);
  EXPECT_EQ(MarginWidth(15'500'000, 9), 9 * 8 + 12);
  // A width the editor cannot tell counts as 8.
  EXPECT_EQ(MarginWidth(5, 0), 36);
  EXPECT_EQ(MarginWidth(5, -3), 36);
  EXPECT_EQ(MarginWidth(5, 1), 15);
}

TEST(LineNumbers, FontFollowsZoomButNotBelowSixPoints) {
  EXPECT_EQ(MarginFontPoints(11, 0), 11);
  EXPECT_EQ(MarginFontPoints(11, 4), 15);
  EXPECT_EQ(MarginFontPoints(11, -5), 6);
  EXPECT_EQ(MarginFontPoints(11, -10), 6);
  EXPECT_EQ(MarginFontPoints(8, -1), 7);
}

namespace {

long OneToOne(long display) { return display; }

std::vector<long> Numbers(const std::vector<MarginRow>& rows) {
  std::vector<long> out;
  for (const MarginRow& r : rows) out.push_back(r.number);
  return out;
}

}  // namespace

TEST(LineNumbers, RowsFillTheMarginAndStopAtTheLastLine) {
  // 100 pixels of 16-pixel rows: six full rows and a partial seventh.
  MarginView v{0, 16, 100, 0, 1000};
  auto rows = MarginRowsToPaint(v, OneToOne);
  ASSERT_EQ(rows.size(), 7u);
  EXPECT_EQ(Numbers(rows), (std::vector<long>{1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(rows[6].top, 96);
  EXPECT_TRUE(rows[0].current);
  for (size_t i = 1; i < rows.size(); ++i) EXPECT_FALSE(rows[i].current);

  // Exactly six rows' height: no seventh row.
  v.clientHeight = 96;
  EXPECT_EQ(MarginRowsToPaint(v, OneToOne).size(), 6u);

  // A three-line document stops after three numbers.
  v.lineCount = 3;
  EXPECT_EQ(Numbers(MarginRowsToPaint(v, OneToOne)), (std::vector<long>{1, 2, 3}));

  // Nothing to paint in an empty margin.
  v.clientHeight = 0;
  EXPECT_TRUE(MarginRowsToPaint(v, OneToOne).empty());
}

TEST(LineNumbers, ScrolledViewMarksTheCaretRow) {
  // Scrolled to display line 50; the caret two rows down.
  MarginView v{50, 20, 60, 40, 1000};
  auto rows = MarginRowsToPaint(v, OneToOne);
  EXPECT_EQ(Numbers(rows), (std::vector<long>{51, 52, 53}));
  EXPECT_FALSE(rows[0].current);
  EXPECT_FALSE(rows[1].current);
  EXPECT_TRUE(rows[2].current);
  EXPECT_EQ(rows[2].top, 40);

  // The caret scrolled out of view marks nothing.
  v.caretY = -200;
  for (const MarginRow& r : MarginRowsToPaint(v, OneToOne)) EXPECT_FALSE(r.current);

  // A line height the editor cannot tell counts as 16.
  v.textHeight = 0;
  v.caretY = 16;
  v.clientHeight = 48;
  rows = MarginRowsToPaint(v, OneToOne);
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[1].top, 16);
  EXPECT_TRUE(rows[1].current);
}

TEST(LineNumbers, WrappedLinesGetTheirOwnNumbers) {
  // Two document lines, the first wrapped over three display lines: display lines 0-2 belong to
  // line 0, 3 to line 1, and anything beyond to the line count.
  auto docLine = [](long display) -> long { return display < 3 ? 0 : display == 3 ? 1 : 2; };
  MarginView v{0, 16, 160, 16 * 3, 2};
  auto rows = MarginRowsToPaint(v, docLine);
  EXPECT_EQ(Numbers(rows), (std::vector<long>{1, 2, 3, 4}));
  EXPECT_TRUE(rows[3].current);
}
