#include "settings/settings_dialog_gtk.h"

#include <gdk/gdkkeysyms.h>

#include <string>

#include "appearance/lexer_setup_gtk.h"
#include "appearance/line_numbers_gtk.h"
#include "appearance/theme_gtk.h"
#include "appearance/title_bar_gtk.h"
#include "common/utf.h"
#include "gtk/message_box_gtk.h"
#include "gtk/themed_controls_gtk.h"
#include "gtk/themed_window_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "settings/font_dialog_gtk.h"
#include "settings/settings.h"
#include "settings/settings_dialog.h"

namespace nebro::settings {
namespace {

using namespace sci;

struct Dialog {
  SettingsDialogTarget target;
  GtkWidget* window = nullptr;
  GtkWidget* theme = nullptr;
  GtkWidget* transparency = nullptr;
  GtkWidget* fontLabel = nullptr;
  GtkWidget* lineNumbers = nullptr;
  GtkWidget* wordWrap = nullptr;
  GtkWidget* autoSave = nullptr;
  GtkWidget* interval = nullptr;
  GtkWidget* soundKey = nullptr;
  GtkWidget* soundNewLine = nullptr;
  GtkWidget* ok = nullptr;
  bool closed = false;  // destroyed: the record lives on while a callback holds the window
};

constexpr const char* kStateKey = "nebro-settings-dialog";

void Name(GtkWidget* widget, int id, const char* accessibleName = nullptr) {
  gtk_widget_set_name(widget, std::to_string(id).c_str());
  if (accessibleName) {
    if (AtkObject* a11y = gtk_widget_get_accessible(widget)) atk_object_set_name(a11y, accessibleName);
  }
}

GtkWidget* Check(const char* mnemonic, int id, bool active) {
  GtkWidget* check = gtk_check_button_new_with_mnemonic(mnemonic);
  Name(check, id);
  gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(check), active);
  return check;
}

bool Checked(GtkWidget* check) { return gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(check)); }

GtkWidget* Group(const char* title, GtkWidget* content) {
  GtkWidget* frame = gtk_frame_new(title);
  gtk_container_set_border_width(GTK_CONTAINER(content), 8);
  gtk_container_add(GTK_CONTAINER(frame), content);
  return frame;
}

void WriteFontLabel(Dialog* d) {
  const AppSettings& s = gSettings;
  gtk_label_set_text(GTK_LABEL(d->fontLabel),
                     FontLabelText(Utf16ToUtf8(FieldText(s.fontName)), s.fontSize, s.fontBold, s.fontItalic).c_str());
}

void PutTransparency(Dialog* d, int percent) {
  gtk_entry_set_text(GTK_ENTRY(d->transparency), std::to_string(percent).c_str());
}

// The field takes digits from the keyboard; anything else typed is refused with a bell. Pasted
// text goes in as it is and is checked on OK.
gboolean OnTransparencyKey(GtkWidget* entry, GdkEventKey* event, gpointer) {
  if (event->state & (GDK_CONTROL_MASK | GDK_MOD1_MASK)) return FALSE;
  const gunichar c = gdk_keyval_to_unicode(event->keyval);
  if (c < 0x20 || c == 0x7F || (c >= '0' && c <= '9')) return FALSE;
  gtk_widget_error_bell(entry);
  return TRUE;
}

// Cancel, Escape or closing: the stored theme stays in force, nothing is saved.
void Cancel() {
  const appearance::ThemeId stored = gSettings.theme;
  appearance::SetDarkTitleBar(stored == 0 || stored == 4);
}

gboolean OnDelete(GtkWidget*, GdkEvent*, gpointer) {
  Cancel();
  return FALSE;  // the window goes
}

