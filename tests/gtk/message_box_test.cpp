#include "gtk/message_box.h"

#include <gtest/gtest.h>

using namespace nebro;

// Buttons, Escape and closing of every kind are answered through the real box in
// message_box_guitest; these are the answers it has no button for.
TEST(MessageBox, ResultsByControlAndKind) {
  EXPECT_EQ(MessageBoxResultFor(kMbYesNo, kMbButton1), kMbResultSaveOrYes);
  EXPECT_EQ(MessageBoxResultFor(kMbYesNo, kMbButton2), kMbResultDontSaveOrNo);
  EXPECT_EQ(MessageBoxResultFor(kMbOkCancel, kMbButton1), kMbResultOk);
  EXPECT_EQ(MessageBoxResultFor(kMbOk, kMbButton2), -1);  // no such button
}
