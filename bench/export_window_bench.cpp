// Exports through the real main window, timed as a user meets them: from the Save dialog's answer
// to the completion question, against the bare generator writing the same document to a file
// in the same run, with the longest time the main loop went without running meanwhile. And
// MD Preview of a 30,000-line Markdown document, to the page on disk.
//   xvfb-run -a build/bench/export_window_bench [MB]
#include <gtk/gtk.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "gap_meter.h"
#include "app/main_window_gtk.h"
#include "appearance/current_theme.h"
#include "common/command_ids.h"
#include "common/utf.h"
#include "document/document_ops_gtk.h"
#include "export/export_dispatch_gtk.h"
#include "export/export_rules.h"
#include "export/html_export.h"
#include "export/rtf_export.h"
#include "export/styled_text.h"
#include "gtk/message_box.h"
#include "gtk/message_box_gtk.h"
#include "gtk/viewer_launch_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "settings/data_folder.h"
#include "settings/settings.h"

using Clock = std::chrono::steady_clock;
using nebro::bench::GapMeter;
using nebro::bench::Since;
using namespace nebro;
namespace fs = std::filesystem;

namespace {

struct Completion {
  bool done = false;
  Clock::time_point at;
};

// Every question is answered Yes, except the completion question, which ends the timing.
void AnswerBoxes(Completion* c) {
  SetMessageBoxHook([c](int, const std::string& text, const std::string&) {
    if (text.find("exported successfully") != std::string::npos) {
      c->at = Clock::now();
      c->done = true;
      return static_cast<int>(kMbResultDontSaveOrNo);
    }
    return static_cast<int>(kMbResultSaveOrYes);
  });
}

// One export through the window's dispatcher from the Save dialog's answer on; returns seconds
// from that answer to the completion question.
double ExportThroughWindow(int32_t format, const std::string& out, double& gap) {
  fs::remove(out);
  GapMeter meter;
  Completion completion;
  AnswerBoxes(&completion);
  meter.Start();
  const auto clicked = Clock::now();
  exports::ExportDocumentTo(GTK_WINDOW(app::gMain.window), app::gMain.editor, app::gMain.doc.path, settings::gSettings,
                            format, out);
  while (!completion.done) g_main_context_iteration(nullptr, TRUE);
  gap = meter.Stop();
  return std::chrono::duration<double>(completion.at - clicked).count();
}

struct Styled {
  std::string text, styles;
  exports::ExportStyleTable table{};
};

Styled ReadEditor() {
  using namespace sci;
  Styled s;
  GtkWidget* e = app::gMain.editor;
  const auto length = static_cast<size_t>(Send(e, SCI_GETLENGTH));
  Send(e, SCI_COLOURISE, 0, -1);
  std::string interleaved(2 * length + 2, '\0');
  Sci_TextRange range{{0, static_cast<long>(length)}, interleaved.data()};
  SendPtr(e, SCI_GETSTYLEDTEXT, 0, &range);
  interleaved.resize(2 * length);
  exports::SplitStyledText(interleaved, s.text, s.styles);
  for (int i = 0; i < exports::kExportStyleCount; ++i) {
    s.table[i] = {static_cast<Colour>(Send(e, SCI_STYLEGETFORE, i)), static_cast<Colour>(Send(e, SCI_STYLEGETBACK, i)),
                  Send(e, SCI_STYLEGETBOLD, i) != 0, Send(e, SCI_STYLEGETITALIC, i) != 0};
  }
  return s;
}

void Load(const std::string& path) {
  bool done = false;
  document::LoadAsDocument(app::MainDocumentWindow(), path, [&](bool) { done = true; });
  while (!done) g_main_context_iteration(nullptr, TRUE);
  while (g_main_context_iteration(nullptr, FALSE)) {}
}

}  // namespace

