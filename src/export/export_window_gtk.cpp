#include "export/export_window_gtk.h"

#include <memory>

#include "appearance/current_theme.h"
#include "common/colour.h"
#include "export/export_dispatch_gtk.h"
#include "export/export_rules.h"
#include "gtk/drawing_gtk.h"
#include "gtk/theme_broadcast_gtk.h"
#include "gtk/themed_window_gtk.h"
#include "gtk/widget_style_gtk.h"

namespace nebro::exports {
namespace {

// What the window needs after it is shown. The editor and owner are watched: the program may
// end while the window is open.
struct ExportWindow {
  GtkWidget* window = nullptr;
  GtkWidget* combo = nullptr;
  GtkWidget* description = nullptr;
  GtkWindow* owner = nullptr;
  GtkWidget* editor = nullptr;
  std::string documentPath;
  const settings::AppSettings* settings = nullptr;
};

void ShowDescription(ExportWindow* w) {
  const int active = gtk_combo_box_get_active(GTK_COMBO_BOX(w->combo));
  const auto formats = ExportFormats();
  if (active >= 0 && static_cast<size_t>(active) < formats.size()) {
    gtk_label_set_text(GTK_LABEL(w->description), formats[active].description);
  }
}

gboolean DrawButton(GtkWidget* button, cairo_t* cr, gpointer label) {
  const appearance::ThemeColors& t = appearance::GetThemeColors();
  const bool pressed = gtk_widget_get_state_flags(button) & GTK_STATE_FLAG_ACTIVE;
  const bool focused = gtk_widget_has_focus(button);
  ButtonLook look{pressed ? t.buttonFacePressed : t.buttonFace, focused ? t.buttonFocusBorder : t.pressedBackground,
                  focused ? t.strongText : t.controlText, focused};
  DrawPushButton(button, cr, look, static_cast<const char*>(label));
  return TRUE;
}

GtkWidget* Button(const char* label) {
  GtkWidget* button = gtk_button_new();
  if (AtkObject* a11y = gtk_widget_get_accessible(button)) atk_object_set_name(a11y, label);
  gtk_widget_set_size_request(button, 96, 30);
  g_signal_connect(button, "draw", G_CALLBACK(DrawButton), const_cast<char*>(label));
  return button;
}

void Restyle(ExportWindow* w) {
  const appearance::ThemeColors& t = appearance::GetThemeColors();
  const std::string css = "* { background-image: none; background-color: " + ColourText(t.inputBackground) +
                          "; color: " + ColourText(t.controlText) + "; border-color: " +
                          ColourText(t.border) + "; }";
  GtkCssProvider* provider = gtk_css_provider_new();
  gtk_css_provider_load_from_data(provider, css.c_str(), -1, nullptr);
  AddCssToTree(w->combo, provider);
  g_object_unref(provider);
}

// The export runs once the click has been handled and the window is gone: its Save dialog
// and questions each wait for an answer, which the click's caller should not wait for.
struct PendingExport {
  GtkWindow* owner = nullptr;
  GtkWidget* editor = nullptr;
  std::string documentPath;
  const settings::AppSettings* settings = nullptr;
  int32_t format = 0;
};

void Watch(GtkWidget* widget, GtkWidget** slot) {
  if (widget) g_object_add_weak_pointer(G_OBJECT(widget), reinterpret_cast<gpointer*>(slot));
}
void Unwatch(GtkWidget** slot) {
  if (*slot) g_object_remove_weak_pointer(G_OBJECT(*slot), reinterpret_cast<gpointer*>(slot));
}

gboolean RunPendingExport(gpointer data) {
  std::unique_ptr<PendingExport> p(static_cast<PendingExport*>(data));
  GtkWidget* owner = p->owner ? GTK_WIDGET(p->owner) : nullptr;
  const bool alive = p->editor != nullptr;
  Unwatch(&p->editor);
  if (alive) ExportDocument(owner ? GTK_WINDOW(owner) : nullptr, p->editor, p->documentPath, *p->settings, p->format);
  return G_SOURCE_REMOVE;
}

void OnExport(GtkButton*, ExportWindow* w) {
  const int active = gtk_combo_box_get_active(GTK_COMBO_BOX(w->combo));
  const auto formats = ExportFormats();
  if (active < 0 || static_cast<size_t>(active) >= formats.size()) return;
  auto* pending = new PendingExport{w->owner, w->editor, w->documentPath, w->settings, formats[active].id};
  Watch(pending->editor, &pending->editor);
  gtk_widget_destroy(w->window);  // frees `w`
  g_idle_add(RunPendingExport, pending);
}

}  // namespace

void ShowExportWindow(GtkWindow* owner, GtkWidget* editor, const std::string& documentPath,
                      const settings::AppSettings& settings) {
  auto* w = new ExportWindow;
  w->owner = owner;
  w->editor = editor;
  w->documentPath = documentPath;
  w->settings = &settings;
  if (editor) g_object_add_weak_pointer(G_OBJECT(editor), reinterpret_cast<gpointer*>(&w->editor));

  ThemedWindowOptions shell;
  shell.parent = owner;
  shell.title = std::string(kExportMessageTitle);
  shell.name = "NebroExport";
  shell.modal = true;
  shell.resizable = false;
  w->window = CreateThemedWindow(shell);
  g_signal_connect_swapped(w->window, "destroy", G_CALLBACK(+[](ExportWindow* w) {
                             if (w->editor) {
                               g_object_remove_weak_pointer(G_OBJECT(w->editor), reinterpret_cast<gpointer*>(&w->editor));
                             }
                             delete w;
                           }), w);

  GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 6);
  gtk_container_set_border_width(GTK_CONTAINER(box), 16);
  GtkWidget* formatLabel = gtk_label_new("Export format:");
  gtk_label_set_xalign(GTK_LABEL(formatLabel), 0);
  w->combo = gtk_combo_box_text_new();
  for (const ExportFormat& row : ExportFormats()) gtk_combo_box_text_append_text(GTK_COMBO_BOX_TEXT(w->combo), row.name);
  gtk_combo_box_set_active(GTK_COMBO_BOX(w->combo), 0);
  gtk_label_set_mnemonic_widget(GTK_LABEL(formatLabel), w->combo);
  if (AtkObject* a11y = gtk_widget_get_accessible(w->combo)) atk_object_set_name(a11y, "Export format:");
  gtk_widget_set_size_request(w->combo, 380, -1);
  GtkWidget* descriptionLabel = gtk_label_new("Description:");
  gtk_label_set_xalign(GTK_LABEL(descriptionLabel), 0);
  gtk_widget_set_margin_top(descriptionLabel, 8);
  w->description = gtk_label_new("");
  gtk_label_set_xalign(GTK_LABEL(w->description), 0);
  gtk_label_set_line_wrap(GTK_LABEL(w->description), TRUE);
  gtk_label_set_max_width_chars(GTK_LABEL(w->description), 48);
  ShowDescription(w);
  g_signal_connect_swapped(w->combo, "changed", G_CALLBACK(ShowDescription), w);

