#include "app/main_window_gtk.h"

#include "app/context_menu_gtk.h"
#include "app/main_commands_gtk.h"
#include "app/startup_rules.h"
#include "app/typewriter_gtk.h"
#include "gtk/viewer_launch_gtk.h"
#include "appearance/lexer_setup_gtk.h"
#include "appearance/line_numbers_gtk.h"
#include "appearance/reading_look_gtk.h"
#include "appearance/status_bar_gtk.h"
#include "appearance/theme_gtk.h"
#include "appearance/title_bar_gtk.h"
#include "appearance/toolbar_gtk.h"
#include "common/command_ids.h"
#include "common/utf.h"
#include "document/document_questions.h"
#include "document/file_load_gtk.h"
#include "document/recovery_gtk.h"
#include "gtk/accelerators_gtk.h"
#include "gtk/object_ptr_gtk.h"
#include "gtk/message_box_gtk.h"
#include "gtk/shutdown_gtk.h"
#include "gtk/theme_broadcast_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "settings/settings.h"

namespace nebro::app {

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

void UpdateStatus() {
  appearance::UpdateStatusBar(gMain.statusBar, gMain.doc.encoding,
                              document::RecoveryCopySkipped() ? document::kRecoverySkippedNotice : "");
}

void RefreshToolbar() { appearance::RefreshToolbarState(gMain.toolbar, gMain.doc.modified); }

// Opens the first file of a dropped URI list; the others are ignored.
void OpenFirstDroppedFile(gchar** uris) {
  if (!uris || !uris[0]) return;
  GCharPtr file(g_filename_from_uri(uris[0], nullptr, nullptr));
  if (!file) return;
  // After the drop has finished, so the questions of an unsaved document do not hold it open.
  g_idle_add([](gpointer p) -> gboolean {
    std::unique_ptr<std::string> dropped(static_cast<std::string*>(p));
    if (gMain.window && !gMain.destroyed) document::OpenDroppedFile(MainDocumentWindow(), *dropped);
    return G_SOURCE_REMOVE;
  }, new std::string(file.get()));
}

void OnEditorNotify(GtkWidget*, gint, SCNotification* n, gpointer) {
  if (gViewerMode) return;
  try {
    switch (n->nmhdr.code) {
      case SCN_UPDATEUI:
        UpdateStatus();
        appearance::UpdateMargin(gMain.margin);
        break;
      case SCN_MODIFIED:
        if (n->modificationType & (SC_MOD_INSERTTEXT | SC_MOD_DELETETEXT)) {
          if (!gMain.doc.modified) {
            gMain.doc.modified = true;
            UpdateTitle();
            RefreshToolbar();
          }
          if (n->modificationType & SC_MOD_INSERTTEXT) {
            appearance::GuardLongLines(gMain.editor, n->position, {n->text ? n->text : "", n->text ? static_cast<size_t>(n->length) : 0});
          }
          document::NoteChangeForRecovery(MainDocumentWindow());
          UpdateStatus();
          if (n->linesAdded != 0) appearance::UpdateMargin(gMain.margin);
        }
        break;
      case SCN_ZOOM:
        appearance::UpdateMargin(gMain.margin);
        UpdateStatus();
        break;
      case SCN_URIDROPPED: {
        // Files dropped on the text arrive from the editor as a URI list.
        GStrvPtr uris(g_uri_list_extract_uris(n->text));
        OpenFirstDroppedFile(uris.get());
        break;
      }
      case SCN_PAINTED:
        // The line is counted on the screen, and wrapping lays lines out again after the
        // change that caused it (Word Wrap, a narrower window) without a UI update.
        UpdateStatus();
        break;
      default:
        break;
    }
  } catch (...) {
    g_warning("Nebro: failure while handling an editor notification");
  }
}

gboolean OnEditorKey(GtkWidget*, GdkEventKey* event, gpointer) {
  if (!settings::gSettings.soundOnKeyPress) return FALSE;
  if (event->state & (GDK_CONTROL_MASK | GDK_MOD1_MASK)) return FALSE;  // shortcuts type nothing
  const bool enter = event->keyval == GDK_KEY_Return || event->keyval == GDK_KEY_KP_Enter;
  const uint32_t c = enter ? 13 : gdk_keyval_to_unicode(event->keyval);
  PlayTypewriterSound(TypewriterSoundFor(settings::gSettings.soundOnKeyPress, settings::gSettings.soundOnNewLine, c));
  return FALSE;
}

void OnActiveChanged(GObject* window, GParamSpec*, gpointer) {
  if (!gtk_window_is_active(GTK_WINDOW(window))) {
    document::DocumentWindowDeactivated();
  } else {
    // After the activation has settled, so a box shown from here does not fight it.
    g_idle_add([](gpointer) -> gboolean {
      if (gMain.window && !gMain.destroyed) document::CheckDocumentOnActivation(MainDocumentWindow());
      return G_SOURCE_REMOVE;
    }, nullptr);
  }
}

void OnDragDataReceived(GtkWidget*, GdkDragContext* context, gint, gint, GtkSelectionData* data, guint,
                        guint time, gpointer) {
  GStrvPtr uris(gtk_selection_data_get_uris(data));
  gtk_drag_finish(context, uris && uris.get()[0], FALSE, time);
  OpenFirstDroppedFile(uris.get());
}

void FollowTheme() {
  if (gViewerMode || !gMain.editor) return;
  appearance::ApplyThemeToEditor(gMain.editor);
  RepaintChrome();
  gtk_widget_queue_draw(gMain.window);
}

}  // namespace

