#include "common/install_paths.h"

#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>

namespace nebro {
namespace {

// Both relative to the installed executable's folder; the build writes them from the install
// folders it was configured with.
constexpr const char* kInstalledResources = NEBRO_INSTALLED_RESOURCES;
constexpr const char* kInstalledIcons = NEBRO_INSTALLED_ICONS;
constexpr const char* kSourceResources = NEBRO_SOURCE_RESOURCES;

bool IsFolder(const std::string& path) {
  struct stat st {};
  return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

// `relative` below the executable's folder, without the "..": the place a user would look.
std::string BesideExecutable(const char* relative) {
  const std::string joined = ExecutableFolder() + "/" + relative;
  char buf[PATH_MAX];
  return realpath(joined.c_str(), buf) ? std::string(buf) : joined;
}

}  // namespace

std::string ExecutableFolder() {
  char buf[PATH_MAX];
  const ssize_t n = readlink("/proc/self/exe", buf, sizeof buf - 1);
  if (n <= 0) return {};
  std::string path(buf, static_cast<size_t>(n));
  const auto slash = path.rfind('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

bool RunsInstalled() {
  // Looked up once: the answer cannot change while the program runs.
  static const bool installed = [] {
    const std::string exe = ExecutableFolder();
    return !exe.empty() && IsFolder(exe + "/" + kInstalledResources);
  }();
  return installed;
}

std::string ResourceFolder() {
  return RunsInstalled() ? BesideExecutable(kInstalledResources) : kSourceResources;
}

std::string IconFolder() {
  return RunsInstalled() ? BesideExecutable(kInstalledIcons) : std::string(kSourceResources) + "/icons";
}

}  // namespace nebro
