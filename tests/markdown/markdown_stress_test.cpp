// Pathological inputs (huge lines, floods of markers and line breaks) and a differential check of
// the byte-level renderer against the plain UTF-16 model on random documents.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "common/utf.h"
#include "markdown/markdown_html.h"
#include "markdown_model.h"

using namespace nebro;
using namespace nebro::markdown;

namespace {

constexpr std::string_view kBodyStart = "<div class=\"content\">\n";
constexpr std::string_view kBodyEnd = "</div>\n</body>\n</html>\n";

// The page between the head and the closing tags (checked to be there).
std::string Body(const std::string& page) {
  const size_t start = page.find(kBodyStart);
  EXPECT_NE(start, std::string::npos);
  EXPECT_GE(page.size(), kBodyEnd.size());
  EXPECT_EQ(page.compare(page.size() - kBodyEnd.size(), kBodyEnd.size(), kBodyEnd), 0);
  const size_t from = start + kBodyStart.size();
  return page.substr(from, page.size() - kBodyEnd.size() - from);
}

std::string RenderBody(std::string_view markdown) {
  std::string page;
  EXPECT_TRUE(RenderMarkdownPage(markdown, {}, page));
  return Body(page);
}

// Large pages are compared without gtest's diff (quadratic on megabytes): on a mismatch it tells
// the first differing offset and a little context.
testing::AssertionResult Same(const std::string& actual, const std::string& expected) {
  if (actual == expected) return testing::AssertionSuccess();
  size_t at = 0;
  while (at < actual.size() && at < expected.size() && actual[at] == expected[at]) ++at;
  const size_t from = at < 40 ? 0 : at - 40;
  return testing::AssertionFailure()
         << "sizes " << actual.size() << " and " << expected.size() << ", first difference at "
         << at << "\n  actual:   ..." << actual.substr(from, 80) << "\n  expected: ..."
         << expected.substr(from, 80);
}

std::string Repeat(std::string_view piece, size_t times) {
  std::string s;
  s.reserve(piece.size() * times);
  for (size_t i = 0; i < times; ++i) s += piece;
  return s;
}

}  // namespace

