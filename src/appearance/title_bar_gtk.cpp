#include "appearance/title_bar_gtk.h"

#include <gtk/gtk.h>

#include <cstring>

#include "appearance/current_theme.h"
#include "appearance/theme_gtk.h"
#include "settings/settings.h"

namespace nebro::appearance {

void SetDarkTitleBar(bool dark) {
  g_object_set(gtk_settings_get_default(), "gtk-application-prefer-dark-theme", dark ? TRUE : FALSE, nullptr);
}

void ApplySystemThemePreference() {
  const ThemeId theme = settings::gSettings.theme;
  if (gThemeChosenByUser) {
    SetDarkTitleBar(ThemeColorsFor(theme).isDark);
    return;
  }
  // The desktop's colour-scheme preference where it can be read; otherwise light.
  bool light = true;
  GSettingsSchemaSource* source = g_settings_schema_source_get_default();
  if (GSettingsSchema* schema = source ? g_settings_schema_source_lookup(source, "org.gnome.desktop.interface", TRUE) : nullptr) {
    if (g_settings_schema_has_key(schema, "color-scheme")) {
      GSettings* settings = g_settings_new("org.gnome.desktop.interface");
      gchar* scheme = g_settings_get_string(settings, "color-scheme");
      light = std::strcmp(scheme, "prefer-dark") != 0;
      g_free(scheme);
      g_object_unref(settings);
    }
    g_settings_schema_unref(schema);
  }
  SetDarkTitleBar(!light);
  if (static_cast<ThemeId>(light) != theme) SetTheme(light ? 1 : 0, false);
}

}  // namespace nebro::appearance
