// The context menu's model: order, labels, shortcuts, commands, and the greyed and marked rules.
#include "app/context_menu.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/command_ids.h"

using namespace nebro;

namespace {

// One line per entry: label, shortcut, command and flags, submenus indented below their entry.
void Render(const std::vector<ContextMenuItem>& items, const std::string& indent, std::string& out) {
  for (const ContextMenuItem& i : items) {
    out += indent;
    if (i.kind == ContextMenuKind::Separator) {
      out += "---\n";
      continue;
    }
    out += i.label;
    if (!i.shortcut.empty()) out += " [" + i.shortcut + "]";
    if (i.kind == ContextMenuKind::Command) out += " " + std::to_string(i.command);
    if (i.greyed) out += " greyed";
    if (i.checked) out += " checked";
    out += "\n";
    if (i.kind == ContextMenuKind::Submenu) Render(i.items, indent + "  ", out);
  }
}

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
  return nebro::BuildContextMenu(state, Commands());
}

std::string Render(const ContextMenuState& state) {
  std::string out;
  Render(BuildContextMenu(state), "", out);
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
  s.canRedo = false;
  s.selectionEmpty = false;
  s.clipboardHasText = true;
  s.documentEmpty = false;
  s.documentPath = "/home/ann/notes/readme.md";
  s.theme = 1;
  s.transparency = 20;
  s.lineNumbers = true;
  s.wordWrap = false;
  s.recentFiles[0] = u"/home/ann/notes/readme.md";
  s.recentFileExists[0] = true;
  s.recentFiles[1] = u"/tmp/gone.txt";
  s.recentFileExists[1] = false;
  return s;
}

}  // namespace

TEST(ContextMenuModel, WholeMenuInOrder) {
  EXPECT_EQ(Render(FreshState()),
            "Undo [Ctrl+Z] 2001\n"
            "Redo [Ctrl+Y] 2002 greyed\n"
            "---\n"
            "Cut [Ctrl+X] 2003\n"
            "Copy [Ctrl+C] 2004\n"
            "Paste [Ctrl+V] 2005\n"
            "---\n"
            "Select All [Ctrl+A] 2006\n"
            "---\n"
            "Find & Replace [Ctrl+H] 2007\n"
            "Regex Search... [Ctrl+Shift+H] 817\n"
            "---\n"
            "Font... [Ctrl+Shift+F] 210\n"
            "---\n"
            "View\n"
            "  Line Numbers 3001 checked\n"
            "  Word Wrap 3002\n"
            "Print\n"
            "  Page Setup... 603\n"
            "  Print Preview... 601\n"
            "  Print... [Ctrl+P] 602\n"
            "---\n"
            "MD Preview (HTML) 3201\n"
            "---\n"
            "Theme\n"
            "  Nebro Dark 3101\n"
            "  Nebro Light 3102 checked\n"
            "  Azure 3103\n"
            "  Green 3104\n"
            "  Night 3105\n"
            "  Sepia 3106\n"
            "Transparency\n"
            "  0%  (opaque) 6100\n"
            "  10% 6101\n"
            "  20% 6102 checked\n"
            "  30% 6103\n"
            "  40% 6104\n"
            "  50% 6105\n"
            "---\n"
            "Save [Ctrl+S] 1003\n"
            "Save As... [Ctrl+Shift+S] 1004\n"
            "---\n"
            "Recent Files\n"
            "  1.  readme.md\n"
            "    Open 7000\n"
            "    Remove from list 7010\n"
            "  2.  gone.txt  \xE2\x8A\x97\n"
            "    Open 7001 greyed\n"
            "    Remove from list 7011\n"
            "  ---\n"
            "  Clear All 7020\n"
            "---\n"
            "New [Ctrl+N] 1001\n"
            "Open... [Ctrl+O] 1002\n");
}

TEST(ContextMenuModel, EditingItemsFollowEditorAndClipboard) {
  ContextMenuState s = FreshState();
  s.canUndo = false;
  s.canRedo = true;
  s.selectionEmpty = true;
  s.clipboardHasText = true;
  s.documentEmpty = false;
  auto menu = BuildContextMenu(s);
  EXPECT_TRUE(Find(menu, "Undo").greyed);
  EXPECT_FALSE(Find(menu, "Redo").greyed);
  // Nothing selected: no Cut or Copy; Paste follows the clipboard, not the document.
  EXPECT_TRUE(Find(menu, "Cut").greyed);
  EXPECT_TRUE(Find(menu, "Copy").greyed);
  EXPECT_FALSE(Find(menu, "Paste").greyed);
  EXPECT_FALSE(Find(menu, "Select All").greyed);

  s.clipboardHasText = false;
  s.documentEmpty = true;
  s.selectionEmpty = false;
  menu = BuildContextMenu(s);
  EXPECT_TRUE(Find(menu, "Paste").greyed);
  EXPECT_TRUE(Find(menu, "Select All").greyed);
  EXPECT_FALSE(Find(menu, "Cut").greyed);
  EXPECT_FALSE(Find(menu, "Copy").greyed);

  // Commands without a state rule are never greyed or marked.
  for (const char* label : {"Find & Replace", "Regex Search...", "Font...", "Save", "Save As...", "New", "Open..."}) {
    EXPECT_FALSE(Find(menu, label).greyed) << label;
    EXPECT_FALSE(Find(menu, label).checked) << label;
  }
}

