// Exporting from the real main window as a user does it, reached by role and name: the Export
// window, the Save dialog, the size questions and viewer offers, the progress window and its
// Cancel, the completion questions. The files written equal what `nebro --export` writes for
// the same document and theme.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "../support/process.h"
#include "app/main_window_gtk.h"
#include "common/command_ids.h"
#include "gtk/progress_gtk.h"
#include "gtk/viewer_launch_gtk.h"
#include "support/accessibility.h"
#include "support/main_window_fixture.h"

namespace fs = std::filesystem;
using namespace nebro;
using namespace nebro::testing;
using nebro::test::Child;
using nebro::test::FolderNames;
using nebro::test::PdfText;

namespace {

// A format as the Export window lists it: its name and the description shown for it.
struct Format {
  const char* name;
  const char* description;
};
const Format kPdf = {"PDF Document (*.pdf)", "Portable Document Format - best for printing and sharing"};
const Format kHtml = {"HTML Document (*.html)", "HyperText Markup Language - view in web browser"};
const Format kRtf = {"Rich Text Format (*.rtf)", "Rich Text Format - opens in Word, LibreOffice"};
const Format kText = {"Plain Text (*.txt)", "Simple UTF-8 text file"};

class ExportWindowTest : public MainWindowTest {
 protected:
  void Configure() override {
    boxesExpected = true;
    answer = kMbResultDontSaveOrNo;
    // No desktop application is known here, so what would open in the browser opens in the
    // viewer: the editor's own executable.
    // The system's shared data stays visible, all but its applications.
    const std::string data = folder + "/data";
    fs::create_directories(data);
    for (const auto& e : fs::directory_iterator("/usr/share")) {
      if (e.path().filename() != "applications") fs::create_directory_symlink(e.path(), fs::path(data) / e.path().filename());
    }
    g_setenv("XDG_DATA_HOME", (folder + "/home-data").c_str(), TRUE);
    g_setenv("XDG_DATA_DIRS", data.c_str(), TRUE);
    SetViewerExecutable(NEBRO_EXECUTABLE);
  }
  void TearDown() override {
    EndViewer();
    MainWindowTest::TearDown();
  }

  std::string DataFolder() const { return folder + "/config/Nebro"; }

  // Chooses `format` in the Export window (PDF, chosen when it opens, is left as it is) and
  // answers the Save dialog with `path`. Prints the Save dialog's filter and initial name.
  static std::vector<std::string> ExportSteps(const Format& format, const std::string& path) {
    std::vector<std::string> steps = {"wait|frame|Nebro - Export", "wait|label@Nebro - Export|" + std::string(kPdf.description)};
    if (&format != &kPdf) steps.push_back("select|combo box@Nebro - Export|Export format:|" + std::string(format.name));
    steps.insert(steps.end(), {
            "wait|label@Nebro - Export|" + std::string(format.description),
            "click|push button@Nebro - Export|Export",
            "wait|file chooser|Export File - Nebro",
            "text|combo box@Export File - Nebro|",
            "text|text@Export File - Nebro|",
            "set|text@Export File - Nebro||" + path,
            "click|push button@Export File - Nebro|Save",
            "gone|file chooser|Export File - Nebro"});
    return steps;
  }

  // Runs the Export command with `steps` answered over the accessibility bus; returns what the
  // steps printed.
  std::string Export(const std::vector<std::string>& steps) {
    return RunSteps(steps, [] { EXPECT_TRUE(app::DispatchCommand(kCmdExport)); });
  }

  // Waits until `n` boxes were shown and every export has ended.
  bool WaitForBoxes(size_t n) {
    return WaitUntil([&] { return asked.size() >= n && ProgressJobsRunning() == 0; });
  }

  // What `nebro --export` writes for `input` with the settings the window has now.
  std::string CommandLine(const std::string& format, const std::string& input) {
    EXPECT_TRUE(settings::SaveSettings(settings::gSettings));
    const std::string out = folder + "/cli." + format;
    // The editor holds its document locked; the command line reads a copy of the same name.
    const std::string copy = folder + "/cli/" + fs::path(input).filename().string();
    fs::create_directories(folder + "/cli");
    fs::copy_file(input, copy, fs::copy_options::overwrite_existing);
    Child nebro({NEBRO_EXECUTABLE, "--export", format, copy, out},
                {"XDG_CONFIG_HOME=" + folder + "/config", "NO_AT_BRIDGE=1"});
    EXPECT_EQ(nebro.Wait(60000), 0) << nebro.Output();
    const std::string bytes = ReadFile(out);
    fs::remove(out);
    return bytes;
  }

