#include "common/command_table.h"

#include <algorithm>

namespace nebro {

void AddCommand(CommandTable& table, Command command) {
  auto it = std::find_if(table.rows.begin(), table.rows.end(), [&](const Command& c) { return c.id == command.id; });
  if (it != table.rows.end()) *it = std::move(command);
  else table.rows.push_back(std::move(command));
}

const Command* FindCommand(const CommandTable& table, int id) {
  auto it = std::find_if(table.rows.begin(), table.rows.end(), [&](const Command& c) { return c.id == id; });
  return it == table.rows.end() ? nullptr : &*it;
}

bool CommandNotBuilt(const CommandTable& table, int id) {
  const Command* c = FindCommand(table, id);
  return c && !c->run;
}

bool CommandEnabled(const CommandTable& table, int id) {
  const Command* c = FindCommand(table, id);
  return c && c->run && (!c->enabled || c->enabled());
}

bool RunCommand(const CommandTable& table, int id) {
  if (!CommandEnabled(table, id)) return false;
  // A copy: the handler may replace rows of the table it was found in.
  const std::function<void()> run = FindCommand(table, id)->run;
  run();
  return true;
}

std::string CommandShortcutText(const CommandTable& table, int id) {
  const Command* c = FindCommand(table, id);
  if (!c) return "";
  if (!c->menuShortcut.empty()) return c->menuShortcut;
  return c->keys.empty() ? "" : c->keys.front();
}

std::vector<KeyListEntry> CommandKeyList(const CommandTable& table) {
  std::vector<KeyListEntry> list;
  for (const Command& c : table.rows) {
    if (c.keys.empty()) continue;
    KeyListEntry entry{"", c.label};
    for (const std::string& k : c.keys) entry.keys += (entry.keys.empty() ? "" : ", ") + k;
    list.push_back(std::move(entry));
  }
  return list;
}

bool ParseKeyChord(const std::string& text, KeyChord& chord) {
  chord = KeyChord();
  size_t start = 0;
  while (true) {
    const size_t plus = text.find('+', start);
    // A '+' at the very end is the key itself ("Ctrl++").
    if (plus == std::string::npos || plus + 1 == text.size()) break;
    const std::string part = text.substr(start, plus - start);
    if (part == "Ctrl") chord.ctrl = true;
    else if (part == "Shift") chord.shift = true;
    else if (part == "Alt") chord.alt = true;
    else return false;
    start = plus + 1;
  }
  chord.key = text.substr(start);
  return !chord.key.empty();
}

}  // namespace nebro
