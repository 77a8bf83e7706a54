// Whole pages against stored expectations: tests/data/markdown/<case>.md renders to <case>.html
// byte for byte; and the page's font, title, file and progress.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "common/utf.h"
#include "markdown/markdown_html.h"
#include "support/disk_fixtures.h"

using namespace nebro;
using namespace nebro::markdown;
using namespace nebro::appearance;
namespace fs = std::filesystem;

namespace {

using test::ReadBytes;

struct StoredCase {
  const char* name;
  MarkdownPageOptions options;
};

// Most cases use a monospace editor font in the dark theme; the last few vary what the head shows.
const StoredCase kCases[] = {
    {"line_endings", {"/home/ann/line_endings.md", "Consolas", 11, 0}},
    {"blocks", {"/home/ann/blocks.md", "Consolas", 11, 0}},
    {"headings", {"/home/ann/headings.md", "Consolas", 11, 0}},
    {"lists", {"/home/ann/lists.md", "Consolas", 11, 0}},
    {"inline", {"/home/ann/inline.md", "Consolas", 11, 0}},
    {"escaping", {"/home/ann/escaping.md", "Consolas", 11, 0}},
    {"sepia_georgia", {"/srv/sepia_georgia.md", "Georgia", 13, 5}},
    {"light_size_zero", {"light_size_zero.md", "DejaVu Serif", 0, 1}},
    {"untitled_clamped", {"", "", 12, 9}},
    {"title_unescaped", {"/tmp/<y>.md", "cOuRiEr NeW", 14, 4}},
};

}  // namespace

TEST(MarkdownPage, StoredCasesRenderByteForByte) {
  for (const StoredCase& c : kCases) {
    SCOPED_TRACE(c.name);
    const std::string markdown = ReadBytes(std::string(NEBRO_TEST_DATA) + "/markdown/" + c.name + ".md");
    ASSERT_FALSE(markdown.empty());
    std::string page;
    ASSERT_TRUE(RenderMarkdownPage(markdown, c.options, page));
    test::ExpectStored(page, std::string("markdown/") + c.name + ".html");
    // The UTF-16 entry gives the same page.
    std::string fromUtf16;
    ASSERT_TRUE(RenderMarkdownPage(Utf8ToUtf16(markdown), c.options, fromUtf16));
    EXPECT_EQ(fromUtf16, page);
  }
}

TEST(MarkdownPage, FontTitleAndEmptyText) {
  // The usual monospace faces, in any case, give Segoe UI at 10 whatever the size; near misses
  // are proportional fonts as far as the page knows.
  for (const char* face : {"consolas", "LUCIDA CONSOLE", "Fira Code", ""}) {
    const MarkdownFont f = ChooseMarkdownFont(face, 20);
    EXPECT_EQ(f.name, "Segoe UI") << face;
    EXPECT_EQ(f.size, 10) << face;
  }
  EXPECT_EQ(ChooseMarkdownFont("Consolas ", 9).name, "Consolas ");
  EXPECT_EQ(ChooseMarkdownFont("Fira Code Retina", 9).size, 9);
  EXPECT_EQ(ChooseMarkdownFont("Georgia", -3).size, 10);
  // A name that is not UTF-8 is cleaned like the text.
  EXPECT_EQ(ChooseMarkdownFont("Gar\xE9ond", 11).name, "Gar\xEF\xBF\xBDond");

  // (An empty path, a bare name and a size of 0 are in the stored cases.)
  EXPECT_EQ(MarkdownPageTitle("/tmp/dir/"), "");
  // The title is converted as a whole: unlike literal text in the page, it keeps an emoji.
  EXPECT_EQ(MarkdownPageTitle("/tmp/\xF0\x9F\x98\x80.md"), "\xF0\x9F\x98\x80.md");

  // An empty text gives no page; otherwise the page is appended after what the string holds.
  std::string out = "kept|";
  EXPECT_FALSE(RenderMarkdownPage(std::string_view(), {}, out));
  EXPECT_FALSE(RenderMarkdownPage(std::u16string_view(), {}, out));
  EXPECT_EQ(out, "kept|");
  ASSERT_TRUE(RenderMarkdownPage(std::string_view("x"), {}, out));
  std::string alone;
  ASSERT_TRUE(RenderMarkdownPage(std::string_view("x"), {}, alone));
  EXPECT_EQ(out, "kept|" + alone);
}