  GtkWidget* buttons = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8);
  gtk_widget_set_halign(buttons, GTK_ALIGN_END);
  gtk_widget_set_margin_top(buttons, 12);
  GtkWidget* exportButton = Button("Export");
  GtkWidget* cancelButton = Button("Cancel");
  g_signal_connect(exportButton, "clicked", G_CALLBACK(OnExport), w);
  g_signal_connect_swapped(cancelButton, "clicked", G_CALLBACK(gtk_widget_destroy), w->window);
  gtk_box_pack_start(GTK_BOX(buttons), exportButton, FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(buttons), cancelButton, FALSE, FALSE, 0);

  for (GtkWidget* child : {formatLabel, w->combo, descriptionLabel, w->description, buttons}) {
    gtk_box_pack_start(GTK_BOX(box), child, FALSE, FALSE, 0);
  }
  gtk_container_add(GTK_CONTAINER(w->window), box);
  Restyle(w);
  FollowThemeChanges(w->window, [w] {
    Restyle(w);
    gtk_widget_queue_draw(w->window);
  });
  gtk_widget_set_can_default(exportButton, TRUE);
  gtk_window_set_default(GTK_WINDOW(w->window), exportButton);
  gtk_widget_show_all(w->window);
  gtk_widget_grab_focus(w->combo);
}

}  // namespace nebro::exports
