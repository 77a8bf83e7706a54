// Find & Replace on a 100 MB document in the real main window: Replace All of a literal and
// Highlight All with 1,000,000 matches, pressed as the user presses them (the window's own
// buttons), against the search and replace functions alone over the same text.
//   xvfb-run -a build-bench/bench/find_replace_bench [lines [quick]]
// The document is `lines` lines of 100 bytes (default 1,000,000: 100 MB), each holding the word
// "needle" once. The window's time runs from the click until the main loop is idle again, so it
// includes what the editor does with the change (line index, undo, marks).
#include <gtk/gtk.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

#include "app/main_window_gtk.h"
#include "appearance/current_theme.h"
#include "common/command_ids.h"
#include "document/document_ops_gtk.h"
#include "gtk/widget_style_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "search/find_replace_replace.h"
#include "search/find_replace_search.h"
#include "search/find_replace_window_gtk.h"
#include "settings/data_folder.h"
#include "settings/settings.h"

using Clock = std::chrono::steady_clock;
using namespace nebro;

namespace {

double Since(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

void Drain() {
  while (g_main_context_iteration(nullptr, FALSE)) {}
}

GtkWidget* Control(const char* id) { return FindChildByName(search::FindReplaceWindow(), id); }

void SetField(const char* id, const char* text) {
  gtk_entry_set_text(GTK_ENTRY(gtk_bin_get_child(GTK_BIN(Control(id)))), text);
}

void SetCheck(const char* id, bool on) { gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(Control(id)), on); }

std::string Status() { return gtk_label_get_text(GTK_LABEL(Control("516"))); }

// What a click costs: the button's own work, the wait until the editor has painted the result,
// and the wait until the main loop is idle again (the editor re-wraps long documents in the
// background, a screenful at a time, while the window answers).
struct Timing {
  double handler = 0, painted = 0, idle = 0;
};

bool waitForIdle = true;

Timing Measure(const std::function<void()>& action) {
  Timing t;
  GdkFrameClock* clock = gtk_widget_get_frame_clock(app::gMain.editor);
  bool painted = false;
  const gulong handler = g_signal_connect_swapped(clock, "after-paint", G_CALLBACK(+[](bool* flag) { *flag = true; }), &painted);
  const auto start = Clock::now();
  action();
  t.handler = Since(start);
  gtk_widget_queue_draw(app::gMain.editor);
  while (!painted) g_main_context_iteration(nullptr, TRUE);
  t.painted = Since(start);
  g_signal_handler_disconnect(clock, handler);
  if (!waitForIdle) return t;
  Drain();
  t.idle = Since(start);
  return t;
}

Timing Click(const char* id) {
  return Measure([id] { gtk_button_clicked(GTK_BUTTON(Control(id))); });
}

std::string Text(const Timing& t) {
  char buf[96];
  if (t.idle > 0)
    std::snprintf(buf, sizeof buf, "%.2f s (painted %.2f s, idle %.2f s)", t.handler, t.painted, t.idle);
  else
    std::snprintf(buf, sizeof buf, "%.2f s (painted %.2f s)", t.handler, t.painted);
  return buf;
}

bool Load(const std::string& path) {
  bool done = false, loaded = false;
  document::LoadAsDocument(app::MainDocumentWindow(), path, [&](bool ok) {
    loaded = ok;
    done = true;
  });
  while (!done) g_main_context_iteration(nullptr, TRUE);
  Drain();
  return loaded;
}


}  // namespace

