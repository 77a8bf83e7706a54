#include "settings/data_folder.h"

#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace nebro::settings {

namespace {

std::string configRoot;
bool configRootSet = false;

}  // namespace

void SetConfigRoot(const std::string& root) {
  configRoot = root;
  configRootSet = true;
}

std::string GetSettingsFolder() {
  std::string root = configRoot;
  if (!configRootSet) {
    if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg && *xdg == '/') root = xdg;
    else if (const char* home = std::getenv("HOME"); home && *home) root = std::string(home) + "/.config";
  }
  if (root.empty()) return {};
  mkdir(root.c_str(), 0700);  // an existing folder is fine; failures show up when writing
  const std::string folder = root + "/Nebro";
  mkdir(folder.c_str(), 0700);
  return folder;
}

std::string GetSettingsFilePath() {
  const std::string folder = GetSettingsFolder();
  return folder.empty() ? std::string("nebro.cfg") : folder + "/nebro.cfg";
}

std::string MakeTempPath(const std::string& folder, std::string_view extension) {
  if (folder.empty()) return {};
  timespec ts;
  clock_gettime(CLOCK_REALTIME, &ts);
  tm local;
  localtime_r(&ts.tv_sec, &local);
  char name[64];
  std::snprintf(name, sizeof name, "/temp_%04d%02d%02d_%02d%02d%02d_%03d", local.tm_year + 1900,
                local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec,
                static_cast<int>(ts.tv_nsec / 1000000));
  return folder + name + std::string(extension);
}

std::string MakeTempPdfPath() { return MakeTempPath(GetSettingsFolder(), ".pdf"); }

}  // namespace nebro::settings
