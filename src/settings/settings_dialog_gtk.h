// The Settings dialog: theme, transparency, font, line numbers, word wrap, auto-save and the
// typewriter sound, applied to the running editor on OK.
#pragma once

#include <gtk/gtk.h>

#include <functional>

namespace nebro::settings {

// What the dialog works on besides the settings record: the window it belongs to and its parts,
// and what only that window can do.
struct SettingsDialogTarget {
  GtkWindow* owner = nullptr;
  GtkWidget* editor = nullptr;
  GtkWidget* margin = nullptr;  // the line-number margin (may be null)
  std::function<void(int percent)> applyTransparency;
  std::function<void(int minutes)> restartAutoSave;  // 0 stops it
};

// Opens the modal dialog on the settings record. OK checks the transparency (a message and the
// old value back when it is not 0-50), then applies in order: word wrap and the horizontal scroll
// bar, the line-number margin, transparency, the auto-save timer, the theme; and saves the
// settings. Cancel, Escape and closing leave everything as it was and save nothing.
void ShowSettingsDialog(const SettingsDialogTarget& target);

}  // namespace nebro::settings
