// Find All of Regex Search in the real main window over a 100 MB document with about 440,000
// matches: the time from the click to the complete list on screen, and the longest time the main
// loop goes without running meanwhile. The engine alone (FindBatch over the same text, with the
// UTF-16 conversion the worker makes) is the reference.
//   xvfb-run -a dbus-run-session build-bench/bench/regex_find_all_bench [MB]
#include <gtk/gtk.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "gap_meter.h"
#include "app/main_window_gtk.h"
#include "common/command_ids.h"
#include "common/command_table.h"
#include "common/utf.h"
#include "document/document_ops_gtk.h"
#include "gtk/widget_style_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "search/regex_engine.h"
#include "search/regex_search_run_gtk.h"
#include "search/regex_window_rules.h"
#include "settings/data_folder.h"
#include "settings/settings.h"

using Clock = std::chrono::steady_clock;
using nebro::bench::GapMeter;
using nebro::bench::Since;
using namespace nebro;

namespace {

// Lines of prose, every one holding the word the search looks for.
std::string Document(size_t megabytes, size_t lineBytes) {
  std::string text;
  text.reserve(megabytes << 20);
  const std::string filler = "Plain prose follows here, with words of several lengths, and so on and on. ";
  for (size_t n = 1; text.size() < (megabytes << 20); ++n) {
    std::string line = "line " + std::to_string(n) + " needle ";
    while (line.size() + filler.size() < lineBytes) line += filler;
    text += line;
    text += '\n';
  }
  return text;
}

}  // namespace

