// The keyboard accelerators of a window, made from the command table's keys.
#pragma once

#include <gtk/gtk.h>

#include <functional>

#include "common/command_table.h"

namespace nebro {

// One accelerator per key of every row that has a handler; pressing it calls `dispatch(id)`.
// Rows whose window is not built yet get no key, so the key still reaches the editor.
GtkAccelGroup* CreateAccelerators(const CommandTable& table, std::function<bool(int id)> dispatch);

// The GTK key value and modifiers of a key text such as "Ctrl+Shift+S"; false when unknown.
bool KeyChordToAccelerator(const std::string& text, guint& key, GdkModifierType& mods);

}  // namespace nebro
