// `nebro --export` as a user runs it: every format over several languages, the editor's
// refusals, and no output left behind on failure.
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <sstream>

#include "../support/process.h"
#include "markdown/markdown_html.h"
#include "settings/settings.h"

namespace fs = std::filesystem;
using nebro::test::Child;

namespace {

using Dir = nebro::test::Sandbox;
using nebro::test::OnlyNames;
using nebro::test::PdfPageCount;
using nebro::test::PdfText;
using nebro::test::ReadBytes;

int Export(const Dir& d, const std::string& format, const std::string& in, const std::string& out,
           std::string* output = nullptr) {
  Child nebro({NEBRO_EXECUTABLE, "--export", format, in, out}, d.Env());
  const int code = nebro.Wait(60000);
  if (output) *output = nebro.Output();
  return code;
}

bool Contains(const std::string& haystack, const std::string& needle) {
  return haystack.find(needle) != std::string::npos;
}

}  // namespace

TEST(CommandLineExport, ColouredPagesFromEveryLanguage) {
  Dir d;
  const std::string cpp = d.Write("a.cpp", "int main() { return 0; } // done\n");
  ASSERT_EQ(Export(d, "html", cpp, d.Path() + "/a.html"), 0);
  const std::string html = ReadBytes(d.Path() + "/a.html");
  EXPECT_EQ(html.rfind("<!DOCTYPE html>\n<html>\n<head>\n", 0), 0u);
  EXPECT_TRUE(Contains(html, "<title>a.cpp - Nebro Export</title>"));
  // The default theme is Nebro Dark: keywords in its keyword colour, bold.
  EXPECT_TRUE(Contains(html, ".s5 { color: #569CD6; font-weight: bold; }")) << html.substr(0, 3000);
  EXPECT_TRUE(Contains(html, "<span class=\"s5\">int</span>"));
  EXPECT_TRUE(Contains(html, "<span class=\"s2\">// done</span>"));
  EXPECT_TRUE(html.ends_with("</html>"));

  const std::string py = d.Write("s.py", "def f():\n    return None  # x\n");
  ASSERT_EQ(Export(d, "rtf", py, d.Path() + "/s.rtf"), 0);
  const std::string rtf = ReadBytes(d.Path() + "/s.rtf");
  EXPECT_EQ(rtf.rfind("{\\rtf1\\ansi", 0), 0u);
  EXPECT_TRUE(Contains(rtf, "def"));
  EXPECT_TRUE(Contains(rtf, "\\b "));  // the keyword style is bold
  EXPECT_EQ(rtf.substr(rtf.find_last_not_of("\r\n")), "}\r\n");

  const std::string page = d.Write("p.html", "<p class=\"x\">a &amp; b</p>\n");
  ASSERT_EQ(Export(d, "html", page, d.Path() + "/p.out.html"), 0);
  EXPECT_TRUE(Contains(ReadBytes(d.Path() + "/p.out.html"), "&lt;p"));

  // Plain text: the decoded text, exactly (a UTF-16 file comes out as UTF-8).
  const std::string wide = d.Write("w.txt", std::string("\xFF\xFE" "a\0\xE9\0\r\0\n\0", 10));
  ASSERT_EQ(Export(d, "txt", wide, d.Path() + "/w.out.txt"), 0);
  EXPECT_EQ(ReadBytes(d.Path() + "/w.out.txt"), "a\xC3\xA9\r\n");
  ASSERT_EQ(Export(d, "rtf", wide, d.Path() + "/w.rtf"), 0);
  EXPECT_TRUE(Contains(ReadBytes(d.Path() + "/w.rtf"), "\\u233?"));
}

TEST(CommandLineExport, MarkdownUsesTheRenderer) {
  Dir d;
  nebro::settings::AppSettings s;
  nebro::settings::SetDefaultSettings(s);
  s.theme = 5;
  fs::create_directories(d.Path() + "/cfg/Nebro");
  ASSERT_TRUE(nebro::settings::SaveSettingsTo(d.Path() + "/cfg/Nebro/nebro.cfg", s));
  const std::string text = "# Title\n\nSome *text* and `code`.\n\n- item\n";
  const std::string md = d.Write("n.md", text);
  ASSERT_EQ(Export(d, "html", md, d.Path() + "/n.html"), 0);
  std::string expected;
  ASSERT_TRUE(nebro::markdown::RenderMarkdownPage(text, {md, "Consolas", 11, 5}, expected));
  EXPECT_EQ(ReadBytes(d.Path() + "/n.html"), expected);
  // The stored settings were only read.
  nebro::settings::AppSettings after;
  ASSERT_TRUE(nebro::settings::LoadSettingsFrom(d.Path() + "/cfg/Nebro/nebro.cfg", after));
  EXPECT_TRUE(after.firstRun);
}