document::DocumentWindow MainDocumentWindow() {
  return {GTK_WINDOW(gMain.window), gMain.editor, &gMain.doc, [] {
            UpdateTitle();
            RepaintChrome();
          }};
}

void RepaintChrome() {
  if (gViewerMode) return;
  RefreshToolbar();
  UpdateStatus();
  appearance::UpdateMargin(gMain.margin);
  for (GtkWidget* w : {gMain.margin, gMain.statusBar, gMain.toolbar}) {
    if (w) gtk_widget_queue_draw(w);
  }
}

void ApplyTransparency(int percent) {
  if (!gMain.window) return;
  gtk_widget_set_opacity(gMain.window, percent > 0 ? TransparencyAlpha(percent) / 255.0 : 1.0);
}

void UpdateTitle() {
  if (gMain.doc.viewerMode || !gMain.window) return;
  gtk_window_set_title(GTK_WINDOW(gMain.window), document::DocumentTitle(gMain.doc).c_str());
}

bool CreateMainWindow(const char* caption, int x, int y, int width, int height, bool defaultPosition) {
  GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_widget_set_name(window, "NebroMainWindow");
  gtk_window_set_title(GTK_WINDOW(window), caption);
  gtk_window_set_default_size(GTK_WINDOW(window), width, height);
  if (!defaultPosition) gtk_window_move(GTK_WINDOW(window), x, y);
  // An opacity set before the window exists is kept by GTK but never reaches the X window.
  g_signal_connect_after(window, "realize", G_CALLBACK(+[](GtkWidget* w, gpointer) {
    gdk_window_set_opacity(gtk_widget_get_window(w), gtk_widget_get_opacity(w));
  }), nullptr);
  gMain.window = window;
  gMain.destroyed = false;
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
  gMain.commands = CommandTable();
  if (!gViewerMode) {
    AddMainWindowCommands(gMain.commands);
    document::AddDocumentCommands(gMain.commands, MainDocumentWindow());
  }
  // Toolbar on top, the line-number margin left of the editor, the status bar at the bottom;
  // the viewer has the editor alone.
  GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_container_add(GTK_CONTAINER(window), box);
  GtkWidget* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
  if (!gViewerMode) {
    gMain.toolbar = appearance::CreateToolbar(gMain.commands, [](int id) { DispatchCommand(id); });
    gMain.margin = appearance::CreateLineNumberMargin(editor);
    gMain.statusBar = appearance::CreateStatusBar(editor);
    gtk_box_pack_start(GTK_BOX(box), gMain.toolbar, FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(row), gMain.margin, FALSE, FALSE, 0);
  }
  gtk_box_pack_start(GTK_BOX(row), editor, TRUE, TRUE, 0);
  gtk_box_pack_start(GTK_BOX(box), row, TRUE, TRUE, 0);
  if (gMain.statusBar) gtk_box_pack_start(GTK_BOX(box), gMain.statusBar, FALSE, FALSE, 0);

  Send(editor, SCI_SETCODEPAGE, SC_CP_UTF8);
  // Scintilla's own margins stay closed (the line numbers are a widget of ours; its symbol
  // margin would show as a grey strip), and the text keeps a little room from the edges.
  appearance::HideOwnMargins(editor);
  Send(editor, SCI_SETMARGINLEFT, 0, 4);
  Send(editor, SCI_SETMARGINRIGHT, 0, 4);
  // Layouts of every line on the screen are kept between paints, not only the caret's: a line of
  // megabytes is laid out once, not again on each scroll.
  Send(editor, SCI_SETLAYOUTCACHE, SC_CACHE_PAGE);
  // Unwrapped, the horizontal scroll bar reaches the end of the widest line shown so far, where
  // Scintilla would otherwise assume 2,000 pixels.
  Send(editor, SCI_SETSCROLLWIDTHTRACKING, 1);
  Send(editor, SCI_SETSCROLLWIDTH, 1);
  g_signal_connect(editor, kNotifySignal, G_CALLBACK(OnEditorNotify), nullptr);

  if (gViewerMode) {
    appearance::ApplyReadingLook(editor);
  } else {
    appearance::ApplyWordWrap(editor);
    // New documents end their lines as every Linux program does; loaded files keep their own.
    Send(editor, SCI_SETEOLMODE, SC_EOL_LF);
    appearance::ApplyThemeToEditor(editor);
    appearance::SetDarkTitleBar(appearance::GetThemeColors().isDark);
    FollowThemeChanges(window, FollowTheme);
    appearance::ApplySystemThemePreference();
    UpdateTitle();
    gMain.accelerators = CreateAccelerators(gMain.commands, DispatchCommand);
    gtk_window_add_accel_group(GTK_WINDOW(window), gMain.accelerators);
    g_object_unref(gMain.accelerators);  // the window holds it
    // The viewer takes no dropped files.
    gtk_drag_dest_set(window, GTK_DEST_DEFAULT_ALL, nullptr, 0, GDK_ACTION_COPY);
    gtk_drag_dest_add_uri_targets(window);
    g_signal_connect(window, "drag-data-received", G_CALLBACK(OnDragDataReceived), nullptr);
    g_signal_connect(window, "notify::is-active", G_CALLBACK(OnActiveChanged), nullptr);
    g_signal_connect(editor, "key-press-event", G_CALLBACK(OnEditorKey), nullptr);
    AttachContextMenu(editor);
  }
  g_signal_connect(window, "delete-event", G_CALLBACK(OnDeleteEvent), nullptr);
  g_signal_connect(window, "configure-event", G_CALLBACK(OnConfigure), nullptr);
  g_signal_connect(window, "window-state-event", G_CALLBACK(OnWindowState), nullptr);
  gtk_widget_show_all(box);
  if (gMain.margin) gtk_widget_set_visible(gMain.margin, settings::gSettings.lineNumbers);
  RepaintChrome();
  gtk_widget_grab_focus(editor);
  return true;
}

