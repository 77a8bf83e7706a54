// The editor's commands as rows of one table: id, keys, label, handler and enabled rule. The
// accelerators, the toolbar, the context menu's shortcut texts and the help window's key list are
// all made from these rows, so they cannot disagree.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace nebro {

struct Command {
  int id = 0;
  std::string label;              // the short name: toolbar label, help window's key list
  std::vector<std::string> keys;  // accelerators such as "Ctrl+Shift+S"; menus show the first
  std::string menuShortcut;       // what menus show instead, when their label names another key
  std::function<void()> run;      // empty while the command's window is not built
  std::function<bool()> enabled;  // empty: always enabled
};

struct CommandTable {
  std::vector<Command> rows;  // in the order they were added
};

// Adds a row, replacing an earlier row with the same id (a subsystem taking over a command).
void AddCommand(CommandTable& table, Command command);
const Command* FindCommand(const CommandTable& table, int id);
// True when the row exists but has no handler yet: menus and buttons show it greyed, with
// kNotBuiltText as their tooltip, instead of doing nothing silently.
bool CommandNotBuilt(const CommandTable& table, int id);
inline constexpr const char* kNotBuiltText = "Not available yet in this version of Nebro";
// True when the row exists, has a handler and its rule allows it.
bool CommandEnabled(const CommandTable& table, int id);
// Runs the command when it is enabled; false when it is unknown, unbuilt or disabled.
bool RunCommand(const CommandTable& table, int id);
// The key text a menu shows beside the command ("" for none).
std::string CommandShortcutText(const CommandTable& table, int id);

struct KeyListEntry {
  std::string keys;   // "Ctrl+F, Ctrl+H"
  std::string label;  // "Find & Replace"
};
// Every command with keys, in table order: the help window's list of shortcuts.
std::vector<KeyListEntry> CommandKeyList(const CommandTable& table);

// A key text split into its parts: "Ctrl+Shift+S" gives ctrl, shift and "S". False for a text
// that names no key.
struct KeyChord {
  bool ctrl = false, shift = false, alt = false;
  std::string key;
};
bool ParseKeyChord(const std::string& text, KeyChord& chord);

}  // namespace nebro
