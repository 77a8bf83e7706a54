#include "gtk/themed_window_gtk.h"

#include <gdk/gdkkeysyms.h>

#include "appearance/current_theme.h"
#include "gtk/theme_broadcast_gtk.h"

namespace nebro {
namespace {

constexpr const char* kThemedClass = "nebro-themed";

// The theme's dialog colours for every themed window and its children.
void LoadShellCss(GtkCssProvider* provider) {
  const appearance::ThemeColors& t = appearance::GetThemeColors();
  const std::string bg = ColourText(t.dialogBackground), fg = ColourText(t.dialogText);
  const std::string css = std::string(".") + kThemedClass + " { background-color: " + bg + "; color: " + fg + "; }\n." +
                          kThemedClass + " label { color: " + fg + "; }\n";
  gtk_css_provider_load_from_data(provider, css.c_str(), -1, nullptr);
}

// One provider for the screen, between GTK's theme and a widget's own CSS, made at the first
// themed window and reloaded at every theme change.
void InstallShellCss() {
  static GtkCssProvider* provider = nullptr;
  if (provider) return;
  provider = gtk_css_provider_new();
  gtk_style_context_add_provider_for_screen(gdk_screen_get_default(), GTK_STYLE_PROVIDER(provider),
                                            GTK_STYLE_PROVIDER_PRIORITY_APPLICATION - 50);
  LoadShellCss(provider);
  FollowThemeChanges(nullptr, [] { LoadShellCss(provider); });
}

gboolean OnKeyPress(GtkWidget* window, GdkEventKey* event, gpointer) {
  if (event->keyval != GDK_KEY_Escape) return FALSE;
  gtk_window_close(GTK_WINDOW(window));
  return TRUE;
}

}  // namespace

GtkWidget* CreateThemedWindow(const ThemedWindowOptions& o, std::function<void(GtkWidget*)> restyle) {
  InstallShellCss();
  GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  if (!o.name.empty()) gtk_widget_set_name(window, o.name.c_str());
  gtk_style_context_add_class(gtk_widget_get_style_context(window), kThemedClass);
  gtk_window_set_title(GTK_WINDOW(window), o.title.c_str());
  gtk_window_set_modal(GTK_WINDOW(window), o.modal);
  gtk_window_set_resizable(GTK_WINDOW(window), o.resizable);
  gtk_window_set_type_hint(GTK_WINDOW(window), GDK_WINDOW_TYPE_HINT_DIALOG);
  if (o.parent) {
    gtk_window_set_transient_for(GTK_WINDOW(window), o.parent);
    gtk_window_set_destroy_with_parent(GTK_WINDOW(window), TRUE);
    gtk_window_set_position(GTK_WINDOW(window), GTK_WIN_POS_CENTER_ON_PARENT);
  }
  if (o.closeOnEscape) g_signal_connect(window, "key-press-event", G_CALLBACK(OnKeyPress), nullptr);
  if (restyle) {
    FollowThemeChanges(window, [window, restyle] { restyle(window); });
    restyle(window);
  }
  return window;
}

}  // namespace nebro
