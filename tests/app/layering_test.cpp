// The direction of dependencies in src/: only the app folder may reach the main window, the
// portable core never sees GTK, and each subsystem declares its names in a namespace of its own.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

std::vector<std::string> Includes(const fs::path& file) {
  // The opening bracket is kept: <gtk/gtk.h> is GTK, "gtk/message_box.h" one of ours.
  static const std::regex include(R"(^\s*#\s*include\s*([<"][^>"]+)[>"])");
  std::vector<std::string> out;
  std::ifstream in(file);
  std::string line;
  std::smatch m;
  while (std::getline(in, line)) {
    if (std::regex_search(line, m, include)) out.push_back(m[1]);
  }
  return out;
}

// The shared base (common, gtk, scintilla) lives in `nebro`; each subsystem in `nebro::<folder>`.
std::string SubsystemNamespace(const std::string& folder) {
  if (folder == "common" || folder == "gtk" || folder == "scintilla") return "";
  return folder == "export" ? "exports" : folder;  // `export` is a keyword
}

bool OpensNamespace(const fs::path& file, const std::string& ns) {
  std::ifstream in(file);
  std::string line;
  while (std::getline(in, line)) {
    const std::string open = "namespace nebro::" + ns;
    if (line.rfind(open + " {", 0) == 0 || line.rfind(open + "::", 0) == 0) return true;
  }
  return false;
}

bool IsGtkFile(const fs::path& file) {
  const std::string stem = file.stem().string();
  return stem.size() > 4 && stem.compare(stem.size() - 4, 4, "_gtk") == 0;
}

TEST(Layering, OnlyAppReachesTheMainWindowTheCoreNeverSeesGtkAndSubsystemsHaveNamespaces) {
  std::vector<std::string> wrong;
  size_t files = 0;
  for (const auto& entry : fs::recursive_directory_iterator(NEBRO_SOURCE_DIR)) {
    const fs::path& file = entry.path();
    if (file.extension() != ".cpp" && file.extension() != ".h") continue;
    ++files;
    const std::string folder = file.parent_path().filename().string();
    const std::string ns = SubsystemNamespace(folder);
    if (!ns.empty() && file.filename() != "main.cpp" && !OpensNamespace(file, ns))
      wrong.push_back(file.string() + " declares nothing in nebro::" + ns);
    for (const std::string& inc : Includes(file)) {
      if (folder != "app" && inc.rfind("\"app/", 0) == 0) wrong.push_back(file.string() + " includes " + inc);
      const bool gtk = inc.rfind("<gtk/", 0) == 0 || inc.rfind("<gdk/", 0) == 0 || inc.find("_gtk.h") != std::string::npos;
      if (!IsGtkFile(file) && file.filename() != "main.cpp" && gtk) wrong.push_back(file.string() + " (core) includes " + inc);
    }
  }
  EXPECT_GT(files, 50u);
  EXPECT_TRUE(wrong.empty()) << [&] {
    std::string all;
    for (const std::string& w : wrong) all += w + "\n";
    return all;
  }();
}

}  // namespace
