// The status bar's five texts and its part edges.
#include "appearance/status_bar.h"

#include <gtest/gtest.h>

using namespace nebro;
using namespace nebro::appearance;

// The everyday texts (position, selection, encodings, line ends, zoom) are checked on the real
// window in status_bar_guitest; these are the limits it cannot reach.
TEST(StatusBar, TextsAtTheirLimits) {
  EXPECT_EQ(StatusLineNumber(2, -5 * 17, 17), 1);  // a caret above the view: never below line 1
  // A line height the editor cannot tell counts as 16.
  EXPECT_EQ(StatusLineNumber(0, 32, 0), 3);
  EXPECT_EQ(StatusLineNumber(0, 32, -4), 3);
  EXPECT_EQ(StatusLineNumber(9, 31, 16), 11);  // a y inside the row's height stays on that row

  StatusInput in;
  in.encoding = 2;
  in.selectedCharacters = 1234567;
  StatusTexts t = MakeStatusTexts(in);
  EXPECT_EQ(t[1], "  Sel: 1234567");
  EXPECT_EQ(t[2], "  UTF-16 LE");
  // Values out of range: UTF-8 and "?"; the largest zoom the editor allows.
  in.encoding = 7;
  in.eolMode = 9;
  in.zoom = 20;
  t = MakeStatusTexts(in);
  EXPECT_EQ(t[2], "  UTF-8");
  EXPECT_EQ(t[3], "  ?");
  EXPECT_EQ(t[4], "  300%");
  EXPECT_STREQ(EncodingLabel(-1), "UTF-8");
  EXPECT_STREQ(LineEndingLabel(-1), "?");
}

TEST(StatusBar, PartsOnTheRightKeepTheirWidthAndTheFirstTakesTheRest) {
  // Digit width 8: the four parts on the right are 112, 96, 56 and 72 pixels wide.
  EXPECT_EQ(StatusPartEdges(1000, 8), (std::array<int, 5>{664, 776, 872, 928, -1}));
  EXPECT_EQ(StatusPartEdges(1300, 8)[0], 964);
  // A narrow bar keeps room for the position; the fixed parts then run past the right edge.
  const auto narrow = StatusPartEdges(200, 8);
  EXPECT_EQ(narrow[0], 128);
  EXPECT_GT(narrow[3], 200);
  // The widths grow with the font; an unknown unit counts as 8.
  EXPECT_EQ(StatusPartEdges(1000, 10), (std::array<int, 5>{580, 720, 840, 910, -1}));
  EXPECT_EQ(StatusPartEdges(1000, 0), StatusPartEdges(1000, 8));
}