TEST(MarkdownStress, HugeLinesOfMarkers) {
  const size_t n = 4'000'000;
  // Pairs of asterisks toggle strong all the way along.
  EXPECT_TRUE(Same(RenderBody(std::string(2 * n, '*')),
                   "<p>" + Repeat("<strong></strong>", n / 2) + "</p>\n"));
  // A run of underscores is all literal.
  EXPECT_TRUE(Same(RenderBody(std::string(n, '_')), "<p>" + std::string(n, '_') + "</p>\n"));
  // Single markers toggle emphasis each time.
  EXPECT_TRUE(Same(RenderBody(Repeat("_a", n)), "<p>" + Repeat("<em>a</em>a", n / 2) + "</p>\n"));
  EXPECT_TRUE(
      Same(RenderBody(std::string(n, '`')), "<p>" + Repeat("<code></code>", n / 2) + "</p>\n"));
  // An odd number leaves code open; it is closed at the end.
  EXPECT_TRUE(
      Same(RenderBody("- " + std::string(n + 1, '`') + "x"),
           "<ul>\n  <li>" + Repeat("<code></code>", n / 2) + "<code>x</code></li>\n</ul>\n"));
  // The largest growth per byte: every byte becomes an entity.
  EXPECT_TRUE(Same(RenderBody(std::string(n, '"')), "<p>" + Repeat("&quot;", n) + "</p>\n"));
  // Ill-formed bytes, each one a replacement character.
  EXPECT_TRUE(
      Same(RenderBody(std::string(n, '\xFF')), "<p>" + Repeat("\xEF\xBF\xBD", n) + "</p>\n"));
  // One long line of text between markers crossing the renderer's internal chunks.
  const std::string words = Repeat("word \xC3\xA9 ", 300'000);
  EXPECT_TRUE(Same(RenderBody("# **" + words + "**"), "<h1><strong>" + words + "</strong></h1>\n"));
}

TEST(MarkdownStress, FloodsOfLinesAndBlocks) {
  const size_t n = 500'000;
  EXPECT_TRUE(Same(RenderBody(std::string(n, '\n')), Repeat("<p></p>\n", n)));
  EXPECT_TRUE(Same(RenderBody(std::string(n, '\r')), Repeat("<p></p>\n", n)));
  EXPECT_TRUE(Same(RenderBody(Repeat("\r\n", n)), Repeat("<p></p>\n", n)));
  // LF, then CR LF pairs, then a last CR: the pairs are one break each.
  EXPECT_TRUE(Same(RenderBody(Repeat("\n\r", n)), Repeat("<p></p>\n", n + 1)));
  // CR, CR LF, LF: three breaks.
  EXPECT_TRUE(Same(RenderBody(Repeat("\r\r\n\n", n)), Repeat("<p></p>\n", 3 * n)));
  // Alternating line ends: the next CR and the next LF are far apart every other line.
  EXPECT_TRUE(Same(RenderBody(Repeat("a\rb\n", n)), Repeat("<p>a</p>\n<p>b</p>\n", n)));
  // Lists that switch kind on every line.
  EXPECT_TRUE(Same(RenderBody(Repeat("- a\n1. b\n", n)),
                   Repeat("<ul>\n  <li>a</li>\n</ul>\n<ol>\n  <li>b</li>\n</ol>\n", n)));
  // One list of many items.
  EXPECT_TRUE(
      Same(RenderBody(Repeat("* i\n", n)), "<ul>\n" + Repeat("  <li>i</li>\n", n) + "</ul>\n"));
  EXPECT_TRUE(Same(RenderBody(Repeat("---\n", n)), Repeat("<hr>\n", n)));
  // Deep indentation is trimmed away.
  EXPECT_TRUE(
      Same(RenderBody(std::string(n, ' ') + "# deep" + std::string(n, '\t')), "<h1>deep</h1>\n"));
}

TEST(MarkdownStress, ByteRendererMatchesTheUtf16Model) {
  // Markers, block starts, line ends, entities, and UTF-8 both well-formed and not (a lone
  // continuation byte, overlong, surrogate, cut-short and beyond-U+10FFFF sequences).
  static const std::string_view kPieces[] = {
      "*", "**", "***", "_", "__", "`", "#", "# ", "## ", "### ", "#### ", "- ", "* ", "> ",
      "1. ", "12. ", "123. ", ".", ". ", "1.", "9", " ", "\t", "\r", "\n", "\r\n", "\n\r", "a",
      "bc", "&", "<", ">", "\"", "'", "---", "___", "\xC3\xA9", "\xF0\x9F\x98\x80", "\xFF",
      "\x80", "\xE2\x82", "\xED\xA0\x80", "\xED\x9F\xBF", "\xC0\xAF", "\xE0\x9F\xBF",
      "\xE0\xA0\x80", "\xF4\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80",
      std::string_view("\0", 1),
  };
  std::mt19937 random(20240611);
  std::uniform_int_distribution<size_t> pieceOf(0, std::size(kPieces) - 1);
  std::uniform_int_distribution<int> lengthOf(1, 40);
  auto compare = [](std::string_view utf8, const std::u16string& wide, const std::string& what) {
    const std::string expected = markdown_model::Body(wide);
    ASSERT_EQ(RenderBody(utf8), expected) << what;
    std::string page;
    ASSERT_TRUE(RenderMarkdownPage(wide, {}, page));
    ASSERT_EQ(Body(page), expected) << what;
    // The inline rules and the escaping on their own, through both entries.
    ASSERT_EQ(RenderInlineMarkdown(utf8), markdown_model::Inline(wide)) << what;
    ASSERT_EQ(RenderInlineMarkdown(std::u16string_view(wide)), markdown_model::Inline(wide)) << what;
    ASSERT_EQ(EscapeHtmlUtf8(utf8), markdown_model::Escape(wide)) << what;
    ASSERT_EQ(EscapeHtmlUtf8(std::u16string_view(wide)), markdown_model::Escape(wide)) << what;
  };
  for (int round = 0; round < 4000; ++round) {
    std::string doc;
    for (int k = lengthOf(random); k > 0; --k) doc += kPieces[pieceOf(random)];
    compare(doc, Utf8ToUtf16(doc), "document: " + doc);
    if (HasFatalFailure()) return;
  }
  // UTF-16 text with unpaired surrogates, which UTF-8 input cannot carry.
  static const char16_t kUnits[] = {u'*',   u'_',   u'`',   u'\n',  u' ',   u'a',   u'-',
                                    u'1',   u'.',   0xD83D, 0xDE00, 0xDBFF, 0xDC00, u'\r',
                                    u'>',   u'#',   u'&',   u'\t',  0x00E9, 0x07FF, 0x0800,
                                    0x20AC, 0xD7FF, 0xE000, 0xFFFD, 0xFFFF, 0x0080, 0x007F};
  std::uniform_int_distribution<size_t> unitOf(0, std::size(kUnits) - 1);
  for (int round = 0; round < 4000; ++round) {
    std::u16string doc;
    for (int k = lengthOf(random); k > 0; --k) doc += kUnits[unitOf(random)];
    std::string page;
    ASSERT_TRUE(RenderMarkdownPage(doc, {}, page));
    ASSERT_EQ(Body(page), markdown_model::Body(doc)) << "round " << round;
    ASSERT_EQ(RenderInlineMarkdown(std::u16string_view(doc)), markdown_model::Inline(doc)) << "round " << round;
    ASSERT_EQ(EscapeHtmlUtf8(std::u16string_view(doc)), markdown_model::Escape(doc)) << "round " << round;
  }
  // A few anchors for the model itself: the quirks of the marker rules.
  EXPECT_EQ(markdown_model::Inline(u"a___b"), "a___b");
  EXPECT_EQ(markdown_model::Inline(u"*****"), "<strong></strong>*");
  EXPECT_EQ(markdown_model::Inline(u"*a **b* c"), "<em>a <strong>b</em> c</strong>");
  EXPECT_EQ(markdown_model::Inline(u"**a *b `c"), "<strong>a <em>b <code>c</code></em></strong>");
  EXPECT_EQ(markdown_model::Escape(u"&<>\"'\t\U0001F600"), "&amp;&lt;&gt;&quot;&#39;    \xEF\xBF\xBD\xEF\xBF\xBD");
}
