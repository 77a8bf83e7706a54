// Starting this executable again as a read-only viewer on a file.
#pragma once

#include <gtk/gtk.h>

#include <string>

namespace nebro {

// Starts a viewer beside `owner` (40 pixels right and down, 740 x 860). Does nothing for an
// empty path and reports nothing on failure. The viewer dies with the editor, and a new launch
// ends the previous viewer.
void LaunchViewer(GtkWindow* owner, const std::string& path);

// Opens `path` with the desktop's default application for its type; when nothing can open
// it, opens `fallback` (`path` when empty) in the viewer instead.
void OpenWithDefaultApplication(GtkWindow* owner, const std::string& path, const std::string& fallback = "");

// Ends the viewer launched last, if it still runs.
void EndViewer();

// The process of the viewer launched last, or 0.
int ViewerProcess();

// The program started as the viewer: this executable, unless a test names the editor's.
void SetViewerExecutable(const std::string& path);

}  // namespace nebro