int main(int argc, char** argv) {
  if (!getenv("DISPLAY")) {
    std::fprintf(stderr, "needs a display: run under xvfb-run -a\n");
    return 1;
  }
  const size_t megabytes = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 100;
  const std::string dir = "/tmp/nebro-export-bench";
  fs::create_directories(dir + "/data");
  // No desktop application opens the preview here, and no viewer starts.
  for (const auto& e : fs::directory_iterator("/usr/share")) {
    if (e.path().filename() != "applications" && !fs::exists(dir + "/data/" + e.path().filename().string())) {
      fs::create_directory_symlink(e.path(), dir + "/data/" + e.path().filename().string());
    }
  }
  setenv("XDG_DATA_DIRS", (dir + "/data").c_str(), 1);
  setenv("XDG_DATA_HOME", (dir + "/home-data").c_str(), 1);
  SetViewerExecutable("/bin/true");
  setvbuf(stdout, nullptr, _IOLBF, 0);
  gtk_init(&argc, &argv);
  settings::SetConfigRoot(dir + "/cfg");
  settings::SetDefaultSettings(settings::gSettings);
  appearance::gThemeChosenByUser = true;
  sci::LoadScintilla();
  sci::LoadLexilla();
  app::CreateMainWindow("bench", 0, 0, 800, 600, true);
  gtk_widget_show(app::gMain.window);
  while (g_main_context_iteration(nullptr, FALSE)) {}

  // 20,000 lines of C++ (at most the HTML limit): lines of about megabytes * 52 bytes.
  const std::string source = dir + "/big-" + std::to_string(megabytes) + ".cpp";
  if (!fs::exists(source)) {
    FILE* f = std::fopen(source.c_str(), "wb");
    const size_t lineBytes = (megabytes << 20) / 20000;
    std::string line;
    while (line.size() + 40 < lineBytes) line += "int value = call(\"text\", 42); // note ";
    line += "\n";
    for (int i = 0; i < 19999; ++i) std::fputs(line.c_str(), f);
    std::fclose(f);
  }
  Load(source);
  std::printf("%zu MB C++ source, %ld lines\n", megabytes, static_cast<long>(sci::Send(app::gMain.editor, sci::SCI_GETLINECOUNT)));

  // The window's exports first: the first one also colours the document as it reads it (the
  // editor had coloured only what it showed).
  double htmlGap = 0, rtfGap = 0;
  const double windowHtml = ExportThroughWindow(exports::kExportHtml, dir + "/window.html", htmlGap);
  const double windowRtf = ExportThroughWindow(exports::kExportRtf, dir + "/window.rtf", rtfGap);
  // The bare generators over a copy of the coloured document.
  const Styled styled = ReadEditor();
  exports::HtmlExportInput html;
  html.document = {styled.text, styled.styles};
  html.styles = styled.table;
  html.pageBackground = appearance::GetThemeColors().editorBackground;
  html.title = exports::ExportTitle(source);
  html.fontName = Utf16ToUtf8(settings::FieldText(settings::gSettings.fontName));
  html.lineCount = 20000;
  auto t = Clock::now();
  exports::ExportHtmlToFile(html, dir + "/bare.html");
  const double bareHtml = Since(t);
  exports::RtfExportInput rtf;
  rtf.document = html.document;
  rtf.styles = styled.table;
  rtf.darkTheme = true;
  rtf.fontName = html.fontName;
  rtf.fontSize = settings::gSettings.fontSize;
  rtf.lineCount = 20000;
  t = Clock::now();
  exports::ExportRtfToFile(rtf, dir + "/bare.rtf");
  const double bareRtf = Since(t);

  std::printf("HTML  bare generator %6.2f s   window answer to question %6.2f s (%.2fx)   longest main-loop gap %5.3f s   %s\n",
              bareHtml, windowHtml, windowHtml / bareHtml, htmlGap,
              fs::file_size(dir + "/bare.html") == fs::file_size(dir + "/window.html") ? "same size" : "SIZES DIFFER");
  std::printf("RTF   bare generator %6.2f s   window answer to question %6.2f s (%.2fx)   longest main-loop gap %5.3f s   %s\n",
              bareRtf, windowRtf, windowRtf / bareRtf, rtfGap,
              fs::file_size(dir + "/bare.rtf") == fs::file_size(dir + "/window.rtf") ? "same size" : "SIZES DIFFER");
  for (const char* f : {"bare.html", "bare.rtf", "window.html", "window.rtf"}) fs::remove(dir + "/" + f);

  // MD Preview of 30,000 Markdown lines.
  const std::string md = dir + "/notes.md";
  {
    FILE* f = std::fopen(md.c_str(), "wb");
    for (int i = 0; i < 29999; ++i) {
      const char* lines[] = {"# Heading %d\n", "Some **bold** and *em* text with `code` number %d & more.\n",
                             "- item %d of a list\n", "1. numbered %d\n", "> quoted %d\n", "| cell %d | cell |\n"};
      std::fprintf(f, lines[i % 6], i);
    }
    std::fclose(f);
  }
  Load(md);
  Completion completion;
  AnswerBoxes(&completion);
  GapMeter meter;
  meter.Start();
  t = Clock::now();
  app::DispatchCommand(kCmdMarkdownPreview);
  while (!completion.done) g_main_context_iteration(nullptr, TRUE);
  std::printf("MD Preview of %ld lines: page on disk and summary after %.3f s   longest main-loop gap %5.3f s\n",
              static_cast<long>(sci::Send(app::gMain.editor, sci::SCI_GETLINECOUNT)),
              std::chrono::duration<double>(completion.at - t).count(), meter.Stop());
  return 0;
}
