#include "app/startup_gtk.h"

#include <glib-unix.h>
#include <gtk/gtk.h>

#include <chrono>
#include <clocale>
#include <cstdio>
#include <string>
#include <vector>

#include "app/command_line_export_gtk.h"
#include "app/main_window_gtk.h"
#include "app/version_report_gtk.h"
#include "gtk/message_box_gtk.h"
#include "app/startup_rules.h"
#include "gtk/progress_gtk.h"
#include "gtk/shutdown_gtk.h"
#include "gtk/trace_gtk.h"
#include "appearance/current_theme.h"
#include "appearance/font_aliases_gtk.h"
#include "document/file_load_gtk.h"
#include "document/recovery_gtk.h"
#include "common/install_paths.h"
#include "common/utf.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "search/results_file.h"
#include "settings/data_folder.h"
#include "settings/settings.h"
#include "settings/temp_files.h"

namespace nebro::app {
namespace {

constexpr const char* kFatalTitle = "Nebro - Fatal Error";

int Fatal(const char* trace, const char* text) {
  Trace("%s", trace);
  ShowMessageBox(nullptr, kMbOk, text, kFatalTitle);
  return 1;
}

// Waits until every box, chooser and job has returned, then ends the editor in order.
gboolean FinishTermination(gpointer) {
  if (document::FileLoadInProgress() || ProgressJobsRunning() > 0 || ModalLoopsRunning()) {
    CloseModalWindowsAsCancelled();  // one may have opened since
    return G_SOURCE_CONTINUE;
  }
  if (gMain.window) DestroyMainWindow();
  else if (gtk_main_level() > 0) gtk_main_quit();
  return G_SOURCE_REMOVE;
}

gboolean OnTerminate(gpointer) {
  // A signal ends the editor in order, from whatever window is open: open questions, boxes and
  // choosers are answered as cancelled, running jobs (a load) are cancelled, and only once all
  // of them have returned does the window go, with the settings written. Nothing is asked and
  // nothing is saved.
  Trace("Nebro: Signal received, closing");
  BeginShutdown();
  CloseModalWindowsAsCancelled();
  CancelProgressJobs();
  g_timeout_add(10, FinishTermination, nullptr);
  return G_SOURCE_CONTINUE;  // a second signal finds the same way out
}

struct PostedOpen {
  std::string path;
};

gboolean OnPostedOpen(gpointer data) {
  auto* posted = static_cast<PostedOpen*>(data);
  // Unsaved text that an editor left behind comes first: restored, it is the document.
  if (gMain.window && !gViewerMode && document::OfferRecoveryCopies(MainDocumentWindow())) {
    Trace("Nebro: Start-up file not loaded: restored text shown instead");
  } else if (gMain.window && !posted->path.empty()) {
    OpenFileFromStartup(posted->path);
  }
  delete posted;
  return G_SOURCE_REMOVE;
}

void PostOpen(const std::string& path) {
  g_idle_add(OnPostedOpen, new PostedOpen{path});
}

}  // namespace

int RunNebro(int argc, char** argv) {
  std::setlocale(LC_ALL, "");
  const ToolRequest tool = ParseToolRequest(std::vector<std::string>(argv, argv + argc));
  switch (tool.command) {
    case ToolCommand::Help:
      std::fputs(UsageText(), stdout);
      return 0;
    case ToolCommand::Version:
      return PrintVersionReport();
    case ToolCommand::UsageError:
      std::fprintf(stderr, "nebro: %s\n\n%s", tool.error.c_str(), UsageText());
      return 2;
    case ToolCommand::Export:
      return RunCommandLineExport(tool, argc, argv);
    case ToolCommand::None:
      break;
  }
  if (!gtk_init_check(&argc, &argv)) {
    std::fprintf(stderr, "nebro: cannot open a display (for a headless machine, run it under xvfb-run)\n");
    return 1;
  }
  const std::vector<std::string> args(argv, argv + argc);
  // Every window takes the program's icon from the icon theme; the program's own icon folder is
  // searched too, so the build folder and installs outside the desktop's data folders have it.
  gtk_icon_theme_append_search_path(gtk_icon_theme_get_default(), IconFolder().c_str());
  gtk_window_set_default_icon_name("nebro");

  Trace("Nebro: Started");
  Trace("Nebro: Loading settings");
  if (const gchar* root = g_get_user_config_dir()) settings::SetConfigRoot(root);
  settings::LoadSettings(settings::gSettings);
  settings::CleanupTempFiles();
  search::CleanupOldResults(settings::GetSettingsFolder(), std::chrono::system_clock::now());
  appearance::gThemeChosenByUser = true;
  if (settings::gSettings.firstRun) {
    settings::gSettings.firstRun = false;
    settings::SaveSettings(settings::gSettings);
  }

  Trace("Nebro: Parsing command line for --viewer flag");
  const StartupArgs startup = ParseStartupArgs(args);
  gViewerMode = startup.viewerMode;
  if (gViewerMode) Trace("Nebro: Viewer mode enabled");

  Trace("Nebro: Loading font aliases");
  appearance::LoadFontAliases();

  Trace("Nebro: Loading libscintilla.so");
  if (sci::LoadScintilla() != sci::LibraryLoad::Ok) {
    return Fatal("Nebro: ERROR - libscintilla.so not found",
                 "libscintilla.so not found.\nPlace libscintilla.so next to nebro.");
  }
  Trace("Nebro: libscintilla.so loaded");

  if (!gViewerMode) {
    Trace("Nebro: Loading liblexilla.so");
    const sci::LibraryLoad lexilla = sci::LoadLexilla();
    if (lexilla == sci::LibraryLoad::NotFound) {
      sci::UnloadScintilla();
      return Fatal("Nebro: ERROR - liblexilla.so not found",
                   "liblexilla.so not found.\nPlace liblexilla.so next to nebro.");
    }
    Trace("Nebro: liblexilla.so loaded");
    if (lexilla == sci::LibraryLoad::EntryMissing) {
      sci::UnloadLexilla();
      sci::UnloadScintilla();
      return Fatal("Nebro: ERROR - CreateLexer not found in liblexilla.so",
                   "liblexilla.so: CreateLexer not found.\nLexilla verzija nije kompatibilna.");
    }
    Trace("Nebro: CreateLexer function found");
  }

  Trace("Nebro: Creating main window");
  int x = settings::kDefaultPosition, y = settings::kDefaultPosition, width, height;
  bool defaultPosition = false;
  if (gViewerMode) {
    Trace("Nebro: Viewer mode - window place from the launching editor");
    if (startup.viewerGeometry) {
      x = startup.viewerGeometry->x;
      y = startup.viewerGeometry->y;
      Trace("Nebro: Using the position given by the editor");
    } else {
      defaultPosition = true;
      Trace("Nebro: Using default position");
    }
    width = startup.viewerGeometry ? startup.viewerGeometry->width : 660;
    height = startup.viewerGeometry ? startup.viewerGeometry->height : 820;
    Trace("Nebro: Viewer window size set");
  } else {
    Trace("Nebro: Normal mode - using settings for window position");
    width = settings::gSettings.windowWidth;
    height = settings::gSettings.windowHeight;
    if (settings::gSettings.windowX == settings::kDefaultPosition || settings::gSettings.windowY == settings::kDefaultPosition) {
      defaultPosition = true;
      Trace("Nebro: Position left to the window manager");
    } else {
      x = settings::gSettings.windowX;
      y = settings::gSettings.windowY;
    }
  }
  if (defaultPosition) Trace("Nebro: Window size: %d x %d", width, height);
  else Trace("Nebro: Window size: %d x %d, pos: %d, %d", width, height, x, y);

  if (!CreateMainWindow("Nebro - Viewer", x, y, width, height, defaultPosition)) {
    sci::UnloadLexilla();
    sci::UnloadScintilla();
    return Fatal("Nebro: ERROR - Failed to create main window", "Failed to create main window.");
  }
  Trace("Nebro: Main window created");

  if (!gViewerMode && settings::gSettings.transparency > 0) {
    Trace("Nebro: Applying window transparency");
    ApplyTransparency(settings::gSettings.transparency);
  }
  if (!gViewerMode && settings::gSettings.windowMaximized) gtk_window_maximize(GTK_WINDOW(gMain.window));
  gtk_widget_show(gMain.window);
  Trace("Nebro: Window shown");

  Trace("Nebro: Processing command line arguments");
  Trace("Nebro: Command line has %d arguments", static_cast<int>(args.size()));
  std::string startupFile;
  if (args.size() < 2) {
    const std::string last = Utf16ToUtf8(settings::FieldText(settings::gSettings.lastFile));
    if (!gViewerMode && !last.empty()) {
      Trace("Nebro: No command line file, checking last file from settings");
      if (!g_file_test(last.c_str(), G_FILE_TEST_EXISTS)) {
        Trace("Nebro: Last file no longer exists, clearing");
        settings::SetFieldText(settings::gSettings.lastFile, u"");
      } else {
        Trace("Nebro: Loading last file from settings");
        startupFile = last;
      }
    } else {
      Trace("Nebro: No file to load (untitled document)");
    }
  } else {
    Trace("Nebro: First argument: %s", args[1].c_str());
    if (startup.fileFromViewerArgument) Trace("Nebro: Viewer mode - loading file from command line");
    else Trace("Nebro: Normal mode - loading file from command line");
    startupFile = *startup.fileToOpen;
  }
  PostOpen(startupFile);

  g_unix_signal_add(SIGTERM, OnTerminate, nullptr);
  g_unix_signal_add(SIGINT, OnTerminate, nullptr);

  Trace("Nebro: Entering message loop");
  gtk_main();
  Trace("Nebro: Exited message loop");
  Trace("Nebro: Cleaning up resources");
  if (!gViewerMode) {
    sci::UnloadLexilla();
    Trace("Nebro: liblexilla.so unloaded");
  }
  sci::UnloadScintilla();
  Trace("Nebro: libscintilla.so unloaded");
  Trace("Nebro: Exiting with code %d", 0);
  return 0;
}

}  // namespace nebro::app