TEST(CommandLineExport, FailuresLeaveNothingBehind) {
  Dir d;
  std::string output;
  const std::string pdf = d.Write("x.txt", "%PDF-1.7 not really text");
  EXPECT_EQ(Export(d, "html", pdf, d.Path() + "/x.html", &output), 1);
  EXPECT_TRUE(Contains(output, "nebro: Cannot open binary file.")) << output;
  EXPECT_FALSE(fs::exists(d.Path() + "/x.html"));

  EXPECT_EQ(Export(d, "rtf", d.Path() + "/missing.cpp", d.Path() + "/m.rtf", &output), 1);
  EXPECT_TRUE(Contains(output, "File not found (error 2).")) << output;
  EXPECT_FALSE(fs::exists(d.Path() + "/m.rtf"));

  const std::string ok = d.Write("ok.cpp", "int x;\n");
  EXPECT_EQ(Export(d, "html", ok, d.Path() + "/no/such/dir/out.html", &output), 1);
  EXPECT_TRUE(Contains(output, "Cannot create HTML file.")) << output;

  // An existing output is replaced only by a complete export.
  const std::string existing = d.Write("keep.html", "old");
  EXPECT_EQ(Export(d, "html", pdf, existing), 1);
  EXPECT_EQ(ReadBytes(existing), "old");

  EXPECT_EQ(Export(d, "doc", ok, d.Path() + "/o.doc", &output), 2);
  EXPECT_TRUE(Contains(output, "use html, pdf, rtf or txt"));
  EXPECT_TRUE(OnlyNames(d.Path(), {"cfg", "keep.html", "ok.cpp", "x.txt"}));
}

TEST(CommandLineExport, PdfHoldsThePrintedPagesAsText) {
  Dir d;
  std::string text;
  for (int i = 1; i <= 200; ++i) text += "row " + std::to_string(i) + " of the listing\n";
  const std::string in = d.Write("list.txt", text);
  const std::string out = d.Path() + "/list.pdf";
  std::string output;
  ASSERT_EQ(Export(d, "pdf", in, out, &output), 0) << output;
  EXPECT_GT(PdfPageCount(out), 1);
  const std::string first = PdfText(out, "-f 1 -l 1");
  EXPECT_TRUE(Contains(first, "row 1 of the listing"));
  EXPECT_TRUE(Contains(first, "- 1 -"));
  EXPECT_FALSE(Contains(first, "row 200 of the listing"));

  // An empty document gives no PDF, and an existing file stays as it was.
  const std::string keep = d.Write("keep.pdf", "old");
  EXPECT_EQ(Export(d, "pdf", d.Write("empty.txt", ""), keep, &output), 1);
  EXPECT_TRUE(Contains(output, "Nothing to export")) << output;
  EXPECT_EQ(ReadBytes(keep), "old");
}

// The edges of what is painted on a PDF's first page, in points: left, top, right, bottom.
std::array<int, 4> PaintedEdges(const std::string& pdf) {
  Child ppm({"/usr/bin/pdftoppm", "-r", "72", "-singlefile", "-gray", pdf, pdf}, {});  // one pixel a point
  if (ppm.Wait(30000) != 0) return {};
  const std::string image = ReadBytes(pdf + ".pgm");
  std::istringstream in(image);
  std::string magic;
  int w = 0, h = 0, max = 0;
  in >> magic >> w >> h >> max;
  const std::string px = image.substr(static_cast<size_t>(in.tellg()) + 1);
  if (px.size() < static_cast<size_t>(w) * h) return {};
  auto paper = [&](int x, int y) { return static_cast<unsigned char>(px[static_cast<size_t>(y * w + x)]) > 250; };
  std::array<int, 4> e{0, 0, w - 1, h - 1};
  while (e[0] < w - 1 && paper(e[0], h / 2)) ++e[0];
  while (e[1] < h - 1 && paper(w / 2, e[1])) ++e[1];
  while (e[2] > 0 && paper(e[2], h / 2)) --e[2];
  while (e[3] > 0 && paper(w / 2, e[3])) --e[3];
  return e;
}

