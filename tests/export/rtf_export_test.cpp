#include "export/rtf_export.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <vector>

#include "export_test_support.h"

using namespace nebro;
using namespace nebro::exports;
using namespace nebro::testing;
using namespace nebro::appearance;

namespace {

RtfExportInput Input(const Doc& doc, ThemeId theme) {
  const ThemeColors& colours = ThemeColorsFor(theme);
  RtfExportInput in;
  in.document = doc.view();
  in.styles = CppStyles(colours);
  in.darkTheme = colours.isDark;
  in.fontName = "Consolas";
  in.fontSize = 11;
  in.lineCount = CountEditorLines(doc.text);
  return in;
}

std::string Rtf(const RtfExportInput& in) {
  ExportBytes out;
  EXPECT_EQ(BuildRtf(in, out), ExportResult::Ok);
  return out.str();
}

// The document body: what follows the header's font size up to the closing "\r\n}\r\n".
std::string Body(const std::string& rtf) {
  const std::string fs = "\\fs22 ";
  const size_t from = rtf.find(fs);
  if (from == std::string::npos || rtf.size() < from + fs.size() + 5) return "<malformed>";
  return rtf.substr(from + fs.size(), rtf.size() - 5 - from - fs.size());
}

// Every style black, nothing bold or italic.
RtfExportInput Plain(const Doc& doc) {
  RtfExportInput in;
  in.document = doc.view();
  in.fontName = "Mono";
  in.fontSize = 11;
  return in;
}

}  // namespace

TEST(RtfExport, CppDocumentMatchesStoredFiles) {
  const Doc doc = Runs({
      {"#include", 9}, {" ", 0}, {"<map>", 6}, {"\r\n", 0},
      {"int", 5}, {" ", 0}, {"f", 11}, {"()", 10}, {" ", 0}, {"{", 10}, {"\r\n", 0},
      {"\t", 0}, {"return", 5}, {" ", 0}, {"\"a\\b {x} caf\xC3\xA9 \xE4\xB8\xAD \xEA\xB0\x80 \xF0\x9F\x98\x80\"", 6},
      {";", 10}, {" ", 0}, {"// done", 2}, {"\n", 0}, {"}", 10}, {"\n", 0},
  });
  // Dark: light colours are darkened for paper. Light: the theme's colours as they are.
  ExpectStored(Rtf(Input(doc, 0)), "export/cpp_dark.rtf");
  ExpectStored(Rtf(Input(doc, 1)), "export/cpp_light.rtf");
  ExpectStored(Rtf(Input(Runs({}), 0)), "export/empty.rtf");
}

TEST(RtfExport, PaperColoursAndTheColourTable) {
  // Brightness above 180 on a dark theme: each channel times 35 / 100.
  EXPECT_EQ(RtfPaperColour(Rgb(255, 255, 255), true), Rgb(0x59, 0x59, 0x59));
  EXPECT_EQ(RtfPaperColour(Rgb(181, 181, 181), true), Rgb(63, 63, 63));
  EXPECT_EQ(RtfPaperColour(Rgb(180, 180, 180), true), Rgb(180, 180, 180));
  EXPECT_EQ(RtfPaperColour(Rgb(0x9C, 0xDC, 0xFE), true), Rgb(54, 77, 88));  // brightness 204
  EXPECT_EQ(RtfPaperColour(Rgb(0x56, 0x9C, 0xD6), true), Rgb(0x56, 0x9C, 0xD6));  // 141
  EXPECT_EQ(RtfPaperColour(Rgb(255, 255, 255), false), Rgb(255, 255, 255));

  // Styles 0..127 in order: 0 white (darkened), 1 red, 2 the same red, 3 white again, all
  // others black. Indices count from 1.
  const Doc doc = Runs({{"a", 0}, {"b", 1}, {"c", 2}, {"d", 3}, {"e", 4}});
  RtfExportInput in = Plain(doc);
  in.darkTheme = true;
  in.styles[0].fore = Rgb(255, 255, 255);
  in.styles[1].fore = Rgb(200, 0, 0);
  in.styles[2].fore = Rgb(200, 0, 0);
  in.styles[3].fore = Rgb(255, 255, 255);
  in.styles[2].bold = true;
  in.styles[3].italic = true;
  in.styles[4].bold = in.styles[4].italic = true;
  const std::string rtf = Rtf(in);
  EXPECT_NE(rtf.find("{\\colortbl ;\\red89\\green89\\blue89;\\red200\\green0\\blue0;"
                     "\\red0\\green0\\blue0;}\r\n"),
            std::string::npos);
  EXPECT_EQ(Body(rtf),
            "{\\cf1 a}{\\cf2 b}{\\cf2 \\b c\\b0 }{\\cf1 \\i d\\i0 }{\\cf3 \\b \\i e\\b0 \\i0 }");
}

TEST(RtfExport, FontNameAndSize) {
  const Doc doc = Runs({{"x", 0}});
  RtfExportInput in = Plain(doc);
  in.fontSize = 13;
  in.fontName = std::string(126, 'a') + "\xC3\xA9" + "tail";  // é straddles byte 127
  const std::string rtf = Rtf(in);
  EXPECT_NE(rtf.find("{\\fonttbl{\\f0\\fmodern\\fcharset0 " + std::string(126, 'a') + ";}}\r\n"),
            std::string::npos);
  EXPECT_NE(rtf.find("\\pard\\sl0\\slmult0\\f0\\fs26 {\\cf1 x}"), std::string::npos);
  // A face name cannot break the document's groups (found by the export fuzz target).
  in.fontName = "A{b}\\c;d\n";
  EXPECT_NE(Rtf(in).find("\\fcharset0 A\\{b\\}\\\\cd;}}"), std::string::npos) << Rtf(in).substr(0, 200);
}

TEST(RtfExport, ProgressCancelAndFile) {
  std::string text;
  for (int i = 0; i < 2000; ++i) text += "a;\r\n";
  const Doc doc = Runs({{text, 0}});
  RtfExportInput in = Plain(doc);
  in.lineCount = CountEditorLines(doc.text);  // 2001: step 20
  std::vector<uint32_t> posted;
  ExportMonitor monitor;
  monitor.onProgress = [&posted](uint32_t line) { posted.push_back(line); };
  ExportBytes out;
  ASSERT_EQ(BuildRtf(in, out, monitor), ExportResult::Ok);
  ASSERT_EQ(posted.size(), 101u);
  EXPECT_EQ(posted[1], 21u);
  EXPECT_EQ(posted.back(), 2001u);

  int asked = 0;
  monitor.isCancelled = [&asked] { return ++asked == 5; };
  EXPECT_EQ(BuildRtf(in, out, monitor), ExportResult::Cancelled);
  EXPECT_EQ(asked, 5);
  EXPECT_TRUE(out.empty());

  const test::TempFolder folder;
  const std::string path = folder / "doc.rtf";
  asked = 0;
  EXPECT_EQ(ExportRtfToFile(in, path, monitor), ExportResult::Cancelled);
  EXPECT_NE(access(path.c_str(), F_OK), 0);  // (a finished file: random_documents_test)
}

TEST(RtfExport, MessageTexts) {
  // The worker's text always counts seconds, also past a minute (the plain one: export_window_guitest).
  EXPECT_EQ(RtfDoneTimedText(65432, "/x.rtf"),
            "RTF exported successfully.\n\nExport time: 65.432 sec\n\n/x.rtf");
}
