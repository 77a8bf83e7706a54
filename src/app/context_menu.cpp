#include "app/context_menu.h"

#include "app/commands.h"
#include "common/utf.h"
#include "document/document_questions.h"
#include "export/export_rules.h"

namespace nebro {

namespace {

ContextMenuItem Command(std::string label, std::string shortcut, int command, bool greyed = false,
                        bool checked = false) {
  ContextMenuItem item;
  item.label = std::move(label);
  item.shortcut = std::move(shortcut);
  item.command = command;
  item.greyed = greyed;
  item.checked = checked;
  return item;
}

ContextMenuItem Separator() {
  ContextMenuItem item;
  item.kind = ContextMenuKind::Separator;
  return item;
}

ContextMenuItem Submenu(std::string label, std::vector<ContextMenuItem> items) {
  ContextMenuItem item;
  item.kind = ContextMenuKind::Submenu;
  item.label = std::move(label);
  item.items = std::move(items);
  return item;
}

std::vector<ContextMenuItem> ThemeItems(ThemeId current) {
  if (current >= kThemeCount) current = 0;  // an unknown number is drawn as theme 0
  std::vector<ContextMenuItem> items;
  for (ThemeId id = 0; id < kThemeCount; ++id) {
    items.push_back(Command(ThemeName(id), "", kCmdThemeFirst + static_cast<int>(id), false, id == current));
  }
  return items;
}

std::vector<ContextMenuItem> TransparencyItems(int current) {
  std::vector<ContextMenuItem> items;
  for (int step = 0; step <= kCmdTransparencyLast - kCmdTransparencyFirst; ++step) {
    const int percent = step * 10;
    const std::string label = percent == 0 ? "0%  (opaque)" : std::to_string(percent) + "%";
    items.push_back(Command(label, "", kCmdTransparencyFirst + step, false, percent == current));
  }
  return items;
}

std::vector<ContextMenuItem> RecentItems(const ContextMenuState& state) {
  std::vector<ContextMenuItem> items;
  bool any = false;
  for (int i = 0; i < kRecentFileCount; ++i) {
    const std::u16string& entry = state.recentFiles[i];
    if (entry.empty()) continue;
    any = true;
    const bool exists = state.recentFileExists[i];
    items.push_back(Submenu(RecentFileMenuLabel(i, entry, exists),
                            {Command("Open", "", kCmdRecentOpenFirst + i, !exists),
                             Command("Remove from list", "", kCmdRecentRemoveFirst + i)}));
  }
  if (!any) items.push_back(Command("(empty)", "", 0, true));
  items.push_back(Separator());
  items.push_back(Command("Clear All", "", kCmdRecentClear, !any));
  return items;
}

}  // namespace

std::string RecentFileMenuLabel(int index, std::u16string_view entry, bool fileExists) {
  std::string label(1, static_cast<char>('1' + index));
  label += ".  ";
  label += DocumentDisplayName(Utf16ToUtf8(entry));
  if (!fileExists) label += "  \xE2\x8A\x97";  // U+2297 CIRCLED TIMES
  return label;
}

std::vector<ContextMenuItem> BuildContextMenu(const ContextMenuState& s) {
  std::vector<ContextMenuItem> menu;
  menu.push_back(Command("Undo", "Ctrl+Z", kCmdUndo, !s.canUndo));
  menu.push_back(Command("Redo", "Ctrl+Y", kCmdRedo, !s.canRedo));
  menu.push_back(Separator());
  menu.push_back(Command("Cut", "Ctrl+X", kCmdCut, s.selectionEmpty));
  menu.push_back(Command("Copy", "Ctrl+C", kCmdCopy, s.selectionEmpty));
  menu.push_back(Command("Paste", "Ctrl+V", kCmdPaste, !s.clipboardHasText));
  menu.push_back(Separator());
  menu.push_back(Command("Select All", "Ctrl+A", kCmdSelectAll, s.documentEmpty));
  menu.push_back(Separator());
  menu.push_back(Command("Find & Replace", "Ctrl+H", kCmdFindReplace));
  // The label names Ctrl+Shift+H although the key is Ctrl+Alt+H; the label is kept as it is.
  menu.push_back(Command("Regex Search...", "Ctrl+Shift+H", kCmdRegexSearch));
  menu.push_back(Separator());
  menu.push_back(Command("Font...", "Ctrl+Shift+F", kCmdFont));
  menu.push_back(Separator());
  menu.push_back(Submenu("View", {Command("Line Numbers", "", kCmdLineNumbers, false, s.lineNumbers),
                                  Command("Word Wrap", "", kCmdWordWrap, false, s.wordWrap)}));
  menu.push_back(Submenu("Print", {Command("Page Setup...", "", kCmdPageSetup),
                                   Command("Print Preview...", "", kCmdPrintPreview),
                                   Command("Print...", "Ctrl+P", kCmdPrint)}));
  menu.push_back(Separator());
  menu.push_back(Command("MD Preview (HTML)", "", kCmdMarkdownPreview, !IsMarkdownPath(s.documentPath)));
  menu.push_back(Separator());
  menu.push_back(Submenu("Theme", ThemeItems(s.theme)));
  menu.push_back(Submenu("Transparency", TransparencyItems(s.transparency)));
  menu.push_back(Separator());
  menu.push_back(Command("Save", "Ctrl+S", kCmdSave));
  menu.push_back(Command("Save As...", "Ctrl+Shift+S", kCmdSaveAs));
  menu.push_back(Separator());
  menu.push_back(Submenu("Recent Files", RecentItems(s)));
  menu.push_back(Separator());
  menu.push_back(Command("New", "Ctrl+N", kCmdNew));
  menu.push_back(Command("Open...", "Ctrl+O", kCmdOpen));
  return menu;
}

}  // namespace nebro
