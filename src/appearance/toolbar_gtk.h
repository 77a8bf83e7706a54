// The toolbar widget: a custom-drawn strip of six buttons above the editor, 44 pixels high.
#pragma once

#include <gtk/gtk.h>

#include <functional>

#include "appearance/toolbar.h"

namespace nebro {

// A new "NebroToolbar" drawing area. Its buttons send their command ids through the command
// sink (DispatchCommand unless replaced). Save starts disabled.
GtkWidget* CreateToolbar();

// Re-evaluates the enabled flags of gMain.toolbar (Save follows gMain.doc.modified) and
// repaints it. Does nothing while there is no toolbar.
void RefreshToolbarState();

// The buttons' state as the widget holds it (null for a widget that is not a toolbar).
const Toolbar* ToolbarState(GtkWidget* toolbar);

// Where button commands go; by default DispatchCommand. Tests record them instead.
using ToolbarCommandSink = std::function<void(int commandId)>;
void SetToolbarCommandSink(ToolbarCommandSink sink);

}  // namespace nebro
