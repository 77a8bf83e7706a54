// Start-up to first paint, and the settings file's load and save times.
// Run on a display: xvfb-run -a build/bench/startup_bench
#include <gtk/gtk.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "app/main_window_gtk.h"
#include "appearance/current_theme.h"
#include "appearance/font_aliases_gtk.h"
#include "document/file_load_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "settings/data_folder.h"
#include "settings/settings.h"
#include "../tests/support/process.h"

using Clock = std::chrono::steady_clock;
using namespace nebro;
using namespace nebro::app;
using namespace nebro::appearance;
using namespace nebro::document;
using namespace nebro::settings;

namespace {

double Ms(Clock::time_point a, Clock::time_point b) {
  return std::chrono::duration<double, std::milli>(b - a).count();
}

bool painted = false;

gboolean OnDraw(GtkWidget*, cairo_t*, gpointer) {
  painted = true;
  return FALSE;
}

// The steps of a start-up, in process, from loading the settings to the editor's first paint.
double StartupToFirstPaint(const std::string& file) {
  const auto start = Clock::now();
  LoadSettings(gSettings);
  gThemeChosenByUser = true;
  sci::LoadScintilla();
  sci::LoadLexilla();
  CreateMainWindow("Nebro", 0, 0, 920, 660, true);
  gtk_widget_show(gMain.window);
  OpenFileFromStartup(file);
  painted = false;
  g_signal_connect_after(gMain.editor, "draw", G_CALLBACK(OnDraw), nullptr);
  while (!painted) gtk_main_iteration_do(TRUE);
  gdk_display_sync(gdk_display_get_default());
  const double ms = Ms(start, Clock::now());
  CloseDocumentLock(gMain.doc);
  gtk_widget_destroy(gMain.window);
  gMain = MainWindow();
  while (gtk_events_pending()) gtk_main_iteration();
  return ms;
}

}  // namespace

int main(int argc, char** argv) {
  if (!gtk_init_check(&argc, &argv)) {
    std::fprintf(stderr, "needs a display: run under xvfb-run -a\n");
    return 1;
  }
  char name[] = "/tmp/nebro-bench-XXXXXX";
  const std::string dir = mkdtemp(name);
  SetConfigRoot(dir);
  LoadFontAliases();

  // A realistic source file of about 200 KB.
  const std::string file = dir + "/sample.cpp";
  {
    std::ofstream out(file);
    for (int i = 0; i < 5000; ++i) out << "static int value" << i << " = compute(" << i << ", \"text\"); // note\n";
  }

  std::vector<double> runs;
  for (int i = 0; i < 8; ++i) runs.push_back(StartupToFirstPaint(file));
  std::printf("start-up to first paint (in process, 200 KB C++ file): first %.1f ms, then", runs[0]);
  for (size_t i = 1; i < runs.size(); ++i) std::printf(" %.1f", runs[i]);
  std::printf(" ms\n");

  // Whole process: exec to the "FileLoad completed" trace, for comparison.
  const std::string exe = sci::ExecutableFolder() + "/../nebro";
  if (access(exe.c_str(), X_OK) == 0) {
    std::vector<double> whole;
    for (int i = 0; i < 5; ++i) {
      const auto start = Clock::now();
      nebro::test::Child child({exe, file}, {"XDG_CONFIG_HOME=" + dir, "G_MESSAGES_DEBUG=Nebro"});
      if (!child.WaitForLine("FileLoad completed")) break;
      whole.push_back(Ms(start, Clock::now()));
      child.Signal(SIGTERM);
      child.Wait();
    }
    std::printf("whole process, exec to file loaded:");
    for (double ms : whole) std::printf(" %.1f", ms);
    std::printf(" ms\n");
  }

  AppSettings s;
  SetDefaultSettings(s);
  const std::string cfg = dir + "/nebro.cfg";
  constexpr int kRounds = 2000;
  auto t0 = Clock::now();
  for (int i = 0; i < kRounds; ++i) SaveSettingsTo(cfg, s);
  auto t1 = Clock::now();
  for (int i = 0; i < kRounds; ++i) LoadSettingsFrom(cfg, s);
  auto t2 = Clock::now();
  std::printf("settings save: %.1f us, load: %.1f us (mean of %d, 36,703-byte file)\n",
              Ms(t0, t1) * 1000 / kRounds, Ms(t1, t2) * 1000 / kRounds, kRounds);
  std::filesystem::remove_all(dir);
  return 0;
}
