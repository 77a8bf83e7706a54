// The longest time the main loop goes without running while a large file loads into the real
// main window, is typed into and gone through, and New replaces it: what a user (or a screen
// reader) waits for an answer. Measured with the accessibility bridge on and off, each case in a
// fresh process, against the floor: the file mapped and fed to Scintilla's loader on a worker,
// the document attached after.
//   xvfb-run -a dbus-run-session build/bench/main_loop_gap_bench [MB [LINE_BYTES]]
// Steps: load, a character typed at 0, Ctrl+End, one typed there, New. Each measure ends when the
// editor has been drawn after its step. NEBRO_BENCH_IN_PROCESS=1 runs one case without the bridge
// in this process, for perf or gdb: the editor's, or with NEBRO_BENCH_FLOOR=1 the floor's.
// Under dbus-run-session the accessibility bus is started as on a desktop; NO_AT_BRIDGE=1 turns
// the bridge off for the second half of the cases.
#include <gtk/gtk.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "gap_meter.h"
#include "app/main_window_gtk.h"
#include "appearance/current_theme.h"
#include "common/command_ids.h"
#include "document/document_ops_gtk.h"
#include "appearance/plain_styling.h"
#include "scintilla/scintilla_api.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "settings/data_folder.h"
#include "settings/settings.h"

using Clock = std::chrono::steady_clock;
using nebro::bench::GapMeter;
using nebro::bench::Since;
using namespace nebro;

namespace {

// The resident size of this process in MB.
double ResidentMb() {
  FILE* f = std::fopen("/proc/self/statm", "r");
  long pages = 0, resident = 0;
  if (f) {
    if (std::fscanf(f, "%ld %ld", &pages, &resident) != 2) resident = 0;
    std::fclose(f);
  }
  return resident * (sysconf(_SC_PAGESIZE) / 1048576.0);
}

// Runs the main loop until the editor has been drawn once more: what was asked for is on the
// screen. (Scintilla's own SCN_PAINTED waits while it wraps in the background, after the text is
// already shown.)
void UntilPainted() {
  static int draws = 0;
  static const gulong handler = g_signal_connect_after(app::gMain.editor, "draw", G_CALLBACK(+[](GtkWidget*, cairo_t*, gpointer) -> gboolean {
    ++draws;
    return FALSE;
  }), nullptr);
  (void)handler;
  const int before = draws;
  while (draws == before) g_main_context_iteration(nullptr, TRUE);
}

// The least any load can take here: map the file, make and feed the loader on a worker, attach,
// paint.
double FloorLoad(const std::string& path) {
  const auto start = Clock::now();
  const int fd = open(path.c_str(), O_RDONLY);
  struct stat st {};
  fstat(fd, &st);
  const auto size = static_cast<size_t>(st.st_size);
  void* map = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
  // The document options the editor takes for a file of this size.
  int options = size >= 0x7FFFFFFF ? sci::SC_DOCUMENTOPTION_TEXT_LARGE : 0;
  if (size > appearance::kLargeDocumentLimit) options |= sci::SC_DOCUMENTOPTION_STYLES_NONE;
  std::atomic<void*> document{nullptr};
  std::atomic<bool> fed{false};
  // The loader is made on the worker too, as the editor makes it: allocating and clearing its
  // buffer takes a while for a gigabyte.
  std::thread worker([&] {
    auto* loader = reinterpret_cast<sci::ILoader*>(sci::Send(app::gMain.editor, sci::SCI_CREATELOADER, size, options));
    const char* bytes = static_cast<const char*>(map);
    for (size_t done = 0; done < size; done += 1u << 20) loader->AddData(bytes + done, std::min<size_t>(1u << 20, size - done));
    document = loader->ConvertToDocument();
    fed = true;
    g_main_context_wakeup(nullptr);
  });
  while (!fed) g_main_context_iteration(nullptr, TRUE);
  worker.join();
  sci::Send(app::gMain.editor, sci::SCI_SETACCESSIBILITY, sci::SC_ACCESSIBILITY_DISABLED);
  // Unwrapped and plain (a lexer belongs to the document): the least a paint can do.
  sci::Send(app::gMain.editor, sci::SCI_SETWRAPMODE, sci::SC_WRAP_NONE);
  sci::SendPtr(app::gMain.editor, sci::SCI_SETDOCPOINTER, 0, document.load());
  sci::SendPtr(app::gMain.editor, sci::SCI_RELEASEDOCUMENT, 0, document.load());
  sci::SendPtr(app::gMain.editor, sci::SCI_SETILEXER, 0, sci::CreateLexerFn()("null"));
  munmap(map, size);
  close(fd);
  UntilPainted();
  return std::chrono::duration<double>(Clock::now() - start).count();
}

void Case(const std::string& path, bool bridge, bool floor) {
  std::fflush(stdout);
  if (!getenv("NEBRO_BENCH_IN_PROCESS") && fork() != 0) {
    wait(nullptr);
    return;
  }
  if (!bridge) setenv("NO_AT_BRIDGE", "1", 1);
  int argc = 0;
  gtk_init(&argc, nullptr);
  settings::SetDefaultSettings(settings::gSettings);
  appearance::gThemeChosenByUser = true;
  sci::LoadScintilla();
  sci::LoadLexilla();
  app::CreateMainWindow("bench", 0, 0, 800, 600, true);
  gtk_widget_show(app::gMain.window);
  while (g_main_context_iteration(nullptr, FALSE)) {}
  // Something that asks for the editor's accessible object, as a screen reader does.
  gtk_widget_get_accessible(app::gMain.editor);

  const double residentBefore = ResidentMb();
  GapMeter meter;
  meter.Start();
  const auto start = Clock::now();
  bool done = false;
  if (floor) {
    const double seconds = FloorLoad(path);
    std::printf("%-22s floor %6.2f s   longest gap %6.3f s\n", bridge ? "accessibility on" : "accessibility off",
                seconds, meter.Stop());
    std::fflush(stdout);
    _exit(0);
  }
  document::LoadAsDocument(app::MainDocumentWindow(), path, [&](bool) { done = true; });
  while (!done) g_main_context_iteration(nullptr, TRUE);
  UntilPainted();
  const double loadSeconds = std::chrono::duration<double>(Clock::now() - start).count();
  const double loadGap = meter.Stop();
  const double residentLoaded = ResidentMb();

  // A character typed where the caret starts, and one at the end after Ctrl+End.
  const auto typeGap = [&meter] {
    meter.Start();
    sci::SendPtr(app::gMain.editor, sci::SCI_REPLACESEL, 0, "x");
    UntilPainted();
    return meter.Stop();
  };
  const double typeStartGap = typeGap();

  // Ctrl+End, as a user goes to the end of what was just opened (wrapped, below the size tier).
  meter.Start();
  sci::Send(app::gMain.editor, sci::SCI_GOTOPOS, sci::Send(app::gMain.editor, sci::SCI_GETLENGTH));
  UntilPainted();
  const double endGap = meter.Stop();

  const double typeEndGap = typeGap();
  app::gMain.doc.modified = false;  // New drops the typed characters without asking

  meter.Start();
  app::DispatchCommand(kCmdNew);
  UntilPainted();
  const double newGap = meter.Stop();
  // The memory given back beside the window has had its moment.
  for (int i = 0; i < 20; ++i) {
    g_usleep(50000);
    while (g_main_context_iteration(nullptr, FALSE)) {}
  }
  std::printf("%-22s load %6.2f s   longest gap: load %6.3f s, typing at 0 %6.3f s, Ctrl+End %6.3f s, typing at the end %6.3f s, New %6.3f s   resident MB: %.0f -> %.0f -> %.0f\n",
              bridge ? "accessibility on" : "accessibility off", loadSeconds, loadGap, typeStartGap, endGap, typeEndGap, newGap, residentBefore,
              residentLoaded, ResidentMb());
  std::fflush(stdout);
  _exit(0);
}

}  // namespace

