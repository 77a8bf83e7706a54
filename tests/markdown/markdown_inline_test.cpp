// The inline renderer and the escaping on their own, through both the UTF-16 and UTF-8 entries.
#include <gtest/gtest.h>

#include <string>

#include "common/utf.h"
#include "markdown/markdown_html.h"

using namespace nebro;

namespace {

// Both entries must agree; the UTF-16 one is the reference form of the interface.
std::string Inline(std::u16string_view text) {
  const std::string html = RenderInlineMarkdown(text);
  EXPECT_EQ(RenderInlineMarkdown(std::string_view(Utf16ToUtf8(text))), html);
  return html;
}

}  // namespace

// The stored pages cover the common cases inside blocks; these are the inline entry on its own.
TEST(MarkdownInline, RulesQuirksAndEscapes) {
  EXPECT_EQ(Inline(u""), "");
  EXPECT_EQ(Inline(u"plain text"), "plain text");
  EXPECT_EQ(Inline(u"`**x** _y_`"), "<code>**x** _y_</code>");
  EXPECT_EQ(Inline(u"a___b"), "a___b");
  EXPECT_EQ(Inline(u"_a*"), "<em>a</em>");
  EXPECT_EQ(Inline(u"*****"), "<strong></strong>*");
  EXPECT_EQ(Inline(u"a*"), "a<em></em>");
  // Open markers are closed at the end in the order code, em, strong, nesting or not.
  EXPECT_EQ(Inline(u"**a *b `c"), "<strong>a <em>b <code>c</code></em></strong>");
  EXPECT_EQ(Inline(u"*a **b* c"), "<em>a <strong>b</em> c</strong>");
  EXPECT_EQ(Inline(u"``"), "<code></code>");
  EXPECT_EQ(Inline(u"`<a href=\"x\">'`"), "<code>&lt;a href=&quot;x&quot;&gt;&#39;</code>");
  EXPECT_EQ(Inline(u"**<b>**\t"), "<strong>&lt;b&gt;</strong>    ");
}

TEST(MarkdownEscape, EntitiesTabsAndUtf8) {
  EXPECT_EQ(EscapeHtmlUtf8(u"&<>\"'\t"), "&amp;&lt;&gt;&quot;&#39;    ");
  EXPECT_EQ(EscapeHtmlUtf8(u"*_`#"), "*_`#");  // no inline rules here
  EXPECT_EQ(EscapeHtmlUtf8(u""), "");
  // Each code unit is converted by itself, so both halves of a surrogate pair become U+FFFD.
  EXPECT_EQ(EscapeHtmlUtf8(u"\u00E9\u20AC\U0001F600"),
            "\xC3\xA9\xE2\x82\xAC\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(EscapeHtmlUtf8(std::string_view("\xF0\x9F\x98\x80")), "\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(RenderInlineMarkdown(u"*\U0001F600*"), "<em>\xEF\xBF\xBD\xEF\xBF\xBD</em>");
  // So do unpaired surrogates, wherever they stand.
  const char16_t lone[] = {u'a', 0xD83D, u'b', 0xDE00, 0xDE00, 0xD83D, 0};
  EXPECT_EQ(EscapeHtmlUtf8(lone),
            "a\xEF\xBF\xBD"
            "b\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
  // A pair split by a delimiter is two unpaired halves.
  const char16_t split[] = {0xD83D, u'`', 0xDE00, 0};
  EXPECT_EQ(RenderInlineMarkdown(std::u16string_view(split)),
            "\xEF\xBF\xBD<code>\xEF\xBF\xBD</code>");
  // In UTF-8, each byte that starts no well-formed sequence is one U+FFFD.
  EXPECT_EQ(EscapeHtmlUtf8(std::string_view("\x80<\xC0\xAF")),
            "\xEF\xBF\xBD&lt;\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(EscapeHtmlUtf8(std::string_view("\xE2\x82")), "\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(EscapeHtmlUtf8(std::string_view("\xF0\x9F\x98\x80\xF0\x9F\x98")),
            "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(EscapeHtmlUtf8(std::string_view("\xED\x9F\xBF\xED\xA0\x80")),
            "\xED\x9F\xBF\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(EscapeHtmlUtf8(std::string_view("\xE0\x9F\xBF\xE0\xA0\x80")),
            "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xE0\xA0\x80");
  EXPECT_EQ(EscapeHtmlUtf8(std::string_view("\xF4\x8F\xBF\xBF\xF5\x80")),
            "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(EscapeHtmlUtf8(std::string_view("a\0b", 3)), std::string("a\0b", 3));
}
