#include "export/html_export.h"

#include <gtest/gtest.h>

#include <vector>

#include "export_test_support.h"

using namespace nebro;
using namespace nebro::exports;
using namespace nebro::testing;
using namespace nebro::appearance;

namespace {

HtmlExportInput DarkInput(const Doc& doc) {
  const ThemeColors& dark = ThemeColorsFor(0);
  HtmlExportInput in;
  in.document = doc.view();
  in.styles = CppStyles(dark);
  in.pageBackground = dark.editorBackground;
  in.title = "main.cpp";
  in.fontName = "Consolas";
  in.lineCount = CountEditorLines(doc.text);
  return in;
}

std::string Page(const HtmlExportInput& in) {
  ExportBytes out;
  EXPECT_EQ(BuildHtmlPage(in, out), ExportResult::Ok);
  return out.str();
}

}  // namespace

TEST(HtmlExport, CppDocumentMatchesStoredPage) {
  // Keywords, comments, strings with every escaped character, a tab, a CR LF line, two-byte,
  // three-byte and four-byte UTF-8, and a final line break.
  const Doc doc = Runs({
      {"#include", 9}, {" ", 0}, {"<vector>", 6}, {"\n", 0},
      {"int", 5}, {" ", 0}, {"main", 11}, {"()", 10}, {" ", 0}, {"{", 10}, {"\r\n", 0},
      {"\t", 0}, {"if", 5}, {" ", 0}, {"(", 10}, {"a", 11}, {"<", 10}, {"b", 11}, {" ", 0},
      {"&&", 10}, {" ", 0}, {"c", 11}, {">", 10}, {"1", 4}, {")", 10}, {" ", 0},
      {"puts", 11}, {"(", 10}, {"\"caf\xC3\xA9 \xE2\x82\xAC 'x' \xF0\x9F\x98\x80\"", 6},
      {");", 10}, {" ", 0}, {"// \xE6\x97\xA5\xE6\x9C\xAC", 2}, {"\n", 0},
      {"}", 10}, {"\n", 0},
  });
  ExpectStored(Page(DarkInput(doc)), "export/cpp_dark.html");
}

TEST(HtmlExport, EmptyDocumentAndTheNumberColumn) {
  // An empty text is one empty line.
  ExpectStored(Page(DarkInput(Runs({}))), "export/empty.html");

  // 10,000 line breaks: 10,001 numbered lines, through every change in the number of digits.
  const std::string page = Page(DarkInput(Runs({{std::string(10000, '\n'), 0}})));
  std::string expected = "    <div class=\"line-numbers\">\n";
  for (int i = 1; i <= 10001; ++i)
    expected += "        <div class=\"line-number\">" + std::to_string(i) + "</div>\n";
  expected += "    </div>\n    <div class=\"code-content\">\n";
  const size_t from = page.find("    <div class=\"line-numbers\">\n");
  ASSERT_NE(from, std::string::npos);
  EXPECT_EQ(page.substr(from, expected.size()), expected);

  // Style bytes that do not pair with the text bytes are refused.
  const Doc doc = Runs({{"int", 5}, {" x;", 0}});
  HtmlExportInput bad = DarkInput(doc);
  bad.document.styles = bad.document.styles.substr(1);
  ExportBytes out;
  EXPECT_EQ(BuildHtmlPage(bad, out), ExportResult::BadInput);
}

TEST(HtmlExport, StyleRulesSkipUnsetValues) {
  const Colour bg = Rgb(0x10, 0x20, 0x30);
  HtmlExportInput in;
  const Doc doc = Runs({{"k", 1}});
  in.document = doc.view();
  in.pageBackground = bg;
  in.title = "t";
  in.fontName = "Mono";
  in.styles[1] = {0, 0, false, false};                    // nothing set: no rule
  in.styles[2] = {Rgb(0xAB, 0xCD, 0xEF), bg, true, true};  // background equal to the page's
  in.styles[3] = {0, Rgb(1, 2, 3), false, false};         // black text counts as unset
  in.styles[4] = {0, bg, false, false};                   // a rule with nothing in it
  in.styles[127] = {Rgb(0, 0, 1), 0, false, true};
  const std::string page = Page(in);
  const size_t from = page.find("        .s");
  const size_t to = page.find("    </style>");
  ASSERT_NE(from, std::string::npos);
  EXPECT_EQ(page.substr(from, to - from),
            "        .s2 { color: #ABCDEF; font-weight: bold; font-style: italic; }\n"
            "        .s3 { background-color: #010203; }\n"
            "        .s4 { }\n"
            "        .s127 { color: #000001; font-style: italic; }\n");
}

TEST(HtmlExport, ProgressFollowsTheStepRuleAndCancelStopsAtALine) {
  auto progressOf = [](int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += "x;\n";
    text.pop_back();  // `count` lines, no final empty one
    const Doc doc = Runs({{text, 0}});
    std::vector<uint32_t> posted;
    ExportMonitor monitor;
    monitor.onProgress = [&posted](uint32_t line) { posted.push_back(line); };
    ExportBytes out;
    EXPECT_EQ(BuildHtmlPage(DarkInput(doc), out, monitor), ExportResult::Ok);
    return posted;
  };
  std::vector<uint32_t> every50;
  for (uint32_t line = 1; line <= 1000; line += 50) every50.push_back(line);
  EXPECT_EQ(progressOf(1000), every50);
  const std::vector<uint32_t> step10 = progressOf(1001);
  ASSERT_EQ(step10.size(), 101u);
  EXPECT_EQ(step10[1], 11u);
  EXPECT_EQ(step10.back(), 1001u);

  // The cancel hook is asked once per line before the line is written; answering true on the
  // third question stops the page with nothing kept.
  const Doc doc = Runs({{"1\n2\n3\n4\n5\n6\n7\n8\n9\n10", 0}});
  int asked = 0;
  ExportMonitor monitor;
  monitor.isCancelled = [&asked] { return ++asked == 3; };
  ExportBytes out;
  ASSERT_TRUE(out.Append("stale"));
  EXPECT_EQ(BuildHtmlPage(DarkInput(doc), out, monitor), ExportResult::Cancelled);
  EXPECT_EQ(asked, 3);
  EXPECT_TRUE(out.empty());
  asked = 0;
  monitor.isCancelled = [&asked] { return ++asked > 1000; };
  EXPECT_EQ(BuildHtmlPage(DarkInput(doc), out, monitor), ExportResult::Ok);
  EXPECT_EQ(asked, 10);
}