TEST(ContextMenuModel, MarkdownPreviewOnlyForMdPaths) {
  ContextMenuState s = FreshState();
  auto greyed = [&s](const std::string& path) {
    s.documentPath = path;
    return Find(BuildContextMenu(s), "MD Preview (HTML)").greyed;
  };
  EXPECT_FALSE(greyed("/a/b/notes.md"));
  EXPECT_FALSE(greyed("/a/b/NOTES.MD"));
  EXPECT_FALSE(greyed("/a/b/notes.mD"));
  EXPECT_FALSE(greyed(".md"));
  EXPECT_TRUE(greyed(""));  // untitled
  EXPECT_TRUE(greyed("/a/b/notes.txt"));
  EXPECT_TRUE(greyed("/a/b/notes.markdown"));
  EXPECT_TRUE(greyed("/a/b/notes.md.bak"));
  EXPECT_TRUE(greyed("/a/b/notesmd"));
  EXPECT_TRUE(greyed("md"));
}

TEST(ContextMenuModel, ViewThemeAndTransparencyMarks) {
  ContextMenuState s = FreshState();
  auto marked = [&s](const std::string& submenu) {
    std::vector<std::string> labels;
    const std::vector<ContextMenuItem> menu = BuildContextMenu(s);
    for (const ContextMenuItem& i : Find(menu, submenu).items) {
      if (i.checked) labels.push_back(i.label);
    }
    return labels;
  };
  s.lineNumbers = false;
  s.wordWrap = true;
  EXPECT_EQ(marked("View"), std::vector<std::string>{"Word Wrap"});
  s.lineNumbers = false;
  s.wordWrap = false;
  EXPECT_TRUE(marked("View").empty());

  s.theme = 5;
  EXPECT_EQ(marked("Theme"), std::vector<std::string>{"Sepia"});
  s.theme = 0;
  EXPECT_EQ(marked("Theme"), std::vector<std::string>{"Nebro Dark"});
  s.theme = 77;  // an unknown number is shown as the theme it reads as
  EXPECT_EQ(marked("Theme"), std::vector<std::string>{"Nebro Dark"});

  s.transparency = 0;
  EXPECT_EQ(marked("Transparency"), std::vector<std::string>{"0%  (opaque)"});
  s.transparency = 50;
  EXPECT_EQ(marked("Transparency"), std::vector<std::string>{"50%"});
  s.transparency = 15;  // not one of the steps: nothing marked
  EXPECT_TRUE(marked("Transparency").empty());
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
  EXPECT_EQ(recent.items[0].label, "1.  file0.txt");
  EXPECT_EQ(recent.items[2].label, "3.  \xC3\xA4rger \xE6\x96\x87.txt");
  EXPECT_EQ(recent.items[4].label, "5.  file4.txt  \xE2\x8A\x97");
  EXPECT_EQ(recent.items[8].label, "9.  file8.txt");
  EXPECT_EQ(recent.items[9].label, ":.  file9.txt");  // the tenth: '1' + 9
  for (int i = 0; i < 10; ++i) {
    SCOPED_TRACE(i);
    const ContextMenuItem& entry = recent.items[i];
    ASSERT_EQ(entry.kind, ContextMenuKind::Submenu);
    ASSERT_EQ(entry.items.size(), 2u);
    EXPECT_EQ(entry.items[0].label, "Open");
    EXPECT_EQ(entry.items[0].command, kCmdRecentOpenFirst + i);
    EXPECT_EQ(entry.items[0].greyed, i == 4);  // a missing file cannot be opened ...
    EXPECT_EQ(entry.items[1].label, "Remove from list");
    EXPECT_EQ(entry.items[1].command, kCmdRecentRemoveFirst + i);
    EXPECT_FALSE(entry.items[1].greyed);  // ... but can always be taken off the list
  }
  EXPECT_EQ(recent.items[10].kind, ContextMenuKind::Separator);
  EXPECT_EQ(recent.items[11].label, "Clear All");
  EXPECT_FALSE(recent.items[11].greyed);

  // Empty entries in between are skipped; the numbers stay those of the list positions.
  ContextMenuState gaps;
  gaps.recentFiles[3] = u"/x/only.md";
  gaps.recentFileExists[3] = true;
  const ContextMenuItem few = Find(BuildContextMenu(gaps), "Recent Files");
  ASSERT_EQ(few.items.size(), 3u);
  EXPECT_EQ(few.items[0].label, "4.  only.md");
  EXPECT_EQ(few.items[0].items[0].command, kCmdRecentOpenFirst + 3);
}

TEST(ContextMenuModel, EmptyRecentListShowsPlaceholder) {
  const ContextMenuItem recent = Find(BuildContextMenu(ContextMenuState{}), "Recent Files");
  ASSERT_EQ(recent.items.size(), 3u);
  EXPECT_EQ(recent.items[0].label, "(empty)");
  EXPECT_EQ(recent.items[0].kind, ContextMenuKind::Command);
  EXPECT_EQ(recent.items[0].command, 0);
  EXPECT_TRUE(recent.items[0].greyed);
  EXPECT_EQ(recent.items[1].kind, ContextMenuKind::Separator);
  EXPECT_EQ(recent.items[2].label, "Clear All");
  EXPECT_EQ(recent.items[2].command, kCmdRecentClear);
  EXPECT_TRUE(recent.items[2].greyed);
}
