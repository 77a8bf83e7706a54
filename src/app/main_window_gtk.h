// The main window: the editor and its companions, the document state, the command table, and the
// close and destroy sequence. Only the app folder touches it; the subsystems get the parts they
// work on as parameters.
#pragma once

#include <gtk/gtk.h>

#include <string>

#include "common/command_table.h"
#include "document/document_ops_gtk.h"
#include "document/document_state.h"

namespace nebro::app {

struct MainWindow {
  GtkWidget* window = nullptr;
  GtkWidget* editor = nullptr;
  GtkWidget* margin = nullptr;     // line numbers; normal mode only
  GtkWidget* toolbar = nullptr;    // normal mode only
  GtkWidget* statusBar = nullptr;  // normal mode only
  GtkAccelGroup* accelerators = nullptr;
  document::DocumentState doc;
  CommandTable commands;
  // The window's size and position while neither maximised nor minimised (the "normal" place).
  int normalX = 0, normalY = 0, normalWidth = 0, normalHeight = 0;
  bool maximized = false;
  bool destroyed = false;
};

extern MainWindow gMain;
extern bool gViewerMode;

// Creates the main window and its children. Returns false (after telling the user) when the
// editor cannot be created.
bool CreateMainWindow(const char* caption, int x, int y, int width, int height, bool defaultPosition);

// The parts of the main window that the document functions work on.
document::DocumentWindow MainDocumentWindow();

// Sets the title from the document state ("Nebro - name *"); the viewer keeps its own title.
void UpdateTitle();

// Loads `path` as the start-up file (the open-file message of the window).
void OpenFileFromStartup(const std::string& path);

// Runs a command by its id, as menus, accelerators, the toolbar and tests do. Returns false for
// an id that is not bound (or not built yet, or disabled).
bool DispatchCommand(int id);

// The close request: asks about unsaved changes in normal mode, then destroys the window.
// Returns true when the window was destroyed.
bool RequestClose();
// Destroys the window without asking (used after the question, and on SIGTERM/SIGINT): the
// window's place, the last file and the settings are saved, and the main loop (if any) ends.
void DestroyMainWindow();
// Forgets the main window and every setting, as at the start of the process (tests).
void ResetMainWindowState();

// Repaints the parts that take the theme (margin, status bar, toolbar).
void RepaintChrome();

// Applies the transparency percentage to the window (0 = opaque).
void ApplyTransparency(int percent);

}  // namespace nebro::app
