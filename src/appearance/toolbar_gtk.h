// The toolbar widget: a custom-drawn strip of six buttons above the editor, 44 pixels high.
#pragma once

#include <gtk/gtk.h>

#include <functional>

#include "appearance/toolbar.h"

namespace nebro::appearance {

// Where a pressed button's command goes.
using ToolbarCommandSink = std::function<void(int commandId)>;

// A new "NebroToolbar" drawing area with the buttons labelled from `commands`. A pressed button
// sends its command id to `sink`.
GtkWidget* CreateToolbar(const CommandTable& commands, ToolbarCommandSink sink);

// Re-evaluates the buttons' enabled flags (Save follows the document's modified flag) and
// repaints. Does nothing for a null toolbar.
void RefreshToolbarState(GtkWidget* toolbar, bool documentModified);

// Presses button `index` the way assistive technology does: its command is sent from the main
// loop shortly after, so the caller's request returns first. False for a disabled button.
bool ActivateToolbarButton(GtkWidget* toolbar, int index);

// The buttons' state as the widget holds it (null for a widget that is not a toolbar).
const Toolbar* ToolbarState(GtkWidget* toolbar);

}  // namespace nebro::appearance
