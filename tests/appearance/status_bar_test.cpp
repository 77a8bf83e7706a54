// The status bar's five texts and its part edges.
#include "appearance/status_bar.h"

#include <gtest/gtest.h>

using namespace nebro;

TEST(StatusBar, PositionCountsScreenRowsFromTheFirstVisibleLine) {
  StatusInput in;
  in.textHeight = 17;
  EXPECT_EQ(MakeStatusTexts(in)[0], "  Ln 1, Col 1");
  in.firstVisibleLine = 40;
  in.caretY = 3 * 17;
  in.column = 11;
  EXPECT_EQ(MakeStatusTexts(in)[0], "  Ln 44, Col 12");
  // A caret scrolled out above the view counts back from the first visible line...
  in.caretY = -5 * 17;
  EXPECT_EQ(MakeStatusTexts(in)[0], "  Ln 36, Col 12");
  // ...but never below line 1.
  in.firstVisibleLine = 2;
  EXPECT_EQ(StatusLineNumber(in.firstVisibleLine, in.caretY, in.textHeight), 1);
  // A line height the editor cannot tell counts as 16.
  EXPECT_EQ(StatusLineNumber(0, 32, 0), 3);
  EXPECT_EQ(StatusLineNumber(0, 32, -4), 3);
  EXPECT_EQ(StatusLineNumber(9, 31, 16), 11);  // a y inside the row's height stays on that row
}

TEST(StatusBar, SelectionPartIsEmptyWithoutASelection) {
  StatusInput in;
  EXPECT_EQ(MakeStatusTexts(in)[1], "");
  in.selectedCharacters = 3;
  EXPECT_EQ(MakeStatusTexts(in)[1], "  Sel: 3");
  in.selectedCharacters = 1234567;
  EXPECT_EQ(MakeStatusTexts(in)[1], "  Sel: 1234567");
}

TEST(StatusBar, EncodingAndLineEndingLabels) {
  const char* encodings[] = {"UTF-8 BOM", "UTF-8", "UTF-16 LE", "UTF-16 BE", "ANSI"};
  for (int e = 0; e < 5; ++e) EXPECT_STREQ(EncodingLabel(e), encodings[e]);
  for (int e : {-1, 5, 65001}) EXPECT_STREQ(EncodingLabel(e), "UTF-8") << e;
  EXPECT_STREQ(LineEndingLabel(0), "CRLF");
  EXPECT_STREQ(LineEndingLabel(1), "CR");
  EXPECT_STREQ(LineEndingLabel(2), "LF");
  for (int m : {-1, 3, 10}) EXPECT_STREQ(LineEndingLabel(m), "?") << m;

  StatusInput in;
  in.encoding = 2;
  in.eolMode = 2;
  StatusTexts t = MakeStatusTexts(in);
  EXPECT_EQ(t[2], "  UTF-16 LE");
  EXPECT_EQ(t[3], "  LF");
  in.encoding = 7;
  in.eolMode = 9;
  t = MakeStatusTexts(in);
  EXPECT_EQ(t[2], "  UTF-8");
  EXPECT_EQ(t[3], "  ?");
}

TEST(StatusBar, ZoomShownAsPercentage) {
  StatusInput in;
  const std::pair<int, const char*> cases[] = {
      {0, "  100%"}, {2, "  120%"}, {-5, "  50%"}, {-10, "  0%"}, {20, "  300%"}, {-1, "  90%"}};
  for (const auto& [zoom, text] : cases) {
    in.zoom = zoom;
    EXPECT_EQ(MakeStatusTexts(in)[4], text) << zoom;
  }
}

TEST(StatusBar, PartsOnTheRightKeepTheirWidthAndTheFirstTakesTheRest) {
  // Digit width 8: the four parts on the right are 112, 96, 56 and 72 pixels wide.
  auto edges = StatusPartEdges(1000, 8);
  EXPECT_EQ(edges, (std::array<int, 5>{664, 776, 872, 928, -1}));
  edges = StatusPartEdges(1300, 8);
  EXPECT_EQ(edges[0], 964);
  EXPECT_EQ(edges[3] - edges[2], 56);
  EXPECT_EQ(edges[4], -1);
  // A narrow bar keeps room for the position; the fixed parts then run past the right edge.
  edges = StatusPartEdges(200, 8);
  EXPECT_EQ(edges[0], 128);
  EXPECT_GT(edges[3], 200);
  // The widths grow with the font; an unknown unit counts as 8.
  EXPECT_EQ(StatusPartEdges(1000, 10), (std::array<int, 5>{580, 720, 840, 910, -1}));
  EXPECT_EQ(StatusPartEdges(1000, 0), StatusPartEdges(1000, 8));
}
