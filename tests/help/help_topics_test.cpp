// The topics' rules: the shortcut list follows the command table it is given, commands without a
// window are marked as such, and stored values out of range read as the defaults.
#include <gtest/gtest.h>

#include "help/help_topics.h"

using namespace nebro;
using namespace nebro::help;

TEST(HelpTopics, ShortcutsFollowTheCommandTable) {
  CommandTable table;
  AddCommand(table, {1, "Frobnicate", {"Ctrl+K", "Alt+F7"}, "", [] {}, {}});
  AddCommand(table, {2, "Unbuilt Thing", {"Ctrl+Shift+U"}, "", {}, {}});
  AddCommand(table, {3, "Keyless", {}, "", [] {}, {}});
  const std::vector<HelpTopic> topics = HelpTopics(table);
  ASSERT_EQ(topics.size(), static_cast<size_t>(kHelpTopicCount));
  const std::string& keys = topics[kShortcutsTopic].text;
  EXPECT_NE(keys.find("\nCtrl+K, Alt+F7\tFrobnicate\n"), std::string::npos) << keys;
  EXPECT_NE(keys.find("\nCtrl+Shift+U\tUnbuilt Thing (not available in this version)\n"), std::string::npos);
  EXPECT_EQ(keys.find("Keyless"), std::string::npos);
  EXPECT_NE(topics[8].text.find(": Unbuilt Thing.\n"), std::string::npos) << topics[8].text;
  for (const HelpTopic& t : topics) EXPECT_FALSE(t.title.empty() || t.text.empty());
}

TEST(HelpTopics, StoredTopicAndSizeAreClamped) {
  EXPECT_EQ(HelpTopicIndex(9), 9);
  EXPECT_EQ(HelpTopicIndex(10), 0);
  EXPECT_EQ(HelpTopicIndex(-1), 0);
  EXPECT_EQ(HelpWindowSize(0, 0).width, kHelpDefaultWidth);
  EXPECT_EQ(HelpWindowSize(100, 9000).width, kHelpMinWidth);
  EXPECT_EQ(HelpWindowSize(100, 9000).height, 9000);
  EXPECT_EQ(HelpWindowSize(700, 10).height, kHelpMinHeight);
}