int main(int argc, char** argv) {
  if (!getenv("DISPLAY")) {
    std::fprintf(stderr, "needs a display: run under xvfb-run -a\n");
    return 1;
  }
  const size_t lines = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 1000000;
  const bool quick = argc > 2 && std::string(argv[2]) == "quick";
  const std::string dir = "/tmp/nebro-find-bench";
  std::filesystem::create_directories(dir);
  const std::string path = dir + "/needles-" + std::to_string(lines) + ".txt";
  if (!std::filesystem::exists(path)) {
    FILE* f = std::fopen(path.c_str(), "wb");
    // 100 bytes: the word once, among others that start like it.
    std::string line = "Plain prose with a needle in it, next to needs and needy words, and some more text";
    line.resize(99, '.');
    line += '\n';
    for (size_t i = 0; i < lines; ++i) std::fwrite(line.data(), 1, line.size(), f);
    std::fclose(f);
  }

  int argcGtk = 0;
  gtk_init(&argcGtk, nullptr);
  settings::SetConfigRoot(dir + "/cfg");
  settings::SetDefaultSettings(settings::gSettings);
  appearance::gThemeChosenByUser = true;
  sci::LoadScintilla();
  sci::LoadLexilla();
  app::CreateMainWindow("bench", 0, 0, 900, 700, true);
  gtk_widget_show(app::gMain.window);
  Drain();
  if (!Load(path)) return 1;
  const std::string text = sci::DocumentCopy(app::gMain.editor);
  std::printf("%zu lines, %.1f MB\n", lines, text.size() / 1048576.0);

  // The functions alone, over the same bytes.
  auto start = Clock::now();
  const auto list = search::BuildMatchList(text, "needle", {});
  const double listSeconds = Since(start);
  start = Clock::now();
  const auto listCase = search::BuildMatchList(text, "needle", {true, false});
  const double listCaseSeconds = Since(start);
  start = Clock::now();
  const auto replaced = search::ReplaceAllLiteral(text, "needle", "pin", {});
  const double replaceSeconds = Since(start);
  start = Clock::now();
  const auto replacedCase = search::ReplaceAllLiteral(text, "needle", "pin", {true, false, false});
  const double replaceCaseSeconds = Since(start);
  std::printf("functions alone: match list %zu in %.2f s (match case %.2f s); Replace All %d in %.2f s (match case %.2f s)\n",
              list.size(), listSeconds, listCaseSeconds, replaced.count, replaceSeconds, replaceCaseSeconds);
  std::fflush(stdout);

  // The window, as the user drives it.
  app::DispatchCommand(kCmdFindReplace);
  Drain();
  SetField("501", "needle");
  SetField("502", "pin");
  for (const bool wrap : {true, false}) {
    sci::Send(app::gMain.editor, sci::SCI_SETWRAPMODE, wrap ? sci::SC_WRAP_WORD : sci::SC_WRAP_NONE);
    Drain();
    // Re-wrapping 100 MB in the background takes about a minute per change: "quick" skips waiting.
    waitForIdle = !(wrap && quick);
    std::printf("word wrap %s\n", wrap ? "on" : "off");
    for (const bool matchCase : {false, true}) {
      SetCheck("503", matchCase);
      const Timing highlight = Click("514");
      const std::string highlightStatus = Status();
      const Timing again = Click("514");
      const Timing next = Click("510");
      std::printf("  match case %-3s: Highlight All %s [%s]; again %s; Find Next %s\n", matchCase ? "on" : "off",
                  Text(highlight).c_str(), highlightStatus.c_str(), Text(again).c_str(), Text(next).c_str());
      const Timing replaceAll = Click("513");
      const std::string replaceStatus = Status();
      const Timing undo = Measure([] { sci::Send(app::gMain.editor, sci::SCI_UNDO); });
      std::printf("  match case %-3s: Replace All %s [%s]; Undo %s%s\n", matchCase ? "on" : "off",
                  Text(replaceAll).c_str(), replaceStatus.c_str(), Text(undo).c_str(),
                  sci::DocumentCopy(app::gMain.editor) == text ? "" : " UNDO DID NOT BRING THE TEXT BACK");
      std::fflush(stdout);
    }
  }
  SetCheck("508", false);
  const Timing plainHighlight = Click("514");
  const Timing plainReplace = Click("513");
  std::printf("without Color results: Highlight All %s, Replace All %s\n", Text(plainHighlight).c_str(),
              Text(plainReplace).c_str());
  std::fflush(stdout);
  _exit(0);
}
