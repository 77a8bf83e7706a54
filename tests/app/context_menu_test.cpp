// The context menu's model: order, labels, shortcuts, commands, and the greyed and marked rules.
#include "app/context_menu.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/command_ids.h"

using namespace nebro;
using namespace nebro::app;

namespace {

// The keys as the main window's table gives them; a menu shows what the table says.
const CommandTable& Commands() {
  static const CommandTable table = [] {
    CommandTable t;
    const std::pair<int, const char*> keys[] = {
        {kCmdUndo, "Ctrl+Z"}, {kCmdRedo, "Ctrl+Y"},  {kCmdCut, "Ctrl+X"},  {kCmdCopy, "Ctrl+C"},
        {kCmdPaste, "Ctrl+V"}, {kCmdSelectAll, "Ctrl+A"}, {kCmdFont, "Ctrl+Shift+F"}, {kCmdPrint, "Ctrl+P"},
        {kCmdSave, "Ctrl+S"}, {kCmdSaveAs, "Ctrl+Shift+S"}, {kCmdNew, "Ctrl+N"}, {kCmdOpen, "Ctrl+O"}};
    for (const auto& [id, key] : keys) AddCommand(t, {id, "", {key}, "", {}, {}});
    AddCommand(t, {kCmdFindReplace, "", {"Ctrl+F", "Ctrl+H"}, "Ctrl+H", {}, {}});
    AddCommand(t, {kCmdRegexSearch, "", {"Ctrl+Alt+H"}, "Ctrl+Shift+H", {}, {}});
    return t;
  }();
  return table;
}

std::vector<ContextMenuItem> BuildContextMenu(const ContextMenuState& state) {
  return nebro::app::BuildContextMenu(state, Commands());
}

// One line per top-level entry: label, shortcut, command and flags; a submenu's entries follow
// in braces.
std::string Render(const std::vector<ContextMenuItem>& items, const char* separator) {
  std::string out;
  for (const ContextMenuItem& i : items) {
    if (!out.empty()) out += separator;
    if (i.kind == ContextMenuKind::Separator) {
      out += "---";
      continue;
    }
    out += i.label;
    if (!i.shortcut.empty()) out += " [" + i.shortcut + "]";
    if (i.kind == ContextMenuKind::Command) out += " " + std::to_string(i.command);
    if (i.greyed) out += " greyed";
    if (i.checked) out += " checked";
    if (i.kind == ContextMenuKind::Submenu) out += " {" + Render(i.items, ", ") + "}";
  }
  return out;
}

const ContextMenuItem& Find(const std::vector<ContextMenuItem>& items, const std::string& label) {
  for (const ContextMenuItem& i : items) {
    if (i.label == label) return i;
  }
  static const ContextMenuItem none;
  ADD_FAILURE() << "no item \"" << label << "\"";
  return none;
}

ContextMenuState FreshState() {
  ContextMenuState s;
  s.canUndo = true;
  s.selectionEmpty = false;
  s.clipboardHasText = true;
  s.documentEmpty = false;
  s.documentPath = "/home/ann/notes/readme.md";
  s.theme = 1;
  s.transparency = 20;
  s.lineNumbers = true;
  s.recentFiles[0] = u"/home/ann/notes/readme.md";
  s.recentFileExists[0] = true;
  s.recentFiles[1] = u"/tmp/gone.txt";
  return s;
}

std::vector<std::string> Marked(const ContextMenuState& s, const std::string& submenu) {
  std::vector<std::string> labels;
  const std::vector<ContextMenuItem> menu = BuildContextMenu(s);
  for (const ContextMenuItem& i : Find(menu, submenu).items) {
    if (i.checked) labels.push_back(i.label);
  }
  return labels;
}

}  // namespace

TEST(ContextMenuModel, WholeMenuInOrder) {
  EXPECT_EQ(Render(BuildContextMenu(FreshState()), "\n"),
            "Undo [Ctrl+Z] 2001\nRedo [Ctrl+Y] 2002 greyed\n---\n"
            "Cut [Ctrl+X] 2003\nCopy [Ctrl+C] 2004\nPaste [Ctrl+V] 2005\n---\n"
            "Select All [Ctrl+A] 2006\n---\n"
            "Find & Replace [Ctrl+H] 2007\nRegex Search... [Ctrl+Shift+H] 817\n---\n"
            "Font... [Ctrl+Shift+F] 210\n---\n"
            "View {Line Numbers 3001 checked, Word Wrap 3002}\n"
            "Print {Page Setup... 603, Print Preview... 601, Print... [Ctrl+P] 602}\n---\n"
            "MD Preview (HTML) 3201\n---\n"
            "Theme {Nebro Dark 3101, Nebro Light 3102 checked, Azure 3103, Green 3104, Night 3105, "
            "Sepia 3106}\n"
            "Transparency {0%  (opaque) 6100, 10% 6101, 20% 6102 checked, 30% 6103, 40% 6104, "
            "50% 6105}\n---\n"
            "Save [Ctrl+S] 1003\nSave As... [Ctrl+Shift+S] 1004\n---\n"
            "Recent Files {1.  readme.md {Open 7000, Remove from list 7010}, "
            "2.  gone.txt  \xE2\x8A\x97 {Open 7001 greyed, Remove from list 7011}, ---, Clear All 7020}\n"
            "---\nNew [Ctrl+N] 1001\nOpen... [Ctrl+O] 1002");
}

