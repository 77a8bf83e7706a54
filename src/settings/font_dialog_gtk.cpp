#include "settings/font_dialog_gtk.h"

#include <gdk/gdkkeysyms.h>

#include <algorithm>
#include <string>
#include <vector>

#include "appearance/current_theme.h"
#include "appearance/line_numbers_gtk.h"
#include "appearance/theme_gtk.h"
#include "common/utf.h"
#include "gtk/drawing_gtk.h"
#include "gtk/message_box_gtk.h"
#include "gtk/object_ptr_gtk.h"
#include "gtk/themed_controls_gtk.h"
#include "gtk/themed_window_gtk.h"
#include "settings/settings.h"
#include "settings/settings_dialog.h"

namespace nebro::settings {
namespace {

enum FaceColumn { kFaceName, kFaceMonospace, kFaceColumns };

struct Dialog {
  GtkWidget* editor = nullptr;
  GtkWidget* margin = nullptr;
  std::function<void(bool)> closed;
  bool changed = false;
  GtkWidget* window = nullptr;
  GtkWidget* search = nullptr;
  GtkWidget* monospaceOnly = nullptr;
  GtkWidget* faces = nullptr;
  GtkTreeModel* filter = nullptr;  // owned by the list
  GtkWidget* size = nullptr;
  GtkWidget* bold = nullptr;
  GtkWidget* italic = nullptr;
  GtkWidget* preview = nullptr;
  GtkWidget* ok = nullptr;
  std::string face;      // the face chosen, also while the search hides it
  int previewSize = 11;  // the last valid size typed or picked
  bool gone = false;
};

constexpr const char* kStateKey = "nebro-font-dialog";

void Name(GtkWidget* widget, const char* name, const char* accessibleName) {
  gtk_widget_set_name(widget, name);
  if (AtkObject* a11y = gtk_widget_get_accessible(widget)) atk_object_set_name(a11y, accessibleName);
}

bool Checked(GtkWidget* check) { return gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(check)); }

std::string Folded(const std::string& text) {
  GCharPtr folded(g_utf8_casefold(text.c_str(), -1));
  return folded.get();
}

// Every face the desktop has, monospace faces first, each group by name; the stored face heads
// the list when it is a name the desktop only substitutes.
GtkListStore* FaceList(GtkWidget* widget, const std::string& stored) {
  PangoFontFamily** families = nullptr;
  int count = 0;
  pango_context_list_families(gtk_widget_get_pango_context(widget), &families, &count);
  struct Face {
    std::string name, key;
    bool mono;
  };
  std::vector<Face> list;
  bool storedListed = false;
  for (int i = 0; i < count; ++i) {
    Face f{pango_font_family_get_name(families[i]), "", static_cast<bool>(pango_font_family_is_monospace(families[i]))};
    f.key = Folded(f.name);
    storedListed = storedListed || f.key == Folded(stored);
    list.push_back(std::move(f));
  }
  g_free(families);
  std::sort(list.begin(), list.end(), [](const Face& a, const Face& b) {
    return a.mono != b.mono ? a.mono : a.key < b.key;
  });
  if (!storedListed && !stored.empty()) list.insert(list.begin(), Face{stored, "", true});
  GtkListStore* store = gtk_list_store_new(kFaceColumns, G_TYPE_STRING, G_TYPE_BOOLEAN);
  for (const Face& f : list) {
    gtk_list_store_insert_with_values(store, nullptr, -1, kFaceName, f.name.c_str(), kFaceMonospace, f.mono, -1);
  }
  return store;
}

gboolean FaceVisible(GtkTreeModel* model, GtkTreeIter* iter, gpointer data) {
  auto* d = static_cast<Dialog*>(data);
  gchar* name = nullptr;
  gboolean mono = FALSE;
  gtk_tree_model_get(model, iter, kFaceName, &name, kFaceMonospace, &mono, -1);
  GCharPtr owned(name);
  if (!name) return FALSE;
  if (d->monospaceOnly && Checked(d->monospaceOnly) && !mono) return FALSE;
  const std::string wanted = d->search ? Folded(gtk_entry_get_text(GTK_ENTRY(d->search))) : "";
  return wanted.empty() || Folded(name).find(wanted) != std::string::npos;
}

// Selects the chosen face in the list when it is shown.
void SelectChosenFace(Dialog* d) {
  GtkTreeSelection* selection = gtk_tree_view_get_selection(GTK_TREE_VIEW(d->faces));
  GtkTreeIter iter;
  for (bool more = gtk_tree_model_get_iter_first(d->filter, &iter); more; more = gtk_tree_model_iter_next(d->filter, &iter)) {
    gchar* name = nullptr;
    gtk_tree_model_get(d->filter, &iter, kFaceName, &name, -1);
    GCharPtr owned(name);
    if (name && Folded(name) == Folded(d->face)) {
      gtk_tree_selection_select_iter(selection, &iter);
      GtkTreePath* path = gtk_tree_model_get_path(d->filter, &iter);
      gtk_tree_view_scroll_to_cell(GTK_TREE_VIEW(d->faces), path, nullptr, TRUE, 0.3f, 0);
      gtk_tree_path_free(path);
      return;
    }
  }
  gtk_tree_selection_unselect_all(selection);
}

void Refilter(Dialog* d) {
  gtk_tree_model_filter_refilter(GTK_TREE_MODEL_FILTER(d->filter));
  SelectChosenFace(d);
}

void OnFaceSelected(GtkTreeSelection* selection, gpointer data) {
  auto* d = static_cast<Dialog*>(data);
  GtkTreeModel* model = nullptr;
  GtkTreeIter iter;
  if (!gtk_tree_selection_get_selected(selection, &model, &iter)) return;  // hidden by the search
  gchar* name = nullptr;
  gtk_tree_model_get(model, &iter, kFaceName, &name, -1);
  GCharPtr owned(name);
  if (name) d->face = name;
  gtk_widget_queue_draw(d->preview);
}

FontDescriptionPtr ChosenFont(const Dialog* d) {
  FontDescriptionPtr font(pango_font_description_new());
  pango_font_description_set_family(font.get(), d->face.c_str());
  pango_font_description_set_size(font.get(), d->previewSize * PANGO_SCALE);
  pango_font_description_set_weight(font.get(), Checked(d->bold) ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
  pango_font_description_set_style(font.get(), Checked(d->italic) ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
  return font;
}

// The sample in the chosen font, in the editor's colours of the theme; what does not fit is cut.
gboolean OnPreviewDraw(GtkWidget* area, cairo_t* cr, gpointer data) {
  const auto* d = static_cast<Dialog*>(data);
  const appearance::ThemeColors& t = appearance::GetThemeColors();
  const int w = gtk_widget_get_allocated_width(area), h = gtk_widget_get_allocated_height(area);
  FillRect(cr, 0, 0, w, h, t.editorBackground);
  SetSourceColour(cr, t.border);
  cairo_set_line_width(cr, 1);
  cairo_rectangle(cr, 0.5, 0.5, w - 1, h - 1);
  cairo_stroke(cr);
  GObjectPtr<PangoLayout> layout(gtk_widget_create_pango_layout(area, kFontPreviewText));
  FontDescriptionPtr font = ChosenFont(d);
  pango_layout_set_font_description(layout.get(), font.get());
  int tw = 0, th = 0;
  pango_layout_get_pixel_size(layout.get(), &tw, &th);
  cairo_rectangle(cr, 1, 1, w - 2, h - 2);
  cairo_clip(cr);
  SetSourceColour(cr, t.editorText);
  cairo_move_to(cr, tw < w - 20 ? (w - tw) / 2 : 10, (h - th) / 2);
  pango_cairo_show_layout(cr, layout.get());
  return TRUE;
}

void OnSizeChanged(GtkComboBox* combo, gpointer data) {
  auto* d = static_cast<Dialog*>(data);
  GtkWidget* entry = gtk_bin_get_child(GTK_BIN(combo));
  if (const std::optional<int> size = ReadFontSize(gtk_entry_get_text(GTK_ENTRY(entry)))) {
    d->previewSize = *size;
    gtk_widget_queue_draw(d->preview);
  }
}

void Close(Dialog* d, bool changed) {
  d->changed = changed;
  gtk_widget_destroy(d->window);
}

void OnOk(GtkButton*, gpointer data) {
  auto* d = static_cast<Dialog*>(data);
  GtkWidget* entry = gtk_bin_get_child(GTK_BIN(d->size));
  const std::optional<int> size = ReadFontSize(gtk_entry_get_text(GTK_ENTRY(entry)));
  if (!size) {
    // The box runs its own loop: the dialog may be closed meanwhile (the program ending).
    GtkWidget* window = GTK_WIDGET(g_object_ref(d->window));
    ShowMessageBox(GTK_WINDOW(window), kMbOk, kFontSizeErrorText, kFontTitle);
    if (!d->gone) {
      gtk_widget_grab_focus(entry);
      gtk_editable_select_region(GTK_EDITABLE(entry), 0, -1);
    }
    g_object_unref(window);
    return;
  }
  AppSettings& s = gSettings;
  if (!d->face.empty()) SetFieldText(s.fontName, Utf8ToUtf16(d->face).substr(0, kMaxFontNameUnits));
  s.fontSize = *size;
  s.fontBold = Checked(d->bold);
  s.fontItalic = Checked(d->italic);
  SaveSettings(s);
  // The theme applied again carries the font to every style of the editor and to the margin.
  if (d->editor) appearance::ApplyThemeToEditor(d->editor);
  if (d->margin) {
    appearance::UpdateMargin(d->margin);
    gtk_widget_queue_draw(d->margin);
  }
  Close(d, true);
}

// Enter is OK except on another push button; in the size list it first takes the typed size.
gboolean OnKey(GtkWidget* window, GdkEventKey* event, gpointer data) {
  if (event->keyval != GDK_KEY_Return && event->keyval != GDK_KEY_KP_Enter && event->keyval != GDK_KEY_ISO_Enter) return FALSE;
  GtkWidget* focus = gtk_window_get_focus(GTK_WINDOW(window));
  if (focus && GTK_IS_BUTTON(focus) && !GTK_IS_TOGGLE_BUTTON(focus)) return FALSE;
  gtk_widget_activate(static_cast<Dialog*>(data)->ok);
  return TRUE;
}

}  // namespace

void ShowFontDialog(GtkWindow* owner, GtkWidget* editor, GtkWidget* margin, std::function<void(bool)> closed) {
  auto* d = new Dialog;
  d->editor = editor;
  d->margin = margin;
  d->closed = std::move(closed);
  const AppSettings& s = gSettings;
  d->face = Utf16ToUtf8(FieldText(s.fontName));
  if (s.fontSize >= kMinFontSize && s.fontSize <= kMaxFontSize) d->previewSize = s.fontSize;

  ThemedWindowOptions options;
  options.parent = owner;
  options.title = kFontTitle;
  options.name = "NebroFont";
  options.modal = true;
  d->window = CreateThemedWindow(options, [d](GtkWidget*) {
    if (d->preview) gtk_widget_queue_draw(d->preview);
  });
  if (AtkObject* a11y = gtk_widget_get_accessible(d->window)) atk_object_set_role(a11y, ATK_ROLE_DIALOG);
  ThemeDialogControls(d->window);
  gtk_window_set_default_size(GTK_WINDOW(d->window), 560, 460);
  g_object_set_data_full(G_OBJECT(d->window), kStateKey, d, [](gpointer p) { delete static_cast<Dialog*>(p); });
  // Whatever closes the window (OK, Cancel, Escape, the owner going), the caller hears once.
  g_signal_connect_swapped(d->window, "destroy", G_CALLBACK(+[](Dialog* d) {
    d->gone = true;
    if (auto closed = std::move(d->closed)) closed(d->changed);
  }), d);
  g_signal_connect(d->window, "key-press-event", G_CALLBACK(OnKey), d);

  GtkWidget* grid = gtk_grid_new();
  gtk_grid_set_row_spacing(GTK_GRID(grid), 8);
  gtk_grid_set_column_spacing(GTK_GRID(grid), 12);
  gtk_container_set_border_width(GTK_CONTAINER(grid), 14);

  d->search = gtk_search_entry_new();
  Name(d->search, "FontSearch", "Search");
  g_signal_connect_swapped(d->search, "search-changed", G_CALLBACK(Refilter), d);
  d->monospaceOnly = gtk_check_button_new_with_mnemonic("_Monospace only");
  gtk_widget_set_name(d->monospaceOnly, "FontMonospaceOnly");
  g_signal_connect_swapped(d->monospaceOnly, "toggled", G_CALLBACK(Refilter), d);
  GtkWidget* searchRow = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 10);
  gtk_box_pack_start(GTK_BOX(searchRow), CreateFieldLabel("_Search:", d->search), FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(searchRow), d->search, TRUE, TRUE, 0);
  gtk_box_pack_start(GTK_BOX(searchRow), d->monospaceOnly, FALSE, FALSE, 0);
  gtk_grid_attach(GTK_GRID(grid), searchRow, 0, 0, 2, 1);

  GtkListStore* store = FaceList(d->window, d->face);
  d->filter = gtk_tree_model_filter_new(GTK_TREE_MODEL(store), nullptr);
  g_object_unref(store);
  gtk_tree_model_filter_set_visible_func(GTK_TREE_MODEL_FILTER(d->filter), FaceVisible, d, nullptr);
  d->faces = gtk_tree_view_new_with_model(d->filter);
  g_object_unref(d->filter);  // the list holds it
  Name(d->faces, "FontFace", "Face");
  gtk_tree_view_set_headers_visible(GTK_TREE_VIEW(d->faces), FALSE);
  gtk_tree_view_set_enable_search(GTK_TREE_VIEW(d->faces), FALSE);  // the search field does that
  gtk_tree_view_insert_column_with_attributes(GTK_TREE_VIEW(d->faces), -1, "Face", gtk_cell_renderer_text_new(), "text",
                                              kFaceName, nullptr);
  g_signal_connect(gtk_tree_view_get_selection(GTK_TREE_VIEW(d->faces)), "changed", G_CALLBACK(OnFaceSelected), d);
  g_signal_connect_swapped(d->faces, "row-activated", G_CALLBACK(+[](Dialog* d) { gtk_widget_activate(d->ok); }), d);
  GtkWidget* scroller = gtk_scrolled_window_new(nullptr, nullptr);
  gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroller), GTK_POLICY_NEVER, GTK_POLICY_AUTOMATIC);
  gtk_widget_set_size_request(scroller, 280, 220);
  gtk_widget_set_hexpand(scroller, TRUE);
  gtk_widget_set_vexpand(scroller, TRUE);
  gtk_container_add(GTK_CONTAINER(scroller), d->faces);
  GtkWidget* faceColumn = gtk_box_new(GTK_ORIENTATION_VERTICAL, 4);
  gtk_box_pack_start(GTK_BOX(faceColumn), CreateFieldLabel("F_ace:", d->faces), FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(faceColumn), scroller, TRUE, TRUE, 0);
  gtk_grid_attach(GTK_GRID(grid), faceColumn, 0, 1, 1, 1);

  d->size = gtk_combo_box_text_new_with_entry();
  for (int size : kListedFontSizes) gtk_combo_box_text_append_text(GTK_COMBO_BOX_TEXT(d->size), std::to_string(size).c_str());
  GtkWidget* sizeEntry = gtk_bin_get_child(GTK_BIN(d->size));
  Name(sizeEntry, "FontSize", "Size");
  gtk_widget_set_name(d->size, "FontSizeList");
  gtk_entry_set_width_chars(GTK_ENTRY(sizeEntry), 5);
  gtk_entry_set_activates_default(GTK_ENTRY(sizeEntry), TRUE);
  gtk_entry_set_text(GTK_ENTRY(sizeEntry), std::to_string(s.fontSize).c_str());
  g_signal_connect(d->size, "changed", G_CALLBACK(OnSizeChanged), d);
  d->bold = gtk_check_button_new_with_mnemonic("_Bold");
  gtk_widget_set_name(d->bold, "FontBold");
  gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(d->bold), s.fontBold);
  d->italic = gtk_check_button_new_with_mnemonic("_Italic");
  gtk_widget_set_name(d->italic, "FontItalic");
  gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(d->italic), s.fontItalic);
  for (GtkWidget* check : {d->bold, d->italic}) {
    g_signal_connect_swapped(check, "toggled", G_CALLBACK(+[](Dialog* d) { gtk_widget_queue_draw(d->preview); }), d);
  }
  GtkWidget* sizeColumn = gtk_box_new(GTK_ORIENTATION_VERTICAL, 4);
  GtkWidget* sizeHint = gtk_label_new("(1 - 144)");
  gtk_label_set_xalign(GTK_LABEL(sizeHint), 0);
  gtk_box_pack_start(GTK_BOX(sizeColumn), CreateFieldLabel("Si_ze:", sizeEntry), FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(sizeColumn), d->size, FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(sizeColumn), sizeHint, FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(sizeColumn), d->bold, FALSE, FALSE, 8);
  gtk_box_pack_start(GTK_BOX(sizeColumn), d->italic, FALSE, FALSE, 0);
  gtk_grid_attach(GTK_GRID(grid), sizeColumn, 1, 1, 1, 1);

  d->preview = gtk_drawing_area_new();
  gtk_widget_set_name(d->preview, "FontPreview");
  gtk_widget_set_size_request(d->preview, -1, 90);
  g_signal_connect(d->preview, "draw", G_CALLBACK(OnPreviewDraw), d);
  if (AtkObject* a11y = gtk_widget_get_accessible(d->preview)) {
    atk_object_set_name(a11y, "Preview");
    atk_object_set_description(a11y, kFontPreviewText);
  }
  GtkWidget* previewLabel = gtk_label_new("Preview:");
  gtk_label_set_xalign(GTK_LABEL(previewLabel), 0);
  gtk_grid_attach(GTK_GRID(grid), previewLabel, 0, 2, 2, 1);
  gtk_grid_attach(GTK_GRID(grid), d->preview, 0, 3, 2, 1);

  GtkWidget* buttons = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8);
  gtk_widget_set_halign(buttons, GTK_ALIGN_END);
  gtk_widget_set_margin_top(buttons, 6);
  d->ok = CreateThemedButton("OK");
  gtk_widget_set_name(d->ok, "FontOk");
  GtkWidget* cancel = CreateThemedButton("Cancel");
  gtk_widget_set_name(cancel, "FontCancel");
  for (GtkWidget* b : {d->ok, cancel}) {
    gtk_widget_set_size_request(b, 84, 28);
    gtk_box_pack_start(GTK_BOX(buttons), b, FALSE, FALSE, 0);
  }
  g_signal_connect(d->ok, "clicked", G_CALLBACK(OnOk), d);
  g_signal_connect_swapped(cancel, "clicked", G_CALLBACK(+[](Dialog* d) { Close(d, false); }), d);
  gtk_grid_attach(GTK_GRID(grid), buttons, 0, 4, 2, 1);

  gtk_container_add(GTK_CONTAINER(d->window), grid);
  gtk_widget_set_can_default(d->ok, TRUE);
  gtk_window_set_default(GTK_WINDOW(d->window), d->ok);
  gtk_widget_show_all(d->window);
  ThemeComboPopup(d->size);
  SelectChosenFace(d);
  gtk_widget_grab_focus(d->faces);
}

}  // namespace nebro::settings