int main(int argc, char** argv) {
  if (!getenv("DISPLAY")) {
    std::fprintf(stderr, "needs a display: run under xvfb-run -a dbus-run-session\n");
    return 1;
  }
  const size_t megabytes = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 300;
  const std::string dir = "/tmp/nebro-gap-bench";
  std::filesystem::create_directories(dir);
  settings::SetConfigRoot(dir + "/cfg");
  // Lines of this many bytes (70 by default; longer ones wrap in the window).
  const size_t lineBytes = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 70;
  const std::string path = dir + "/big-" + std::to_string(megabytes) + "-" + std::to_string(lineBytes) + ".txt";
  if (!std::filesystem::exists(path)) {
    FILE* f = std::fopen(path.c_str(), "wb");
    std::string line;
    while (line.size() + 1 < lineBytes) line += "Plain prose follows here, with words of several lengths, and so on. ";
    line.resize(lineBytes - 1);
    line += '\n';
    for (size_t written = 0; written < megabytes << 20; written += line.size()) std::fputs(line.c_str(), f);
    std::fclose(f);
  }
  std::printf("%zu MB, %s\n", megabytes, getenv("DBUS_SESSION_BUS_ADDRESS") ? "session bus present" : "no session bus");
  // One case in this process, for a profiler or a debugger.
  if (getenv("NEBRO_BENCH_IN_PROCESS")) {
    Case(path, false, getenv("NEBRO_BENCH_FLOOR") != nullptr);
    return 0;
  }
  for (bool bridge : {true, false}) {
    Case(path, bridge, true);
    Case(path, bridge, false);
  }
  return 0;
}
