#include "app/context_menu_gtk.h"

#include <gdk/gdkkeysyms.h>

#include <algorithm>
#include <string>

#include "app/main_window_gtk.h"
#include "appearance/current_theme.h"
#include "common/utf.h"
#include "gtk/widget_style_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "settings/settings.h"

namespace nebro::app {

namespace {

using namespace sci;

constexpr const char* kCommandKey = "nebro-command";
constexpr const char* kCheckMark = "\xE2\x9C\x93";  // U+2713 CHECK MARK

// The menu's look in the current theme. One provider serves every widget of one menu: a provider
// added to a style context reaches only that widget, so it is added to each of them.
std::string MenuCss(const appearance::ThemeColors& t) {
  const std::string bg = ColourText(t.dialogBackground);
  const std::string fg = ColourText(t.dialogText);
  const std::string hover = ColourText(t.hoverBackground);
  const std::string greyed = ColourText(t.disabledText);
  const std::string rule = ColourText(t.border);
  return "window, menu, .menu { background-color: " + bg + "; background-image: none; color: " + fg + "; }\n"
         "menu, .menu { border: 1px solid " + rule + "; padding: 4px 0; margin: 0;"
         " font-family: \"Segoe UI\", sans-serif; font-size: 9pt; }\n"
         "menuitem { background-color: transparent; background-image: none; box-shadow: none;"
         " text-shadow: none; color: " + fg + "; padding: 4px 14px 4px 6px; min-height: 18px; }\n"
         "menuitem:hover { background-color: " + hover + "; color: " + fg + "; }\n"
         "menuitem label, menuitem:hover label { color: " + fg + "; text-shadow: none; }\n"
         "menuitem arrow, menuitem:hover arrow { color: " + fg + "; min-width: 14px; min-height: 14px; }\n"
         "menuitem:disabled, menuitem:disabled label, menuitem:disabled arrow { color: " + greyed + "; }\n"
         "menu separator { background-color: " + rule + "; min-height: 1px; margin: 4px 8px; }\n";
}

void AddCss(GtkWidget* widget, GtkCssProvider* css) {
  gtk_style_context_add_provider(gtk_widget_get_style_context(widget), GTK_STYLE_PROVIDER(css),
                                 GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
}

GtkWidget* NewLabel(const char* text, float xalign) {
  GtkWidget* label = gtk_label_new(text);  // plain text: "Find & Replace" shows its '&'
  gtk_label_set_xalign(GTK_LABEL(label), xalign);
  return label;
}

void OnItemActivate(GtkMenuItem* item, gpointer) {
  try {
    DispatchCommand(GPOINTER_TO_INT(g_object_get_data(G_OBJECT(item), kCommandKey)));
  } catch (...) {
    g_warning("Nebro: failure while running a context-menu command");
  }
}

GtkWidget* BuildMenu(const std::vector<ContextMenuItem>& items, GtkCssProvider* css);

// The mark column, the label and the right-aligned shortcut in one row.
GtkWidget* BuildItem(const ContextMenuItem& model, GtkCssProvider* css) {
  if (model.kind == ContextMenuKind::Separator) return gtk_separator_menu_item_new();
  GtkWidget* item = gtk_menu_item_new();
  GtkWidget* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
  GtkWidget* mark = NewLabel(model.checked ? kCheckMark : "", 0.5f);
  gtk_widget_set_size_request(mark, 20, -1);
  gtk_box_pack_start(GTK_BOX(row), mark, FALSE, FALSE, 0);
  GtkWidget* label = NewLabel(model.label.c_str(), 0.0f);
  gtk_widget_set_hexpand(label, TRUE);
  gtk_box_pack_start(GTK_BOX(row), label, TRUE, TRUE, 0);
  if (!model.shortcut.empty()) {
    GtkWidget* shortcut = NewLabel(model.shortcut.c_str(), 1.0f);
    gtk_widget_set_margin_start(shortcut, 36);
    gtk_box_pack_end(GTK_BOX(row), shortcut, FALSE, FALSE, 0);
  }
  gtk_container_add(GTK_CONTAINER(item), row);
  // The widget's own accessible name follows the label, not the shortcut.
  if (AtkObject* a11y = gtk_widget_get_accessible(item)) {
    atk_object_set_name(a11y, model.label.c_str());
    if (!model.tooltip.empty()) atk_object_set_description(a11y, model.tooltip.c_str());
  }
  if (!model.tooltip.empty()) gtk_widget_set_tooltip_text(item, model.tooltip.c_str());

  if (model.kind == ContextMenuKind::Submenu) {
    gtk_menu_item_set_submenu(GTK_MENU_ITEM(item), BuildMenu(model.items, css));
  } else if (model.command != 0) {
    g_object_set_data(G_OBJECT(item), kCommandKey, GINT_TO_POINTER(model.command));
    g_signal_connect(item, "activate", G_CALLBACK(OnItemActivate), nullptr);
  }
  gtk_widget_set_sensitive(item, !model.greyed);
  return item;
}

GtkWidget* BuildMenu(const std::vector<ContextMenuItem>& items, GtkCssProvider* css) {
  GtkWidget* menu = gtk_menu_new();
  // Every row has its own column for the check mark; GTK's reserved toggle space would come on
  // top of it.
  gtk_menu_set_reserve_toggle_size(GTK_MENU(menu), FALSE);
  for (const ContextMenuItem& model : items) gtk_menu_shell_append(GTK_MENU_SHELL(menu), BuildItem(model, css));
  gtk_widget_show_all(menu);
  AddCssToTree(menu, css);
  // The popup window around the menu shows at its edges.
  AddCss(gtk_widget_get_toplevel(menu), css);
  return menu;
}

gboolean DestroyMenuLater(gpointer menu) {
  gtk_widget_destroy(GTK_WIDGET(menu));
  g_object_unref(menu);
  return G_SOURCE_REMOVE;
}

// Runs before the chosen item's command, so the command's own windows take the focus from
// there. The menu goes once the activation is over.
void OnMenuDeactivate(GtkMenuShell* menu, gpointer) {
  if (gMain.editor && !gMain.destroyed) gtk_widget_grab_focus(gMain.editor);
  g_idle_add(DestroyMenuLater, g_object_ref(menu));
}

// The caret's line box in the editor's window, kept inside the editor when the caret is out of
// view.
GdkRectangle CaretRectangle(GtkWidget* editor) {
  const sptr_t pos = Send(editor, SCI_GETCURRENTPOS);
  const int lineHeight = static_cast<int>(Send(editor, SCI_TEXTHEIGHT, Send(editor, SCI_LINEFROMPOSITION, pos)));
  GtkAllocation area;
  gtk_widget_get_allocation(editor, &area);
  int x = static_cast<int>(Send(editor, SCI_POINTXFROMPOSITION, 0, pos));
  int y = static_cast<int>(Send(editor, SCI_POINTYFROMPOSITION, 0, pos));
  x = std::clamp(x, 0, std::max(0, area.width - 1));
  y = std::clamp(y, 0, std::max(0, area.height - lineHeight));
  if (!gtk_widget_get_has_window(editor)) {
    x += area.x;
    y += area.y;
  }
  return GdkRectangle{x, y, 1, std::max(1, lineHeight)};
}

gboolean OnEditorButtonPress(GtkWidget*, GdkEventButton* event, gpointer) {
  if (gViewerMode || event->type != GDK_BUTTON_PRESS) return FALSE;
  if (!gdk_event_triggers_context_menu(reinterpret_cast<GdkEvent*>(event))) return FALSE;
  // Taken here, before Scintilla sees it: the caret and selection stay where they were, so Cut
  // and Copy act on what was selected.
  ShowContextMenu(reinterpret_cast<GdkEvent*>(event));
  return TRUE;
}

gboolean OnEditorKeyPress(GtkWidget*, GdkEventKey* event, gpointer) {
  if (gViewerMode) return FALSE;
  const auto mods = event->state & (GDK_SHIFT_MASK | GDK_CONTROL_MASK | GDK_MOD1_MASK);
  const bool menuKey = event->keyval == GDK_KEY_Menu && mods == 0;
  const bool shiftF10 = event->keyval == GDK_KEY_F10 && mods == GDK_SHIFT_MASK;
  if (!menuKey && !shiftF10) return FALSE;
  ShowContextMenu(reinterpret_cast<GdkEvent*>(event));
  return TRUE;
}

gboolean OnEditorPopupMenu(GtkWidget*, gpointer) {
  if (gViewerMode) return FALSE;
  ShowContextMenu(nullptr);
  return TRUE;
}

}  // namespace

ContextMenuState ReadContextMenuState() {
  ContextMenuState s;
  if (GtkWidget* e = gMain.editor) {
    s.canUndo = Send(e, SCI_CANUNDO) != 0;
    s.canRedo = Send(e, SCI_CANREDO) != 0;
    s.selectionEmpty = Send(e, SCI_GETSELECTIONSTART) == Send(e, SCI_GETSELECTIONEND);
    s.documentEmpty = Send(e, SCI_GETLENGTH) == 0;
  }
  s.clipboardHasText = gtk_clipboard_wait_is_text_available(gtk_clipboard_get(GDK_SELECTION_CLIPBOARD));
  s.documentPath = gMain.doc.path;
  s.theme = appearance::CurrentThemeId();
  s.transparency = settings::gSettings.transparency;
  s.lineNumbers = settings::gSettings.lineNumbers;
  s.wordWrap = settings::gSettings.wordWrap;
  for (int i = 0; i < document::kRecentFileCount; ++i) {
    s.recentFiles[i] = std::u16string(document::RecentFileEntry(settings::gSettings.recentFiles, i));
    s.recentFileExists[i] = !s.recentFiles[i].empty() && document::PathExists(Utf16ToUtf8(s.recentFiles[i]));
  }
  return s;
}

GtkWidget* CreateContextMenuWidget(const std::vector<ContextMenuItem>& items) {
  GtkCssProvider* css = gtk_css_provider_new();
  gtk_css_provider_load_from_data(css, MenuCss(appearance::GetThemeColors()).c_str(), -1, nullptr);
  GtkWidget* menu = BuildMenu(items, css);
  g_object_unref(css);  // the style contexts hold it now
  return menu;
}

GtkWidget* ShowContextMenu(GdkEvent* trigger) {
  GtkWidget* editor = gMain.editor;
  if (gViewerMode || !editor || gMain.destroyed) return nullptr;
  GtkWidget* menu = CreateContextMenuWidget(BuildContextMenu(ReadContextMenuState(), gMain.commands));
  gtk_widget_set_name(menu, "NebroContextMenu");
  gtk_menu_attach_to_widget(GTK_MENU(menu), editor, nullptr);
  g_signal_connect(menu, "deactivate", G_CALLBACK(OnMenuDeactivate), nullptr);
  // Without an event of its own (the "popup-menu" signal) the menu takes the one being handled.
  GdkEvent* current = trigger ? nullptr : gtk_get_current_event();
  if (current) trigger = current;
  if (trigger && trigger->type == GDK_BUTTON_PRESS) {
    gtk_menu_popup_at_pointer(GTK_MENU(menu), trigger);
  } else {
    const GdkRectangle caret = CaretRectangle(editor);
    gtk_menu_popup_at_rect(GTK_MENU(menu), gtk_widget_get_window(editor), &caret, GDK_GRAVITY_SOUTH_WEST,
                           GDK_GRAVITY_NORTH_WEST, trigger);
  }
  if (current) gdk_event_free(current);
  return menu;
}

void AttachContextMenu(GtkWidget* editor) {
  if (gViewerMode || !editor) return;
  Send(editor, SCI_USEPOPUP, SC_POPUP_NEVER);
  g_signal_connect(editor, "button-press-event", G_CALLBACK(OnEditorButtonPress), nullptr);
  g_signal_connect(editor, "key-press-event", G_CALLBACK(OnEditorKeyPress), nullptr);
  g_signal_connect(editor, "popup-menu", G_CALLBACK(OnEditorPopupMenu), nullptr);
}

}  // namespace nebro::app