  std::vector<std::string> TempFiles(const std::string& extension) const {
    std::vector<std::string> found;
    for (const std::string& name : fs::exists(DataFolder()) ? FolderNames(DataFolder()) : std::vector<std::string>{}) {
      if (name.starts_with("temp_") && name.ends_with(extension)) found.push_back(DataFolder() + "/" + name);
    }
    return found;
  }
};

TEST_F(ExportWindowTest, EveryFormatWritesWhatTheCommandLineWrites) {
  const std::string cpp = WriteFile("a.cpp", "#include <cstdio>\n// \"quoted\" & <tags>\nint main() {\n\tstd::printf(\"%d\\n\", 42);\n  return 0; /* caf\xC3\xA9 */\n}\n");
  ASSERT_TRUE(LoadDocument(cpp));

  // HTML in the dark theme: the Save dialog offers the format's filter and the document's name.
  EXPECT_EQ(Export(ExportSteps(kHtml, folder + "/a.html")), "HTML Files\na.html\n");
  ASSERT_TRUE(WaitForBoxes(1));
  EXPECT_EQ(asked[0].kind, kMbYesNo);
  EXPECT_EQ(asked[0].title, "Nebro - HTML Export");
  EXPECT_TRUE(asked[0].text.starts_with("HTML exported successfully.\n\nExport time:  ")) << asked[0].text;
  EXPECT_TRUE(asked[0].text.ends_with(" sec\n\nOpen in browser?")) << asked[0].text;
  EXPECT_EQ(ReadFile(folder + "/a.html"), CommandLine("html", cpp));

  // RTF: a small document is written at once and the box names the file.
  EXPECT_EQ(Export(ExportSteps(kRtf, folder + "/a.rtf")), "RTF Files\na.rtf\n");
  ASSERT_TRUE(WaitForBoxes(2));
  EXPECT_EQ(asked[1].kind, kMbOk);
  EXPECT_EQ(asked[1].title, "Nebro - Export");
  EXPECT_EQ(asked[1].text, "RTF exported successfully.\n\n" + folder + "/a.rtf");
  EXPECT_EQ(ReadFile(folder + "/a.rtf"), CommandLine("rtf", cpp));

  EXPECT_EQ(Export(ExportSteps(kText, folder + "/a.txt")), "Text Files\na.txt\n");
  ASSERT_TRUE(WaitForBoxes(3));
  EXPECT_EQ(asked[2].text, "File exported successfully as plain text.");
  EXPECT_EQ(ReadFile(folder + "/a.txt"), ReadFile(cpp));

  // PDF is chosen when the window opens; its pages hold the text the command line prints.
  EXPECT_EQ(Export(ExportSteps(kPdf, folder + "/a.pdf")), "PDF Files\na.pdf\n");
  ASSERT_TRUE(WaitForBoxes(4));
  EXPECT_EQ(asked[3].title, "Nebro - PDF Export");
  EXPECT_TRUE(asked[3].text.starts_with("PDF exported successfully.\n\nExport time:  ")) << asked[3].text;
  EXPECT_TRUE(asked[3].text.ends_with("\n\nOpen PDF?"));
  const std::string pages = PdfText(folder + "/a.pdf");
  EXPECT_NE(pages.find("int main() {"), std::string::npos) << pages;
  EXPECT_EQ(pages, PdfText(WriteFile("cli-a.pdf", CommandLine("pdf", cpp))));

  // A Python file in the light theme, replacing the earlier export after the Save dialog's
  // own question.
  app::DispatchCommand(kCmdThemeFirst + 1);
  const std::string py = WriteFile("s.py", "def f(x):\n    \"\"\"doc\"\"\"\n    return x * 2  # twice\n");
  ASSERT_TRUE(LoadDocument(py));
  std::vector<std::string> replace = ExportSteps(kHtml, folder + "/a.html");
  replace.insert(replace.end() - 1, "click|push button|Replace");
  Export(replace);
  ASSERT_TRUE(WaitForBoxes(5));
  EXPECT_EQ(ReadFile(folder + "/a.html"), CommandLine("html", py));
  EXPECT_NE(ReadFile(folder + "/a.html").find("background-color: #FFFFFF"), std::string::npos);
  Export(ExportSteps(kRtf, folder + "/s.rtf"));
  ASSERT_TRUE(WaitForBoxes(6));
  EXPECT_EQ(ReadFile(folder + "/s.rtf"), CommandLine("rtf", py));
  EXPECT_EQ(asked.size(), 6u);
}

TEST_F(ExportWindowTest, MarkdownExportAndPreview) {
  const std::string text =
      "# Notes\n\n| a | b |\n|---|---|\n| 1 | 2 |\n\n- one\n- two\n1. first\n\n```\nint x = 1;\n```\n\n"
      "Some **bold**, *em* and `code` & <more>.\n";
  const std::string md = WriteFile("notes.md", text);
  ASSERT_TRUE(LoadDocument(md));

  Export(ExportSteps(kHtml, folder + "/notes.html"));
  ASSERT_TRUE(WaitForBoxes(1));
  EXPECT_EQ(asked[0].title, "Nebro - HTML Export");
  EXPECT_TRUE(asked[0].text.ends_with("\n\nOpen in browser?"));
  const std::string page = CommandLine("html", md);
  EXPECT_EQ(ReadFile(folder + "/notes.html"), page);
  EXPECT_NE(page.find("<ul>\n  <li>one</li>"), std::string::npos);

  // PDF prints that page: the PDF filter and name in the Save dialog, the completion question,
  // and a page that holds the heading, the lists, the table's cells (lines of text: the page has
  // no tables) and the code line, as the command line's does.
  EXPECT_EQ(Export(ExportSteps(kPdf, folder + "/notes.pdf")), "PDF Files\nnotes.pdf\n");
  ASSERT_TRUE(WaitForBoxes(2));
  EXPECT_EQ(asked[1].kind, kMbYesNo);
  EXPECT_EQ(asked[1].title, "Nebro - PDF Export");
  EXPECT_TRUE(asked[1].text.starts_with("PDF exported successfully.\n\nExport time:  ")) << asked[1].text;
  EXPECT_TRUE(asked[1].text.ends_with("\n\nOpen PDF?"));
  EXPECT_EQ(nebro::test::PdfPageCount(folder + "/notes.pdf"), 1);
  const std::string pages = PdfText(folder + "/notes.pdf");
  for (const char* seen : {"Notes", "one", "two", "1. ", "|1|2|", "int x = 1;", "Some bold, em and code & <more>."}) {
    EXPECT_NE(pages.find(seen), std::string::npos) << seen << " not in:\n" << pages;
  }
  EXPECT_EQ(pages, PdfText(WriteFile("cli-notes.pdf", CommandLine("pdf", md))));

  // Cancel while the page is being printed ends the printing, says nothing and leaves no file,
  // neither the PDF nor the page it printed.
  std::vector<std::string> cancelSteps = ExportSteps(kPdf, folder + "/cancelled.pdf");
  cancelSteps.insert(cancelSteps.end(), {"wait|label@Nebro - PDF Export|Exporting...",
                                         "click|push button@Nebro - PDF Export|Cancel"});
  Export(cancelSteps);
  ASSERT_TRUE(WaitUntil([] { return ProgressJobsRunning() == 0; }));
  Pump();
  EXPECT_EQ(asked.size(), 2u);
  for (const std::string& name : FolderNames(folder)) EXPECT_EQ(name.find("cancelled"), std::string::npos) << name;
  EXPECT_TRUE(TempFiles(".html").empty());

  // The preview: a temporary page in the data folder, the summary, and, with no browser, the
  // document in the viewer.
  ASSERT_TRUE(app::DispatchCommand(kCmdMarkdownPreview));
  ASSERT_TRUE(WaitForBoxes(3));
  EXPECT_EQ(asked[2].kind, kMbOk);
  EXPECT_EQ(asked[2].title, "Nebro - MD Export");
  EXPECT_TRUE(asked[2].text.starts_with("MD exported successfully.\n\nLines: 16\nExport time: ")) << asked[2].text;
  const std::vector<std::string> previews = TempFiles(".html");
  ASSERT_EQ(previews.size(), 1u);
  EXPECT_EQ(ReadFile(previews[0]), page);
  EXPECT_GT(ViewerProcess(), 0);

  // An empty document renders nothing: no summary, no page.
  SetText("");
  ASSERT_TRUE(app::DispatchCommand(kCmdMarkdownPreview));
  ASSERT_TRUE(WaitUntil([] { return ProgressJobsRunning() == 0; }));
  Pump();
  EXPECT_EQ(asked.size(), 3u);
  EXPECT_EQ(TempFiles(".html").size(), 1u);
}

TEST_F(ExportWindowTest, LimitsQuestionsAndCancel) {
  // Over 20,000 lines HTML offers the viewer: No writes nothing, Yes opens the text in it.
  std::string many;
  for (int i = 0; i < 20000; ++i) many += "line " + std::to_string(i) + "\n";
  ASSERT_TRUE(LoadDocument(WriteFile("many.txt", many)));
  const std::string out = folder + "/out.html";
  Export(ExportSteps(kHtml, out));
  ASSERT_TRUE(WaitForBoxes(1));
  EXPECT_EQ(asked[0].text, "This file has ~20001 lines.\n\nHTML export would be slow for this size.\nOpen as plain text in Nebro Viewer instead?");
  EXPECT_FALSE(fs::exists(out));
  EXPECT_EQ(ViewerProcess(), 0);
  answers = {kMbResultSaveOrYes};
  Export(ExportSteps(kHtml, out));
  ASSERT_TRUE(WaitForBoxes(2));
  EXPECT_FALSE(fs::exists(out));
  EXPECT_GT(ViewerProcess(), 0);
  const std::vector<std::string> shown = TempFiles(".txt");
  ASSERT_EQ(shown.size(), 1u);
  EXPECT_EQ(ReadFile(shown[0]), many);

  // Over 1,000,000 bytes HTML asks first: No stops, Yes exports.
  std::string wide;
  for (int i = 0; i < 1000; ++i) wide += std::string(1100, 'a' + i % 26) + "\n";
  ASSERT_TRUE(LoadDocument(WriteFile("wide.txt", wide)));
  Export(ExportSteps(kHtml, out));
  ASSERT_TRUE(WaitForBoxes(3));
  EXPECT_EQ(asked[2].text, "This file has ~1001 lines. Export may take a while.\n\nContinue?");
  EXPECT_FALSE(fs::exists(out));
  answers = {kMbResultSaveOrYes};
  Export(ExportSteps(kHtml, out));
  ASSERT_TRUE(WaitForBoxes(5));
  EXPECT_TRUE(asked[4].text.starts_with("HTML exported successfully."));
  EXPECT_EQ(ReadFile(out), CommandLine("html", folder + "/wide.txt"));
  fs::remove(out);

  // A very large export cancelled from its progress window leaves no file and says nothing.
  std::string large;
  for (int i = 0; i < 10000; ++i) large += std::string(4000, 'a' + i % 26) + "\n";
  ASSERT_TRUE(LoadDocument(WriteFile("large.txt", large)));
  large.clear();
  // Yes to the size question, and the progress window closed as soon as it shows: the worker
  // reads the text a piece at a time through the main loop, and this runs before its first
  // piece.
  static bool closedWhileRunning = false;
  SetMessageBoxHook([this](int kind, const std::string& text, const std::string& title) {
    asked.push_back({kind, text, title});
    g_idle_add_full(G_PRIORITY_HIGH, [](gpointer) -> gboolean {
      GtkWidget* progress = FindWindow("NebroExportProgress");
      closedWhileRunning = progress && ProgressJobsRunning() == 1;
      if (progress) gtk_window_close(GTK_WINDOW(progress));
      return G_SOURCE_REMOVE;
    }, nullptr, nullptr);
    return kMbResultSaveOrYes;
  });
  Export(ExportSteps(kHtml, out));
  ASSERT_EQ(asked.size(), 6u);
  EXPECT_EQ(asked[5].text, "This file is very large (~40 MB, ~10001 lines).\nHTML export may take several minutes.\n\nContinue?");
  EXPECT_TRUE(closedWhileRunning);
  ASSERT_TRUE(WaitUntil([] { return ProgressJobsRunning() == 0; }));
  Pump();
  EXPECT_EQ(asked.size(), 6u);
  EXPECT_FALSE(fs::exists(out));
  for (const std::string& name : FolderNames(folder)) EXPECT_FALSE(name.starts_with("out")) << name;

  // RTF of an empty document: nothing to export, no file.
  SetText("");
  Export(ExportSteps(kRtf, folder + "/e.rtf"));
  ASSERT_TRUE(WaitForBoxes(7));
  EXPECT_EQ(asked[6].text, "Nothing to export.");
  EXPECT_FALSE(fs::exists(folder + "/e.rtf"));
}

}  // namespace