TEST(CommandLineExport, MarkdownPdfPrintsTheRenderedPage) {
  Dir d;
  // On the page Page Setup chose: Letter with margins of 30, 40, 10 and 15 mm around the page
  // the theme paints.
  nebro::settings::AppSettings s;
  nebro::settings::SetDefaultSettings(s);
  s.paperWidth = 21590, s.paperHeight = 27940;
  s.pageMarginLeft = 3000, s.pageMarginTop = 4000, s.pageMarginRight = 1000, s.pageMarginBottom = 1500;
  fs::create_directories(d.Path() + "/cfg/Nebro");
  ASSERT_TRUE(nebro::settings::SaveSettingsTo(d.Config(), s));
  const std::string in = d.Write("guide.md",
                                 "# Setup Guide\n\n- install the package\n- run it once\n\n| key | value |\n|---|---|\n"
                                 "| colour | amber |\n\n```\nmake install DESTDIR=/opt\n```\n\nText with **strong** words.\n");
  const std::string out = d.Path() + "/guide.pdf";
  std::string output;
  ASSERT_EQ(Export(d, "pdf", in, out, &output), 0) << output;
  Child info({"/usr/bin/pdfinfo", out}, {});
  ASSERT_EQ(info.Wait(30000), 0);
  EXPECT_TRUE(Contains(info.Output(), "Pages:           1\n")) << info.Output();
  EXPECT_TRUE(Contains(info.Output(), "Page size:       612 x 792 pts (letter)")) << info.Output();
  const std::array<int, 4> edges = PaintedEdges(out), mm = {85, 113, 612 - 28, 792 - 43};
  for (int i = 0; i < 4; ++i) EXPECT_NEAR(edges[i], mm[i], 2) << "edge " << i;
  const std::string text = PdfText(out, "");
  for (const char* seen : {"Setup Guide", "install the package", "run it once", "colour", "amber",
                           "make install DESTDIR=/opt", "Text with strong words."}) {
    EXPECT_TRUE(Contains(text, seen)) << seen << " not in:\n" << text;
  }
  // The rendered page, not the source.
  EXPECT_FALSE(Contains(text, "# Setup")) << text;
  EXPECT_FALSE(Contains(text, "**")) << text;

  // A PDF that cannot be written says why and leaves the folder as it was, an existing file
  // included.
  const std::string keep = d.Write("keep.pdf", "old");
  EXPECT_EQ(Export(d, "pdf", in, d.Path() + "/no/such/dir/out.pdf", &output), 1);
  EXPECT_TRUE(Contains(output, "nebro: Cannot create PDF file.")) << output;
  EXPECT_EQ(Export(d, "pdf", d.Write("bom.md", "\xEF\xBB\xBF"), keep, &output), 1);
  EXPECT_TRUE(Contains(output, "nebro: Nothing to export.")) << output;
  EXPECT_EQ(ReadBytes(keep), "old");
  EXPECT_TRUE(OnlyNames(d.Path(), {"bom.md", "cfg", "guide.md", "guide.pdf", "guide.pdf.pgm", "keep.pdf"}));
}

TEST(CommandLineExport, EmptyDocumentsGiveNoRtfAndNoMarkdownPage) {
  Dir d;
  std::string output;
  // An empty file and a file holding only a byte-order mark are both empty documents.
  EXPECT_EQ(Export(d, "rtf", d.Write("empty.txt", ""), d.Path() + "/empty.rtf", &output), 1);
  EXPECT_TRUE(Contains(output, "nebro: Nothing to export.")) << output;
  EXPECT_EQ(Export(d, "html", d.Write("bom.md", "\xEF\xBB\xBF"), d.Path() + "/bom.html", &output), 1);
  EXPECT_TRUE(Contains(output, "nebro: Nothing to export.")) << output;
  EXPECT_EQ(Export(d, "rtf", d.Path() + "/bom.md", d.Path() + "/bom.rtf", &output), 1);
  EXPECT_FALSE(fs::exists(d.Path() + "/empty.rtf"));
  EXPECT_FALSE(fs::exists(d.Path() + "/bom.html"));
  EXPECT_FALSE(fs::exists(d.Path() + "/bom.rtf"));
  // Plain text and the coloured page of a non-Markdown file still write the empty document.
  EXPECT_EQ(Export(d, "txt", d.Path() + "/empty.txt", d.Path() + "/empty.out.txt"), 0);
  EXPECT_EQ(ReadBytes(d.Path() + "/empty.out.txt"), "");
  EXPECT_EQ(Export(d, "html", d.Path() + "/empty.txt", d.Path() + "/empty.html"), 0);
  EXPECT_TRUE(ReadBytes(d.Path() + "/empty.html").ends_with("</html>"));
}
