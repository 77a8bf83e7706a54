// The editor's right-click menu as plain data: which items it holds, in which order, and which of
// them are greyed or marked. The GTK layer reads the state, builds the widgets from the model and
// sends the chosen item's command to the main window.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "appearance/themes.h"
#include "common/command_table.h"
#include "document/recent_files.h"

namespace nebro::app {

// Everything the menu depends on, read at the moment it opens.
struct ContextMenuState {
  bool canUndo = false;
  bool canRedo = false;
  bool selectionEmpty = true;
  bool clipboardHasText = false;
  bool documentEmpty = true;
  std::string documentPath;  // UTF-8; empty for an untitled document
  appearance::ThemeId theme = 0;         // as stored; numbers above 5 read as theme 0
  int transparency = 0;      // per cent
  bool lineNumbers = false;
  bool wordWrap = false;
  // The recent-files list, most recent first; an empty text is an empty entry.
  std::array<std::u16string, document::kRecentFileCount> recentFiles;
  // Whether each entry's file can still be examined (ignored for empty entries).
  std::array<bool, document::kRecentFileCount> recentFileExists{};
};

enum class ContextMenuKind {
  Command,
  Separator,
  Submenu,
};

struct ContextMenuItem {
  ContextMenuKind kind = ContextMenuKind::Command;
  std::string label;     // UTF-8
  std::string shortcut;  // shown right-aligned; empty when the item has none
  int command = 0;       // 0 for separators, submenus and the "(empty)" placeholder
  bool greyed = false;
  bool checked = false;
  std::string tooltip;  // UTF-8; a recent file's full path tells two files of one name apart
  std::vector<ContextMenuItem> items;  // the entries of a submenu
};

// The whole menu for `state`, top level first; the shortcut texts come from `commands`.
std::vector<ContextMenuItem> BuildContextMenu(const ContextMenuState& state, const CommandTable& commands);

// The label of recent entry `index` (0 to 9): '1' + index, ".  ", the file's display name, and
// "  ⊗" when the file is missing. Entry 9 therefore starts with ':'.
std::string RecentFileMenuLabel(int index, std::u16string_view entry, bool fileExists);

}  // namespace nebro::app