void Apply(Dialog* d, int transparency) {
  AppSettings& s = gSettings;
  s.transparency = transparency;
  appearance::ThemeId theme = s.theme;
  if (const gchar* id = gtk_combo_box_get_active_id(GTK_COMBO_BOX(d->theme))) theme = static_cast<appearance::ThemeId>(std::stoi(id));
  int minutes = 0;
  if (Checked(d->autoSave)) {
    const gchar* id = gtk_combo_box_get_active_id(GTK_COMBO_BOX(d->interval));
    minutes = id ? std::stoi(id) : 5;
  }
  s.autoSaveMinutes = minutes;
  s.lineNumbers = Checked(d->lineNumbers);
  s.wordWrap = Checked(d->wordWrap);
  s.soundOnKeyPress = Checked(d->soundKey);
  s.soundOnNewLine = Checked(d->soundNewLine);

  GtkWidget* editor = d->target.editor;
  if (editor) appearance::ApplyWordWrap(editor);
  if (GtkWidget* margin = d->target.margin) {
    gtk_widget_set_visible(margin, s.lineNumbers);
    appearance::UpdateMargin(margin);
  }
  if (d->target.applyTransparency) d->target.applyTransparency(s.transparency);
  if (d->target.restartAutoSave) d->target.restartAutoSave(minutes);
  if (theme == s.theme) {
    appearance::SetDarkTitleBar(theme == 0 || theme == 4);
  } else {
    appearance::SetTheme(theme, true);
  }
  if (editor) gtk_widget_queue_draw(editor);
  if (d->target.owner) gtk_widget_queue_resize(GTK_WIDGET(d->target.owner));
  SaveSettings(s);
}

void OnOk(GtkButton*, gpointer data) {
  auto* d = static_cast<Dialog*>(data);
  const std::optional<int> transparency = ReadTransparency(gtk_entry_get_text(GTK_ENTRY(d->transparency)));
  if (!transparency) {
    PutTransparency(d, gSettings.transparency);
    // The box runs its own loop: the dialog may be closed meanwhile (the program ending).
    GtkWidget* window = GTK_WIDGET(g_object_ref(d->window));
    ShowMessageBox(GTK_WINDOW(window), kMbOk, kTransparencyErrorText, kTransparencyErrorTitle);
    if (!d->closed) gtk_widget_grab_focus(d->transparency);
    g_object_unref(window);
    return;
  }
  Apply(d, *transparency);
  gtk_widget_destroy(d->window);
}

void OnSelectFont(GtkButton*, gpointer data) {
  auto* d = static_cast<Dialog*>(data);
  GtkWidget* window = GTK_WIDGET(g_object_ref(d->window));
  ShowFontDialog(GTK_WINDOW(d->window), d->target.editor, d->target.margin, [window](bool) {
    auto* d = static_cast<Dialog*>(g_object_get_data(G_OBJECT(window), kStateKey));
    if (d && !d->closed) WriteFontLabel(d);
    g_object_unref(window);
  });
}

// Enter anywhere but on another push button is OK, as in every dialog of the desktop.
gboolean OnKey(GtkWidget* window, GdkEventKey* event, gpointer data) {
  if (event->keyval != GDK_KEY_Return && event->keyval != GDK_KEY_KP_Enter && event->keyval != GDK_KEY_ISO_Enter) return FALSE;
  GtkWidget* focus = gtk_window_get_focus(GTK_WINDOW(window));
  if (focus && GTK_IS_BUTTON(focus) && !GTK_IS_TOGGLE_BUTTON(focus)) return FALSE;
  if (focus && GTK_IS_COMBO_BOX(focus)) return FALSE;  // Enter opens the list
  gtk_widget_activate(static_cast<Dialog*>(data)->ok);
  return TRUE;
}

}  // namespace