void OpenFileFromStartup(const std::string& path) {
  if (!gViewerMode) {
    document::LoadAsDocument(MainDocumentWindow(), path);
    return;
  }
  document::FileLoad({GTK_WINDOW(gMain.window), gMain.editor, &gMain.doc}, path, [path](bool loaded) {
    if (!loaded || !gMain.window) return;
    gMain.doc.path = document::DocumentPath(path);
    appearance::ApplyReadingLook(gMain.editor);
    Send(gMain.editor, SCI_SETREADONLY, 1);
    gtk_window_set_title(GTK_WINDOW(gMain.window), ("Nebro Viewer - " + document::DocumentDisplayName(path)).c_str());
  });
}

bool DispatchCommand(int id) {
  if (gViewerMode || !gMain.window || gMain.destroyed) return false;  // the viewer has no commands
  return RunCommand(gMain.commands, id);
}

bool RequestClose() {
  if (!gMain.window || gMain.destroyed) return false;
  if (document::FileLoadInProgress()) return false;  // the window goes once the load has finished
  if (!gViewerMode && !document::ConfirmLeavingDocument(MainDocumentWindow())) return false;
  DestroyMainWindow();
  return true;
}

void DestroyMainWindow() {
  if (!gMain.window || gMain.destroyed) return;
  gMain.destroyed = true;
  // Text that was never saved outlives an editor ended by a signal (a logout, a shutdown) as a
  // recovery copy, offered at the next start; a close the user chose leaves none behind.
  if (!gViewerMode && ShuttingDown() && gMain.doc.modified) document::KeepRecoveryCopyNow(MainDocumentWindow());
  else if (!gViewerMode) document::RemoveRecoveryCopy();
  document::CloseDocumentLock(gMain.doc);
  EndViewer();
  if (!gViewerMode) {
    document::RestartAutoSaveTimer(MainDocumentWindow(), 0);
    // Theme, wrap, line numbers and font live in the settings record already.
    settings::gSettings.windowMaximized = gMain.maximized;
    settings::gSettings.windowX = gMain.normalX;
    settings::gSettings.windowY = gMain.normalY;
    settings::gSettings.windowWidth = gMain.normalWidth;
    settings::gSettings.windowHeight = gMain.normalHeight;
    settings::SetFieldText(settings::gSettings.lastFile, Utf8ToUtf16(gMain.doc.path));
    settings::SaveSettings(settings::gSettings);
  }
  gtk_widget_destroy(gMain.window);
  gMain.window = gMain.editor = gMain.margin = gMain.toolbar = gMain.statusBar = nullptr;
  gMain.accelerators = nullptr;
  gMain.commands = CommandTable();
  if (gtk_main_level() > 0) gtk_main_quit();
}

void ResetMainWindowState() {
  ResetShutdown();
  document::RemoveRecoveryCopy();
  document::DocumentWindowDeactivated();
  SetMessageBoxLook(std::nullopt);
  if (gMain.window) {
    document::CloseDocumentLock(gMain.doc);
    document::RestartAutoSaveTimer(MainDocumentWindow(), 0);
    gtk_widget_destroy(gMain.window);
  }
  gMain = MainWindow();
  gViewerMode = false;
  settings::SetDefaultSettings(settings::gSettings);
  appearance::gThemeChosenByUser = true;
  SetMessageBoxHook(nullptr);
}

}  // namespace nebro::app
