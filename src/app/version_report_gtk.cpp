#include "app/version_report_gtk.h"

#include <glib.h>

#include <cstdio>
#include <string>

#include "common/install_paths.h"
#include "scintilla/scintilla_loader_gtk.h"

namespace nebro::app {
namespace {

// Runs a program found on PATH and returns its standard output, or nothing when it failed.
std::string Output(const char* const* argv) {
  gchar* out = nullptr;
  gint status = 0;
  const bool ran = g_spawn_sync(nullptr, const_cast<gchar**>(argv), nullptr,
                                static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDERR_TO_DEV_NULL), nullptr,
                                nullptr, &out, nullptr, &status, nullptr);
  std::string text = ran && g_spawn_check_wait_status(status, nullptr) && out ? out : "";
  g_free(out);
  return text;
}

// "scite 5.3.3-1" for a file the package manager installed, empty for any other file. Neither
// library records its own version number, so the package that put the file there is the one
// honest source for it.
std::string PackageOf(const std::string& path) {
  const char* search[] = {"dpkg-query", "--search", path.c_str(), nullptr};
  const std::string found = Output(search);
  // Lines are "package[, package]: path"; diversions say "diversion by ...".
  const std::string suffix = ": " + path;
  std::string package;
  size_t start = 0;
  while (start < found.size()) {
    size_t end = found.find('\n', start);
    if (end == std::string::npos) end = found.size();
    const std::string line = found.substr(start, end - start);
    if (line.size() > suffix.size() && line.compare(line.size() - suffix.size(), suffix.size(), suffix) == 0 &&
        line.rfind("diversion by ", 0) != 0) {
      package = line.substr(0, line.size() - suffix.size());
      package = package.substr(0, package.find(','));
      break;
    }
    start = end + 1;
  }
  if (package.empty()) return {};
  const char* show[] = {"dpkg-query", "--show", "--showformat=${Version}", package.c_str(), nullptr};
  const std::string version = Output(show);
  const std::string name = package.substr(0, package.find(':'));  // without the architecture
  return version.empty() ? name : name + " " + version;
}

std::string Origin(const std::string& path) {
  const std::string package = PackageOf(path);
  return package.empty() ? " (not installed by a package)" : " (Debian package " + package + ")";
}

}  // namespace

int PrintVersionReport() {
  std::printf("nebro %s\n", NEBRO_VERSION);
  const std::string searched = " not found (looked in " + ExecutableFolder() + " and " NEBRO_SCINTILLA_DIR ")";
  int code = 0;
  if (sci::LoadScintilla() == sci::LibraryLoad::Ok) {
    const std::string path = sci::ScintillaPath();
    std::printf("Scintilla: %s%s\n", path.c_str(), Origin(path).c_str());
  } else {
    std::printf("Scintilla: libscintilla.so%s\n", searched.c_str());
    code = 1;
  }
  switch (sci::LoadLexilla()) {
    case sci::LibraryLoad::Ok: {
      const std::string path = sci::LexillaPath();
      std::printf("Lexilla: %s, %d lexers%s\n", path.c_str(), sci::LexerCount(), Origin(path).c_str());
      break;
    }
    case sci::LibraryLoad::EntryMissing:
      std::printf("Lexilla: %s has no CreateLexer\n", sci::LexillaPath().c_str());
      code = 1;
      break;
    case sci::LibraryLoad::NotFound:
      std::printf("Lexilla: liblexilla.so%s\n", searched.c_str());
      code = 1;
      break;
  }
  std::printf("Data files: %s\n", ResourceFolder().c_str());
  sci::UnloadLexilla();
  sci::UnloadScintilla();
  return code;
}

}  // namespace nebro::app