TEST(ContextMenuModel, GreyedAndMarkedItemsFollowTheState) {
  // Each change to the fresh state and the items it greys (all others stay as they were).
  struct Case {
    void (*change)(ContextMenuState&);
    std::vector<std::string> greyed;
  } cases[] = {
      {[](ContextMenuState& s) { s.canUndo = false; }, {"Undo", "Redo"}},
      {[](ContextMenuState& s) { s.canRedo = true; }, {}},
      {[](ContextMenuState& s) { s.selectionEmpty = true; }, {"Redo", "Cut", "Copy"}},
      {[](ContextMenuState& s) { s.clipboardHasText = false; }, {"Redo", "Paste"}},
      {[](ContextMenuState& s) { s.documentEmpty = true; }, {"Redo", "Select All"}},
      // The preview needs a Markdown path (the path rule itself is tested with the export rules).
      {[](ContextMenuState& s) { s.documentPath = "/a/b/notes.txt"; }, {"Redo", "MD Preview (HTML)"}},
      {[](ContextMenuState& s) { s.documentPath.clear(); }, {"Redo", "MD Preview (HTML)"}},
  };
  for (const Case& c : cases) {
    ContextMenuState s = FreshState();
    c.change(s);
    std::vector<std::string> greyed;
    for (const ContextMenuItem& i : BuildContextMenu(s)) {
      if (i.greyed) greyed.push_back(i.label);
    }
    EXPECT_EQ(greyed, c.greyed);
  }

  ContextMenuState s = FreshState();
  s.lineNumbers = false;
  s.wordWrap = true;
  EXPECT_EQ(Marked(s, "View"), std::vector<std::string>{"Word Wrap"});
  s.theme = 5;
  EXPECT_EQ(Marked(s, "Theme"), std::vector<std::string>{"Sepia"});
  s.theme = 77;  // an unknown number is shown as the theme it reads as
  EXPECT_EQ(Marked(s, "Theme"), std::vector<std::string>{"Nebro Dark"});
  s.transparency = 50;
  EXPECT_EQ(Marked(s, "Transparency"), std::vector<std::string>{"50%"});
  s.transparency = 15;  // not one of the steps: nothing marked
  EXPECT_TRUE(Marked(s, "Transparency").empty());
}

TEST(ContextMenuModel, RecentFilesEntries) {
  ContextMenuState s;
  for (int i = 0; i < 10; ++i) {
    s.recentFiles[i] = u"/docs/file" + std::u16string(1, u'0' + i) + u".txt";
    s.recentFileExists[i] = i != 4;
  }
  s.recentFiles[2] = u"/docs/\u00e4rger \u6587.txt";  // non-ASCII names come out as UTF-8
  const ContextMenuItem recent = Find(BuildContextMenu(s), "Recent Files");
  ASSERT_EQ(recent.items.size(), 12u);  // ten entries, a rule, Clear All
  EXPECT_EQ(recent.items[2].label, "3.  \xC3\xA4rger \xE6\x96\x87.txt");
  EXPECT_EQ(recent.items[4].label, "5.  file4.txt  \xE2\x8A\x97");
  EXPECT_EQ(recent.items[9].label, ":.  file9.txt");  // the tenth: '1' + 9
  for (int i = 0; i < 10; ++i) {
    const ContextMenuItem& entry = recent.items[i];
    ASSERT_EQ(entry.items.size(), 2u);
    EXPECT_EQ(entry.items[0].command, kCmdRecentOpenFirst + i);
    EXPECT_EQ(entry.items[0].greyed, i == 4) << i;  // a missing file cannot be opened ...
    EXPECT_EQ(entry.items[1].command, kCmdRecentRemoveFirst + i);
    EXPECT_FALSE(entry.items[1].greyed) << i;  // ... but can always be taken off the list
  }
  EXPECT_FALSE(recent.items[11].greyed);

  // Empty entries in between are skipped; the numbers stay those of the list positions.
  ContextMenuState gaps;
  gaps.recentFiles[3] = u"/x/only.md";
  gaps.recentFileExists[3] = true;
  const ContextMenuItem few = Find(BuildContextMenu(gaps), "Recent Files");
  ASSERT_EQ(few.items.size(), 3u);
  EXPECT_EQ(few.items[0].label, "4.  only.md");
  EXPECT_EQ(few.items[0].items[0].command, kCmdRecentOpenFirst + 3);

  // An empty list: a greyed placeholder that sends nothing, and Clear All greyed.
  const ContextMenuItem none = Find(BuildContextMenu(ContextMenuState{}), "Recent Files");
  ASSERT_EQ(none.items.size(), 3u);
  EXPECT_EQ(none.items[0].label, "(empty)");
  EXPECT_EQ(none.items[0].command, 0);
  EXPECT_TRUE(none.items[0].greyed);
  EXPECT_TRUE(none.items[2].greyed);
}