void ShowSettingsDialog(const SettingsDialogTarget& target) {
  auto* d = new Dialog;
  d->target = target;
  const AppSettings& s = gSettings;

  ThemedWindowOptions options;
  options.parent = target.owner;
  options.title = kSettingsTitle;
  options.name = "NebroSettings";
  options.modal = true;
  options.resizable = false;
  d->window = CreateThemedWindow(options);
  if (AtkObject* a11y = gtk_widget_get_accessible(d->window)) atk_object_set_role(a11y, ATK_ROLE_DIALOG);
  ThemeDialogControls(d->window);
  g_object_set_data_full(G_OBJECT(d->window), kStateKey, d, [](gpointer p) { delete static_cast<Dialog*>(p); });
  g_signal_connect_swapped(d->window, "destroy", G_CALLBACK(+[](Dialog* d) { d->closed = true; }), d);
  g_signal_connect(d->window, "delete-event", G_CALLBACK(OnDelete), d);
  g_signal_connect(d->window, "key-press-event", G_CALLBACK(OnKey), d);

  GtkWidget* grid = gtk_grid_new();
  gtk_grid_set_row_spacing(GTK_GRID(grid), 8);
  gtk_grid_set_column_spacing(GTK_GRID(grid), 10);
  gtk_container_set_border_width(GTK_CONTAINER(grid), 14);
  int row = 0;

  d->theme = gtk_combo_box_text_new();
  Name(d->theme, kSettingsTheme, "Theme");
  for (appearance::ThemeId id = 0; id < appearance::kThemeCount; ++id) {
    gtk_combo_box_text_append(GTK_COMBO_BOX_TEXT(d->theme), std::to_string(id).c_str(), appearance::ThemeName(id));
  }
  gtk_combo_box_set_active(GTK_COMBO_BOX(d->theme), s.theme < appearance::kThemeCount ? static_cast<int>(s.theme) : 0);
  gtk_grid_attach(GTK_GRID(grid), CreateFieldLabel("_Theme:", d->theme), 0, row, 1, 1);
  gtk_grid_attach(GTK_GRID(grid), d->theme, 1, row++, 2, 1);

  d->transparency = gtk_entry_new();
  Name(d->transparency, kSettingsTransparency, "Transparency");
  gtk_entry_set_width_chars(GTK_ENTRY(d->transparency), 6);
  gtk_entry_set_input_purpose(GTK_ENTRY(d->transparency), GTK_INPUT_PURPOSE_DIGITS);
  gtk_entry_set_activates_default(GTK_ENTRY(d->transparency), TRUE);
  gtk_widget_set_hexpand(d->transparency, FALSE);
  gtk_widget_set_halign(d->transparency, GTK_ALIGN_START);
  g_signal_connect(d->transparency, "key-press-event", G_CALLBACK(OnTransparencyKey), nullptr);
  PutTransparency(d, s.transparency);
  GtkWidget* hint = gtk_label_new("(0 - 50)");
  GtkWidget* transparencyRow = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 10);
  gtk_box_pack_start(GTK_BOX(transparencyRow), d->transparency, FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(transparencyRow), hint, FALSE, FALSE, 0);
  gtk_grid_attach(GTK_GRID(grid), CreateFieldLabel("T_ransparency:", d->transparency), 0, row, 1, 1);
  gtk_grid_attach(GTK_GRID(grid), transparencyRow, 1, row++, 2, 1);

  GtkWidget* selectFont = CreateThemedButton("Select _Font...");
  Name(selectFont, kSettingsSelectFont);
  g_signal_connect(selectFont, "clicked", G_CALLBACK(OnSelectFont), d);
  d->fontLabel = gtk_label_new("");
  Name(d->fontLabel, kSettingsFontLabel);
  gtk_label_set_xalign(GTK_LABEL(d->fontLabel), 0);
  gtk_label_set_ellipsize(GTK_LABEL(d->fontLabel), PANGO_ELLIPSIZE_END);
  gtk_label_set_width_chars(GTK_LABEL(d->fontLabel), 30);
  WriteFontLabel(d);
  gtk_grid_attach(GTK_GRID(grid), selectFont, 0, row, 1, 1);
  gtk_grid_attach(GTK_GRID(grid), d->fontLabel, 1, row++, 2, 1);

  d->lineNumbers = Check("_Line numbers", kSettingsLineNumbers, s.lineNumbers);
  d->wordWrap = Check("_Word wrap", kSettingsWordWrap, s.wordWrap);
  gtk_grid_attach(GTK_GRID(grid), d->lineNumbers, 0, row++, 3, 1);
  gtk_grid_attach(GTK_GRID(grid), d->wordWrap, 0, row++, 3, 1);

  GtkWidget* autoSaveRow = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 10);
  d->autoSave = Check("_Enable", kSettingsAutoSave, s.autoSaveMinutes > 0);
  d->interval = gtk_combo_box_text_new();
  Name(d->interval, kSettingsInterval, "Interval");
  for (int minutes : kAutoSaveIntervals) {
    gtk_combo_box_text_append(GTK_COMBO_BOX_TEXT(d->interval), std::to_string(minutes).c_str(), IntervalText(minutes).c_str());
  }
  gtk_combo_box_set_active(GTK_COMBO_BOX(d->interval), IntervalIndexFor(s.autoSaveMinutes));
  gtk_widget_set_sensitive(d->interval, s.autoSaveMinutes > 0);
  g_signal_connect(d->autoSave, "toggled", G_CALLBACK(+[](GtkToggleButton* check, Dialog* d) {
    gtk_widget_set_sensitive(d->interval, gtk_toggle_button_get_active(check));
  }), d);
  GtkWidget* intervalLabel = CreateFieldLabel("_Interval:", d->interval);
  gtk_box_pack_start(GTK_BOX(autoSaveRow), d->autoSave, FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(autoSaveRow), intervalLabel, FALSE, FALSE, 12);
  gtk_box_pack_start(GTK_BOX(autoSaveRow), d->interval, FALSE, FALSE, 0);
  gtk_grid_attach(GTK_GRID(grid), Group("Auto-save", autoSaveRow), 0, row++, 3, 1);

  GtkWidget* soundBox = gtk_box_new(GTK_ORIENTATION_VERTICAL, 6);
  d->soundKey = Check("Enable sound on _key press", kSettingsSoundKey, s.soundOnKeyPress);
  d->soundNewLine = Check("Enable sound on _new line (Enter)", kSettingsSoundNewLine, s.soundOnNewLine);
  gtk_box_pack_start(GTK_BOX(soundBox), d->soundKey, FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(soundBox), d->soundNewLine, FALSE, FALSE, 0);
  gtk_grid_attach(GTK_GRID(grid), Group("Typewriter Sound", soundBox), 0, row++, 3, 1);

  GtkWidget* buttons = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8);
  gtk_widget_set_halign(buttons, GTK_ALIGN_END);
  gtk_widget_set_margin_top(buttons, 6);
  d->ok = CreateThemedButton("OK");
  Name(d->ok, kSettingsOk);
  GtkWidget* cancel = CreateThemedButton("Cancel");
  Name(cancel, kSettingsCancel);
  for (GtkWidget* b : {d->ok, cancel}) {
    gtk_widget_set_size_request(b, 84, 28);
    gtk_box_pack_start(GTK_BOX(buttons), b, FALSE, FALSE, 0);
  }
  g_signal_connect(d->ok, "clicked", G_CALLBACK(OnOk), d);
  g_signal_connect(cancel, "clicked", G_CALLBACK(+[](GtkButton*, Dialog* d) {
    Cancel();
    gtk_widget_destroy(d->window);
  }), d);
  gtk_grid_attach(GTK_GRID(grid), buttons, 0, row++, 3, 1);

  gtk_container_add(GTK_CONTAINER(d->window), grid);
  gtk_widget_set_can_default(d->ok, TRUE);
  gtk_window_set_default(GTK_WINDOW(d->window), d->ok);
  gtk_widget_show_all(d->window);
  ThemeComboPopup(d->theme);
  ThemeComboPopup(d->interval);
  gtk_widget_grab_focus(d->theme);
}

}  // namespace nebro::settings
