// The main window: the editor and its companions, the document state, command dispatch and the
// close and destroy sequence.
#pragma once

#include <gtk/gtk.h>

#include <string>

#include "app/document_state.h"

namespace nebro {

struct MainWindow {
  GtkWidget* window = nullptr;
  GtkWidget* editor = nullptr;
  GtkWidget* margin = nullptr;     // line numbers; normal mode only
  GtkWidget* toolbar = nullptr;    // normal mode only
  GtkWidget* statusBar = nullptr;  // normal mode only
  GtkAccelGroup* accelerators = nullptr;
  DocumentState doc;
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

// Sets the title from the document state ("Nebro - name *"); the viewer keeps its own title.
void UpdateTitle();

// Loads `path` as the start-up file (the open-file message of the window).
void OpenFileFromStartup(const std::string& path);

// Runs a command by its id, as menus, accelerators, the toolbar and tests do. Returns false for
// an id that is not bound.
bool DispatchCommand(int id);

// The close request: asks about unsaved changes in normal mode, then destroys the window.
// Returns true when the window was destroyed.
bool RequestClose();
// Destroys the window without asking (used after the question, and on SIGTERM/SIGINT).
void DestroyMainWindow();

// Repaints the parts that take the theme (margin, status bar, toolbar).
void RepaintChrome();

// Applies the transparency percentage to the window (0 = opaque).
void ApplyTransparency(int percent);

}  // namespace nebro
