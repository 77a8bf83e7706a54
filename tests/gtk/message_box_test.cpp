#include "gtk/message_box.h"

#include <gtest/gtest.h>

using namespace nebro;

TEST(MessageBox, LayoutFollowsLinesAndKind) {
  const auto one = ComputeMessageBoxLayout(kMbOk, "Cannot save file.", 200);
  EXPECT_EQ(one.textHeight, 14);
  EXPECT_EQ(one.buttonTop, 25);
  EXPECT_EQ(one.dialogHeight, 43);
  ASSERT_EQ(one.buttons.size(), 1u);
  EXPECT_EQ(one.buttons[0].x, 75);  // centred
  EXPECT_STREQ(one.buttons[0].label, "OK");

  // Three buttons 56 apart, centred as a group; the dialog two units taller.
  const auto three = ComputeMessageBoxLayout(kMbSaveDontSaveCancel, "a\nb\nc", 200);
  EXPECT_EQ(three.textHeight, 34);
  EXPECT_EQ(three.dialogHeight, 65);
  ASSERT_EQ(three.buttons.size(), 3u);
  EXPECT_EQ(three.buttons[0].x, 19);
  EXPECT_EQ(three.buttons[2].x, 131);
  EXPECT_STREQ(three.buttons[1].label, "Don't Save");

  const auto yesNo = ComputeMessageBoxLayout(kMbYesNo, "", 250);
  EXPECT_EQ(yesNo.lines, 1);  // an empty text is one line
  EXPECT_EQ(yesNo.buttons[0].x, 72);
  EXPECT_STREQ(yesNo.buttons[1].label, "No");

  // Width grows with the longest line (characters, not bytes) within bounds.
  EXPECT_EQ(MessageBoxWidthFor("short"), 200);
  EXPECT_EQ(MessageBoxWidthFor(std::string(60, 'x') + "\nshort"), 254);
  std::string accented;
  for (int i = 0; i < 60; ++i) accented += "\xC3\xA9";
  EXPECT_EQ(MessageBoxWidthFor(accented), 254);
  EXPECT_EQ(MessageBoxWidthFor(std::string(500, 'x')), 400);
}

// Buttons, Escape and closing of every kind are answered through the real box in
// message_box_guitest; these are the answers it has no button for.
TEST(MessageBox, ResultsByControlAndKind) {
  EXPECT_EQ(MessageBoxResultFor(kMbYesNo, kMbButton1), kMbResultSaveOrYes);
  EXPECT_EQ(MessageBoxResultFor(kMbYesNo, kMbButton2), kMbResultDontSaveOrNo);
  EXPECT_EQ(MessageBoxResultFor(kMbOkCancel, kMbButton1), kMbResultOk);
  EXPECT_EQ(MessageBoxResultFor(kMbOk, kMbButton2), -1);  // no such button
}