TEST(MarkdownFile, WritesThePageOrNothing) {
  const test::TempFolder dir;
  const std::string path = dir / "out.html";
  const MarkdownPageOptions options = {"/x/doc.md", "Georgia", 12, 1};
  std::string page;
  ASSERT_TRUE(RenderMarkdownPage(std::string_view("# Hi\n- a"), options, page));

  // An existing longer file is truncated; the bytes are the page, without a BOM.
  test::WriteBytes(path, std::string(100000, 'z'));
  ASSERT_TRUE(RenderMarkdownToHtmlFile(path, std::string_view("# Hi\n- a"), options));
  EXPECT_EQ(ReadBytes(path), page);
  EXPECT_EQ(page.compare(0, 15, "<!DOCTYPE html>"), 0);
  ASSERT_TRUE(RenderMarkdownToHtmlFile(path, std::u16string_view(u"# Hi\n- a"), options));
  EXPECT_EQ(ReadBytes(path), page);

  // Empty text: no file; a file that cannot be opened or written: false.
  const std::string none = dir / "none.html";
  EXPECT_FALSE(RenderMarkdownToHtmlFile(none, std::string_view(), options));
  EXPECT_FALSE(RenderMarkdownToHtmlFile(none, std::u16string_view(), options));
  EXPECT_FALSE(fs::exists(none));
  for (const std::string& bad : {dir / "missing/x.html", dir.Path(), std::string("/dev/full")}) {
    EXPECT_FALSE(RenderMarkdownToHtmlFile(bad, std::string_view("text"), options)) << bad;
  }
}

TEST(MarkdownPage, ProgressFollowsTheExportStepAndCanStop) {
  auto lines = [](int n) {
    std::string text;
    for (int i = 0; i < n; ++i) text += "line\n";
    return text;
  };
  using Calls = std::vector<std::pair<uint32_t, uint32_t>>;
  Calls calls;
  auto record = [&](uint32_t line, uint32_t total) {
    calls.emplace_back(line, total);
    return true;
  };
  std::string out;
  // Up to 1,000 lines: every 50 lines, 1-based, from line 1; above, every line count / 100.
  ASSERT_TRUE(RenderMarkdownPage(lines(120), {}, out, record));
  EXPECT_EQ(calls, (Calls{{1, 120}, {51, 120}, {101, 120}}));
  calls.clear();
  ASSERT_TRUE(RenderMarkdownPage(lines(1001), {}, out, record));
  ASSERT_EQ(calls.size(), 101u);
  EXPECT_EQ(calls[1], (std::pair<uint32_t, uint32_t>{11, 1001}));
  EXPECT_EQ(calls.back(), (std::pair<uint32_t, uint32_t>{1001, 1001}));
  // Line count by the renderer's own split: CR LF is one break, a lone CR another, and a final
  // break adds no line.
  calls.clear();
  ASSERT_TRUE(RenderMarkdownPage(std::string_view("a\r\nb\rc\n"), {}, out, record));
  EXPECT_EQ(calls, (Calls{{1, 3}}));

  // Stopping leaves the string as it was and writes no file.
  out = "before";
  int seen = 0;
  auto stopSecond = [&](uint32_t, uint32_t) { return ++seen < 2; };
  EXPECT_FALSE(RenderMarkdownPage(lines(5000), {}, out, stopSecond));
  EXPECT_EQ(out, "before");
  const fs::path path = fs::temp_directory_path() / "nebro_md_cancelled.html";
  fs::remove(path);
  seen = 0;
  EXPECT_FALSE(
      RenderMarkdownToHtmlFile(path.string(), std::string_view(lines(5000)), {}, stopSecond));
  EXPECT_FALSE(fs::exists(path));
}
