// The context menu's model: the marked items and the recent-files entries. Its labels, shortcuts,
// greyed items and commands are checked on the real window in context_menu_guitest.
#include "app/context_menu.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/command_ids.h"

using namespace nebro;

namespace {

std::vector<app::ContextMenuItem> BuildContextMenu(const app::ContextMenuState& state) {
  return nebro::app::BuildContextMenu(state, CommandTable{});
}

const app::ContextMenuItem& Find(const std::vector<app::ContextMenuItem>& items, const std::string& label) {
  for (const app::ContextMenuItem& i : items) {
    if (i.label == label) return i;
  }
  static const app::ContextMenuItem none;
  ADD_FAILURE() << "no item \"" << label << "\"";
  return none;
}

std::vector<std::string> Marked(const app::ContextMenuState& s, const std::string& submenu) {
  std::vector<std::string> labels;
  const std::vector<app::ContextMenuItem> menu = BuildContextMenu(s);
  for (const app::ContextMenuItem& i : Find(menu, submenu).items) {
    if (i.checked) labels.push_back(i.label);
  }
  return labels;
}

}  // namespace

// Which items are greyed for the editor's state is checked on the real window in
// context_menu_guitest, each rule in a state that sets it apart from the others.
TEST(ContextMenuModel, MarkedItemsFollowTheState) {
  app::ContextMenuState s;
  s.theme = 1;
  s.transparency = 20;
  s.lineNumbers = true;
  EXPECT_EQ(Marked(s, "View"), std::vector<std::string>{"Line Numbers"});
  EXPECT_EQ(Marked(s, "Transparency"), std::vector<std::string>{"20%"});
  s.lineNumbers = false;
  s.wordWrap = true;
  EXPECT_EQ(Marked(s, "View"), std::vector<std::string>{"Word Wrap"});
  s.theme = 77;  // an unknown number is shown as the theme it reads as
  EXPECT_EQ(Marked(s, "Theme"), std::vector<std::string>{"Nebro Dark"});
  s.transparency = 15;  // not one of the steps: nothing marked
  EXPECT_TRUE(Marked(s, "Transparency").empty());
}

TEST(ContextMenuModel, RecentFilesEntries) {
  app::ContextMenuState s;
  for (int i = 0; i < 10; ++i) s.recentFiles[i] = u"/docs/file" + std::u16string(1, u'0' + i) + u".txt";
  s.recentFiles[2] = u"/docs/\u00e4rger \u6587.txt";  // non-ASCII names come out as UTF-8
  s.recentFiles[5].clear();  // an empty entry is skipped; the numbers stay the list positions
  s.recentFileExists.fill(true);
  s.recentFileExists[4] = false;
  const app::ContextMenuItem recent = Find(BuildContextMenu(s), "Recent Files");
  ASSERT_EQ(recent.items.size(), 11u);  // nine entries, a rule, Clear All
  EXPECT_EQ(recent.items[2].label, "3.  \xC3\xA4rger \xE6\x96\x87.txt");
  EXPECT_EQ(recent.items[4].label, "5.  file4.txt  \xE2\x8A\x97");
  EXPECT_EQ(recent.items[5].label, "7.  file6.txt");
  EXPECT_EQ(recent.items[8].label, ":.  file9.txt");  // the tenth: '1' + 9
  // Two files of one name from different folders: the tooltip names the folder.
  s.recentFiles[1] = u"/elsewhere/file0.txt";
  const app::ContextMenuItem twins = Find(BuildContextMenu(s), "Recent Files");
  EXPECT_EQ(twins.items[0].tooltip, "/docs/file0.txt");
  EXPECT_EQ(twins.items[1].tooltip, "/elsewhere/file0.txt");
  for (int at = 0; at < 9; ++at) {
    const int i = at < 5 ? at : at + 1;
    const app::ContextMenuItem& entry = recent.items[at];
    ASSERT_EQ(entry.items.size(), 2u);
    EXPECT_EQ(entry.items[0].command, kCmdRecentOpenFirst + i);
    EXPECT_EQ(entry.items[0].greyed, i == 4) << i;  // a missing file cannot be opened ...
    EXPECT_EQ(entry.items[1].command, kCmdRecentRemoveFirst + i);
    EXPECT_FALSE(entry.items[1].greyed) << i;  // ... but can always be taken off the list
  }
  // An empty list: a placeholder that sends nothing (greyed, as the GUI test sees).
  const app::ContextMenuItem none = Find(BuildContextMenu(app::ContextMenuState{}), "Recent Files");
  EXPECT_EQ(none.items[0].label, "(empty)");
  EXPECT_EQ(none.items[0].command, 0);
}