int main(int argc, char** argv) {
  if (!getenv("DISPLAY")) {
    std::fprintf(stderr, "needs a display: run under xvfb-run -a dbus-run-session\n");
    return 1;
  }
  const size_t megabytes = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 100;
  const std::string text = Document(megabytes, 310);
  const std::u16string pattern = u"needle";

  // The reference: the engine alone.
  auto t0 = Clock::now();
  const std::u16string utf16 = Utf8ToUtf16(text);
  const double convert = Since(t0);
  search::RegexPtr regex = search::BuildRegex(pattern, false, false);
  search::FindBatchContext context;
  context.wellFormed = true;
  uint64_t cursor = 0;
  t0 = Clock::now();
  const search::RegexBatch batch = search::FindBatch(utf16, *regex, cursor, UINT64_MAX, context);
  const double engine = Since(t0);
  const size_t matches = batch.matches.size();
  std::printf("%zu MB, %zu matches\nengine alone: UTF-16 conversion %.3f s + FindBatch %.3f s = %.3f s (%.0f MB/s)\n",
              megabytes, matches, convert, engine, convert + engine, static_cast<double>(text.size()) / 1048576.0 / (convert + engine));

  int gtkArgc = 0;
  gtk_init(&gtkArgc, nullptr);
  const std::string dir = "/tmp/nebro-regex-bench";
  std::filesystem::create_directories(dir);
  settings::SetConfigRoot(dir + "/cfg");
  settings::SetDefaultSettings(settings::gSettings);
  settings::gSettings.regexBatchSize = 1000000;  // the whole document in one run
  settings::gSettings.regexMaxMatches = 0;
  sci::LoadScintilla();
  sci::LoadLexilla();
  app::CreateMainWindow("bench", 0, 0, 900, 600, true);
  gtk_widget_show(app::gMain.window);
  while (g_main_context_iteration(nullptr, FALSE)) {}
  // Loaded as a user opens it, so the editor takes the size tier of a large file.
  const std::string path = dir + "/find-all-" + std::to_string(megabytes) + ".txt";
  if (FILE* f = std::fopen(path.c_str(), "wb")) {
    std::fwrite(text.data(), 1, text.size(), f);
    std::fclose(f);
  }
  bool loaded = false;
  document::LoadAsDocument(app::MainDocumentWindow(), path, [&](bool) { loaded = true; });
  while (!loaded) g_main_context_iteration(nullptr, TRUE);
  for (int i = 0; i < 20; ++i) {
    g_usleep(20000);
    while (g_main_context_iteration(nullptr, FALSE)) {}
  }
  RunCommand(app::gMain.commands, kCmdRegexSearch);
  while (g_main_context_iteration(nullptr, FALSE)) {}
  GtkWidget* window = nullptr;
  GList* top = gtk_window_list_toplevels();
  for (GList* l = top; l; l = l->next) {
    if (std::string(gtk_widget_get_name(GTK_WIDGET(l->data))) == search::kRegexWindowName) window = GTK_WIDGET(l->data);
  }
  g_list_free(top);
  auto control = [window](int id) { return FindChildByName(window, std::to_string(id).c_str()); };
  GtkWidget* entry = gtk_bin_get_child(GTK_BIN(control(search::kRegexPatternCombo)));
  gtk_entry_set_text(GTK_ENTRY(entry), Utf16ToUtf8(pattern).c_str());
  GtkTreeView* list = GTK_TREE_VIEW(control(search::kRegexResultList));
  GtkLabel* status = GTK_LABEL(control(search::kRegexStatusText));

  {
    // The list receives matches only with "Color results" on, so they are highlighted too.
    // The click copies the text out of the editor on the main loop; the gaps are measured after it.
    const auto start = Clock::now();
    gtk_button_clicked(GTK_BUTTON(control(search::kRegexFindAllButton)));
    const double click = Since(start);
    GapMeter meter;
    meter.Start();
    double searchDone = 0;
    // Done when the run has ended, every row is in the view and the last one is drawn.
    const std::string complete = search::RegexCompleteStatus(matches);
    GdkFrameClock* frames = gtk_widget_get_frame_clock(window);
    bool painted = false;
    const gulong handler = g_signal_connect_swapped(frames, "after-paint", G_CALLBACK(+[](bool* p) { *p = true; }), &painted);
    for (;;) {
      g_main_context_iteration(nullptr, TRUE);
      if (searchDone == 0 && complete == gtk_label_get_text(status)) searchDone = Since(start);
      if (searchDone == 0) continue;
      const int rows = gtk_tree_model_iter_n_children(gtk_tree_view_get_model(list), nullptr);
      if (rows != static_cast<int>(matches)) continue;
      GtkTreePath* first = nullptr;
      GtkTreePath* last = nullptr;
      painted = false;
      if (gtk_tree_view_get_visible_range(list, &first, &last)) {
        const bool atEnd = gtk_tree_path_get_indices(last)[0] == rows - 1;
        gtk_tree_path_free(first);
        gtk_tree_path_free(last);
        if (atEnd) {
          while (!painted) g_main_context_iteration(nullptr, TRUE);
          break;
        }
      }
    }
    g_signal_handler_disconnect(frames, handler);
    const double total = Since(start);
    const double gap = meter.Stop();
    std::printf("Find All: click (text copy) %.3f s, search done %.3f s, complete list on screen %.3f s, "
                "longest main-loop gap after the click %.3f s\n", click, searchDone, total, gap);
  }
  {
    // Cancel of a run that would take minutes (costly starts in a long line without a match, after
    // many cheap short lines): the time from the click on Cancel to the thread's end.
    std::string text;
    for (int i = 0; i < 100000; ++i) text += "x\n";
    text += std::string(1 << 20, 'a');
    sci::SendPtr(app::gMain.editor, sci::SCI_SETTEXT, 0, text.c_str());
    gtk_entry_set_text(GTK_ENTRY(entry), "\\w{1,20000}\\d");
    gtk_button_clicked(GTK_BUTTON(control(search::kRegexFindAllButton)));
    const auto started = Clock::now();
    while (Since(started) < 0.5) g_main_context_iteration(nullptr, FALSE);
    const auto start = Clock::now();
    gtk_button_clicked(GTK_BUTTON(control(search::kRegexCancelButton)));
    while (search::RegexRunActive()) g_main_context_iteration(nullptr, TRUE);
    std::printf("Cancel after 0.5 s of a long run: thread ended %.3f s after the click (\"%s\")\n", Since(start),
                gtk_label_get_text(status));
  }
  return 0;
}
