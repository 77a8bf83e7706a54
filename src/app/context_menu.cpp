#include "app/context_menu.h"

#include "common/command_ids.h"
#include "common/command_table.h"
#include "common/utf.h"
#include "document/document_questions.h"
#include "document/file_load.h"
#include "export/export_rules.h"

namespace nebro::app {

namespace {

ContextMenuItem Item(std::string label, std::string shortcut, int command, bool greyed = false,
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

std::vector<ContextMenuItem> ThemeItems(appearance::ThemeId current) {
  if (current >= appearance::kThemeCount) current = 0;  // an unknown number is drawn as theme 0
  std::vector<ContextMenuItem> items;
  for (appearance::ThemeId id = 0; id < appearance::kThemeCount; ++id) {
    items.push_back(Item(appearance::ThemeName(id), "", kCmdThemeFirst + static_cast<int>(id), false, id == current));
  }
  return items;
}

std::vector<ContextMenuItem> TransparencyItems(int current) {
  std::vector<ContextMenuItem> items;
  for (int step = 0; step <= kCmdTransparencyLast - kCmdTransparencyFirst; ++step) {
    const int percent = step * 10;
    const std::string label = percent == 0 ? "0%  (opaque)" : std::to_string(percent) + "%";
    items.push_back(Item(label, "", kCmdTransparencyFirst + step, false, percent == current));
  }
  return items;
}

// Commands whose window is not built yet are greyed and say so.
void MarkNotBuilt(std::vector<ContextMenuItem>& items, const CommandTable& commands) {
  for (ContextMenuItem& item : items) {
    MarkNotBuilt(item.items, commands);
    if (item.command != 0 && CommandNotBuilt(commands, item.command)) {
      item.greyed = true;
      item.tooltip = kNotBuiltText;
    }
  }
}

std::vector<ContextMenuItem> RecentItems(const ContextMenuState& state) {
  std::vector<ContextMenuItem> items;
  bool any = false;
  for (int i = 0; i < document::kRecentFileCount; ++i) {
    const std::u16string& entry = state.recentFiles[i];
    if (entry.empty()) continue;
    any = true;
    const bool exists = state.recentFileExists[i];
    items.push_back(Submenu(RecentFileMenuLabel(i, entry, exists),
                            {Item("Open", "", kCmdRecentOpenFirst + i, !exists),
                             Item("Remove from list", "", kCmdRecentRemoveFirst + i)}));
    items.back().tooltip = document::DisplayableUtf8(Utf16ToUtf8(entry));
  }
  if (!any) items.push_back(Item("(empty)", "", 0, true));
  items.push_back(Separator());
  items.push_back(Item("Clear All", "", kCmdRecentClear, !any));
  return items;
}

}  // namespace

std::string RecentFileMenuLabel(int index, std::u16string_view entry, bool fileExists) {
  std::string label(1, static_cast<char>('1' + index));
  label += ".  ";
  label += document::DocumentDisplayName(Utf16ToUtf8(entry));
  if (!fileExists) label += "  \xE2\x8A\x97";  // U+2297 CIRCLED TIMES
  return label;
}

std::vector<ContextMenuItem> BuildContextMenu(const ContextMenuState& s, const CommandTable& commands) {
  // An item that shows its command's key as the table gives it.
  const auto Keyed = [&commands](std::string label, int command, bool greyed = false) {
    return Item(std::move(label), CommandShortcutText(commands, command), command, greyed);
  };
  std::vector<ContextMenuItem> menu;
  menu.push_back(Keyed("Undo", kCmdUndo, !s.canUndo));
  menu.push_back(Keyed("Redo", kCmdRedo, !s.canRedo));
  menu.push_back(Separator());
  menu.push_back(Keyed("Cut", kCmdCut, s.selectionEmpty));
  menu.push_back(Keyed("Copy", kCmdCopy, s.selectionEmpty));
  menu.push_back(Keyed("Paste", kCmdPaste, !s.clipboardHasText));
  menu.push_back(Separator());
  menu.push_back(Keyed("Select All", kCmdSelectAll, s.documentEmpty));
  menu.push_back(Separator());
  menu.push_back(Keyed("Find & Replace", kCmdFindReplace));
  menu.push_back(Keyed("Regex Search...", kCmdRegexSearch));
  menu.push_back(Separator());
  menu.push_back(Keyed("Font...", kCmdFont));
  menu.push_back(Separator());
  menu.push_back(Submenu("View", {Item("Line Numbers", "", kCmdLineNumbers, false, s.lineNumbers),
                                  Item("Word Wrap", "", kCmdWordWrap, false, s.wordWrap)}));
  menu.push_back(Submenu("Print", {Item("Page Setup...", "", kCmdPageSetup),
                                   Item("Print Preview...", "", kCmdPrintPreview),
                                   Keyed("Print...", kCmdPrint)}));
  menu.push_back(Separator());
  menu.push_back(Item("MD Preview (HTML)", "", kCmdMarkdownPreview, !exports::IsMarkdownPath(s.documentPath)));
  menu.push_back(Separator());
  menu.push_back(Submenu("Theme", ThemeItems(s.theme)));
  menu.push_back(Submenu("Transparency", TransparencyItems(s.transparency)));
  menu.push_back(Separator());
  menu.push_back(Keyed("Save", kCmdSave));
  menu.push_back(Keyed("Save As...", kCmdSaveAs));
  menu.push_back(Separator());
  menu.push_back(Submenu("Recent Files", RecentItems(s)));
  menu.push_back(Separator());
  menu.push_back(Keyed("New", kCmdNew));
  menu.push_back(Keyed("Open...", kCmdOpen));
  MarkNotBuilt(menu, commands);
  return menu;
}

}  // namespace nebro::app
