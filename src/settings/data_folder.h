// Where the program keeps its files: the per-user folder under the configuration root, the
// settings file in it, and the names of the temporary documents made there for previews.
#pragma once

#include <string>
#include <string_view>

namespace nebro::settings {

// The per-user folder: the configuration root followed by "/Nebro", created on every call.
// Empty when there is no configuration root.
std::string GetSettingsFolder();
// The folder followed by "/nebro.cfg", or "nebro.cfg" when the folder is empty.
std::string GetSettingsFilePath();
// The GTK layer sets the root at start-up (g_get_user_config_dir); tests point it elsewhere.
// By default it is $XDG_CONFIG_HOME, else $HOME/.config.
void SetConfigRoot(const std::string& root);

// "<folder>/temp_YYYYMMDD_HHMMSS_mmm.pdf" from the local time; empty when the folder is empty.
std::string MakeTempPdfPath();
std::string MakeTempPath(const std::string& folder, std::string_view extension);

}  // namespace nebro::settings
