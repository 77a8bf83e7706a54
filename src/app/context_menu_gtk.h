// The editor's right-click menu on screen: read the state, build a themed GtkMenu from the model,
// pop it up, and send the chosen command through DispatchCommand.
#pragma once

#include <gtk/gtk.h>

#include <vector>

#include "app/context_menu.h"

namespace nebro::app {

// The state the menu depends on, read from the editor, the clipboard, the document and the
// settings.
ContextMenuState ReadContextMenuState();

// A GtkMenu (not yet shown) for `items`, in the current theme's colours. Each command item
// carries its id (object data "nebro-command") and dispatches it when activated.
GtkWidget* CreateContextMenuWidget(const std::vector<ContextMenuItem>& items);

// Builds and pops up the menu for the current state: at the pointer for a button event, else at
// the caret. Returns the menu, or null in viewer mode or without an editor. The menu is attached
// to the editor; when it closes it is destroyed and the focus goes back to the editor.
GtkWidget* ShowContextMenu(GdkEvent* trigger);

// Gives `editor` this menu in normal mode: turns off Scintilla's own popup and opens the menu on
// a right click, the Menu key and Shift+F10. Does nothing in viewer mode.
void AttachContextMenu(GtkWidget* editor);

}  // namespace nebro::app
