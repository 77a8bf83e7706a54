#include "gtk/themed_controls_gtk.h"

#include <string>

#include "appearance/current_theme.h"
#include "gtk/drawing_gtk.h"
#include "gtk/theme_broadcast_gtk.h"

namespace nebro {
namespace {

constexpr const char* kDialogClass = "nebro-dialog";
constexpr const char* kButtonClass = "nebro-button";

std::string ControlsCss() {
  const appearance::ThemeColors& t = appearance::GetThemeColors();
  const std::string bg = ColourText(t.dialogBackground), fg = ColourText(t.dialogText);
  const std::string input = ColourText(t.inputBackground), list = ColourText(t.listBackground);
  const std::string border = ColourText(t.border), focus = ColourText(t.buttonFocusBorder);
  const std::string face = ColourText(t.buttonFace), faceDown = ColourText(t.buttonFacePressed);
  const std::string buttonBorder = ColourText(t.buttonBorder), buttonText = ColourText(t.buttonText);
  const std::string selBg = ColourText(t.selectionBackground), selFg = ColourText(t.selectionText);
  const std::string greyed = ColourText(t.disabledText), hover = ColourText(t.hoverBackground);
  const std::string d = std::string(".") + kDialogClass + " ";
  return d + "entry { background-color: " + input + "; background-image: none; color: " + fg +
         "; caret-color: " + fg + "; border: 1px solid " + border + "; border-radius: 3px; box-shadow: none; }\n" +
         d + "entry:focus { border-color: " + selBg + "; }\n" +
         d + "entry:disabled { color: " + greyed + "; }\n" +
         d + "entry selection, " + d + "entry selection:focus { background-color: " + selBg + "; color: " + selFg + "; }\n" +
         d + "combobox button { background-color: " + face + "; background-image: none; color: " + buttonText +
         "; border: 1px solid " + buttonBorder + "; box-shadow: none; text-shadow: none; }\n" +
         d + "combobox button:hover { background-color: " + hover + "; }\n" +
         d + "combobox button:active, " + d + "combobox button:checked { background-color: " + faceDown + "; }\n" +
         d + "combobox button:focus { border-color: " + focus + "; }\n" +
         d + "combobox button cellview, " + d + "combobox button arrow { color: " + buttonText + "; }\n" +
         d + "combobox button:disabled, " + d + "combobox button:disabled cellview, " + d +
         "combobox button:disabled arrow { color: " + greyed + "; background-color: " + bg + "; }\n" +
         d + "checkbutton check { background-color: " + input + "; background-image: none; color: " + fg +
         "; border: 1px solid " + buttonBorder + "; box-shadow: none; }\n" +
         d + "checkbutton:disabled label, " + d + "label:disabled { color: " + greyed + "; }\n" +
         d + "frame > border { border: 1px solid " + border + "; border-radius: 4px; }\n" +
         d + "frame > label { color: " + fg + "; }\n" +
         d + "scrolledwindow { border: 1px solid " + border + "; }\n" +
         d + "treeview.view { background-color: " + list + "; color: " + fg + "; }\n" +
         d + "treeview.view:selected { background-color: " + selBg + "; color: " + selFg + "; }\n" +
         d + "scrollbar, " + d + "scrollbar trough { background-color: " + list + "; border-color: " + border + "; }\n" +
         d + "scrollbar slider { background-color: " + ColourText(t.mutedText) + "; border: none; min-width: 8px; min-height: 8px; }\n" +
         "." + kButtonClass + " { padding: 4px 14px; min-height: 0; min-width: 0; }\n" +
         "." + kButtonClass + " label { color: " + buttonText + "; }\n" +
         "." + kButtonClass + ":disabled label { color: " + greyed + "; }\n" +
         // The pop-up lists of the drop-down lists.
         ".nebro-popup menu, .nebro-popup .menu { background-color: " + bg + "; background-image: none; color: " + fg +
         "; border: 1px solid " + border + "; }\n" +
         ".nebro-popup menuitem { color: " + fg + "; background-image: none; }\n" +
         ".nebro-popup menuitem label, .nebro-popup menuitem cellview { color: " + fg + "; }\n" +
         ".nebro-popup menuitem:hover { background-color: " + hover + "; }\n";
}

// One provider for the screen, above the themed shell's, made at the first dialog and reloaded
// at every theme change.
void InstallControlsCss() {
  static GtkCssProvider* provider = nullptr;
  if (provider) return;
  provider = gtk_css_provider_new();
  gtk_style_context_add_provider_for_screen(gdk_screen_get_default(), GTK_STYLE_PROVIDER(provider),
                                            GTK_STYLE_PROVIDER_PRIORITY_APPLICATION - 40);
  gtk_css_provider_load_from_data(provider, ControlsCss().c_str(), -1, nullptr);
  FollowThemeChanges(nullptr, [] { gtk_css_provider_load_from_data(provider, ControlsCss().c_str(), -1, nullptr); });
}

// The face and outline are ours; the label (with its mnemonic underline) is GTK's, drawn on top.
gboolean OnButtonDraw(GtkWidget* button, cairo_t* cr, gpointer) {
  const appearance::ThemeColors& t = appearance::GetThemeColors();
  const GtkStateFlags flags = gtk_widget_get_state_flags(button);
  const bool pressed = flags & GTK_STATE_FLAG_ACTIVE;
  const bool focused = gtk_widget_has_focus(button);
  const bool accented = focused || gtk_widget_has_default(button);
  ButtonLook look{pressed ? t.buttonFacePressed : (flags & GTK_STATE_FLAG_PRELIGHT) ? t.hoverBackground : t.buttonFace,
                  accented ? t.buttonFocusBorder : t.buttonBorder,
                  (flags & GTK_STATE_FLAG_INSENSITIVE) ? t.disabledText : t.buttonText, focused};
  DrawPushButton(button, cr, look, "");
  if (GtkWidget* child = gtk_bin_get_child(GTK_BIN(button))) gtk_container_propagate_draw(GTK_CONTAINER(button), child, cr);
  return TRUE;
}

std::string WithoutMnemonic(const char* label) {
  std::string out;
  for (const char* p = label; *p; ++p) {
    if (*p == '_' && p[1] != '_') continue;
    out += *p;
    if (*p == '_') ++p;
  }
  return out;
}

}  // namespace

GtkWidget* CreateThemedButton(const char* mnemonicLabel) {
  InstallControlsCss();
  GtkWidget* button = gtk_button_new_with_mnemonic(mnemonicLabel);
  gtk_style_context_add_class(gtk_widget_get_style_context(button), kButtonClass);
  if (AtkObject* a11y = gtk_widget_get_accessible(button)) atk_object_set_name(a11y, WithoutMnemonic(mnemonicLabel).c_str());
  g_signal_connect(button, "draw", G_CALLBACK(OnButtonDraw), nullptr);
  return button;
}

void ThemeDialogControls(GtkWidget* window) {
  InstallControlsCss();
  gtk_style_context_add_class(gtk_widget_get_style_context(window), kDialogClass);
}

void ThemeComboPopup(GtkWidget* combo) {
  InstallControlsCss();
  // The list is a menu in a window of its own; the combo box's accessible object leads to it.
  AtkObject* a11y = gtk_widget_get_accessible(combo);
  if (!a11y || atk_object_get_n_accessible_children(a11y) < 1) return;
  AtkObject* popup = atk_object_ref_accessible_child(a11y, 0);
  if (GTK_IS_ACCESSIBLE(popup)) {
    if (GtkWidget* menu = gtk_accessible_get_widget(GTK_ACCESSIBLE(popup))) {
      gtk_style_context_add_class(gtk_widget_get_style_context(menu), "nebro-popup");
      if (GtkWidget* top = gtk_widget_get_toplevel(menu)) gtk_style_context_add_class(gtk_widget_get_style_context(top), "nebro-popup");
    }
  }
  if (popup) g_object_unref(popup);
}

GtkWidget* CreateFieldLabel(const char* mnemonic, GtkWidget* target) {
  GtkWidget* label = gtk_label_new_with_mnemonic(mnemonic);
  gtk_label_set_mnemonic_widget(GTK_LABEL(label), target);
  gtk_label_set_xalign(GTK_LABEL(label), 0);
  return label;
}

}  // namespace nebro
