#include "app/main_window_gtk.h"

#include <malloc.h>

#include "app/commands.h"
#include "app/message_box_gtk.h"
#include "app/startup_rules.h"
#include "app/trace_gtk.h"
#include "app/viewer_launch_gtk.h"
#include "appearance/theme_gtk.h"
#include "common/utf.h"
#include "document/file_load_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "settings/settings.h"

namespace nebro {

MainWindow gMain;
bool gViewerMode = false;

namespace {

using namespace sci;

gboolean OnDeleteEvent(GtkWidget*, GdkEvent*, gpointer) {
  RequestClose();
  return TRUE;  // the window is destroyed by our own sequence, not by GTK
}

gboolean OnConfigure(GtkWidget* window, GdkEventConfigure*, gpointer) {
  // Remember the normal place; a maximised window keeps the size it had before.
  if (!gMain.maximized) {
    gtk_window_get_position(GTK_WINDOW(window), &gMain.normalX, &gMain.normalY);
    gtk_window_get_size(GTK_WINDOW(window), &gMain.normalWidth, &gMain.normalHeight);
  }
  return FALSE;
}

gboolean OnWindowState(GtkWidget*, GdkEventWindowState* event, gpointer) {
  gMain.maximized = event->new_window_state & GDK_WINDOW_STATE_MAXIMIZED;
  return FALSE;
}

void OnEditorNotify(GtkWidget*, gint, SCNotification* n, gpointer) {
  if (gViewerMode) return;
  if (n->nmhdr.code == SCN_MODIFIED && (n->modificationType & (SC_MOD_INSERTTEXT | SC_MOD_DELETETEXT))) {
    if (!gMain.doc.modified) {
      gMain.doc.modified = true;
      UpdateTitle();
    }
  }
}

void ToggleWordWrap() {
  gSettings.wordWrap = !gSettings.wordWrap;
  Send(gMain.editor, SCI_SETWRAPMODE, gSettings.wordWrap ? SC_WRAP_WORD : SC_WRAP_NONE);
  Send(gMain.editor, SCI_SETHSCROLLBAR, !gSettings.wordWrap);
}

}  // namespace

void RepaintChrome() {
  for (GtkWidget* w : {gMain.margin, gMain.statusBar, gMain.toolbar}) {
    if (w) gtk_widget_queue_draw(w);
  }
}

void ApplyTransparency(int percent) {
  if (!gMain.window) return;
  gtk_widget_set_opacity(gMain.window, percent > 0 ? TransparencyAlpha(percent) / 255.0 : 1.0);
}

void UpdateTitle() {
  if (gMain.doc.viewerMode) return;
  gtk_window_set_title(GTK_WINDOW(gMain.window), DocumentTitle(gMain.doc).c_str());
}

bool CreateMainWindow(const char* caption, int x, int y, int width, int height, bool defaultPosition) {
  GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_widget_set_name(window, "NebroMainWindow");
  gtk_window_set_title(GTK_WINDOW(window), caption);
  gtk_window_set_default_size(GTK_WINDOW(window), width, height);
  if (!defaultPosition) gtk_window_move(GTK_WINDOW(window), x, y);
  gMain.window = window;
  gMain.doc.viewerMode = gViewerMode;
  gMain.normalX = x;
  gMain.normalY = y;
  gMain.normalWidth = width;
  gMain.normalHeight = height;

  GtkWidget* editor = NewEditor();
  if (!editor) {
    ShowMessageBox(nullptr, kMbOk,
                   "CRITICAL: Cannot create Scintilla control.\nMake sure libscintilla.so is next to nebro.",
                   "Nebro");
    gtk_widget_destroy(window);
    gMain.window = nullptr;
    return false;
  }
  gMain.editor = editor;
  GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_container_add(GTK_CONTAINER(window), box);
  gtk_box_pack_start(GTK_BOX(box), editor, TRUE, TRUE, 0);

  Send(editor, SCI_SETCODEPAGE, SC_CP_UTF8);
  Send(editor, SCI_SETMARGINWIDTHN, 0, 0);
  g_signal_connect(editor, kNotifySignal, G_CALLBACK(OnEditorNotify), nullptr);

  if (gViewerMode) {
    ApplyReadingLook(editor);
  } else {
    Send(editor, SCI_SETWRAPMODE, gSettings.wordWrap ? SC_WRAP_WORD : SC_WRAP_NONE);
    Send(editor, SCI_SETHSCROLLBAR, !gSettings.wordWrap);
    Send(editor, SCI_SETEOLMODE, SC_EOL_CRLF);
    ApplyTheme();
    ApplySystemThemePreference();
    UpdateTitle();
  }

  g_signal_connect(window, "delete-event", G_CALLBACK(OnDeleteEvent), nullptr);
  g_signal_connect(window, "configure-event", G_CALLBACK(OnConfigure), nullptr);
  g_signal_connect(window, "window-state-event", G_CALLBACK(OnWindowState), nullptr);
  gtk_widget_show_all(box);
  return true;
}

void OpenFileFromStartup(const std::string& path) {
  if (!FileLoad(path)) return;
  gMain.doc.path = path;
  gMain.doc.modified = false;
  if (gViewerMode) {
    gtk_window_set_title(GTK_WINDOW(gMain.window), ("Nebro Viewer - " + DisplayName(path)).c_str());
    return;
  }
  UpdateTitle();
  PushMostRecent(&gSettings.recentFiles[0][0], 260, Utf8ToUtf16(path), true);
  RepaintChrome();
}

bool DispatchCommand(int id) {
  GtkWidget* e = gMain.editor;
  switch (id) {
    case kCmdExit: RequestClose(); return true;
    case kCmdUndo: Send(e, SCI_UNDO); return true;
    case kCmdRedo: Send(e, SCI_REDO); return true;
    case kCmdCut: Send(e, SCI_CUT); return true;
    case kCmdCopy: Send(e, SCI_COPY); return true;
    case kCmdPaste: Send(e, SCI_PASTE); return true;
    case kCmdSelectAll: Send(e, SCI_SELECTALL); return true;
    case kCmdWordWrap: ToggleWordWrap(); return true;
    default: break;
  }
  if (id >= kCmdThemeFirst && id <= kCmdThemeLast) {
    SetTheme(static_cast<ThemeId>(id - kCmdThemeFirst), true);
    gtk_widget_queue_draw(gMain.window);
    return true;
  }
  if (id >= kCmdTransparencyFirst && id <= kCmdTransparencyLast) {
    gSettings.transparency = (id - kCmdTransparencyFirst) * 10;
    ApplyTransparency(gSettings.transparency);
    SaveSettings(gSettings);
    return true;
  }
  return false;
}

bool RequestClose() {
  if (!gMain.window || gMain.destroyed) return false;
  DestroyMainWindow();
  return true;
}

void DestroyMainWindow() {
  if (!gMain.window || gMain.destroyed) return;
  gMain.destroyed = true;
  CloseDocumentLock(gMain.doc);
  EndViewer();
  if (!gViewerMode) {
    // Theme, wrap, line numbers and font live in the settings record already.
    gSettings.windowMaximized = gMain.maximized;
    gSettings.windowX = gMain.normalX;
    gSettings.windowY = gMain.normalY;
    gSettings.windowWidth = gMain.normalWidth;
    gSettings.windowHeight = gMain.normalHeight;
    SetFieldText(gSettings.lastFile, Utf8ToUtf16(gMain.doc.path));
    SaveSettings(gSettings);
  }
  gtk_widget_destroy(gMain.window);
  gMain.window = nullptr;
  gMain.editor = nullptr;
  gtk_main_quit();
}

}  // namespace nebro
