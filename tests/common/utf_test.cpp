#include "common/colour.h"
#include "common/utf.h"

#include <gtest/gtest.h>

using namespace nebro;

TEST(Utf, RoundTripsEveryPlane) {
  const std::string text = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z";  // a é € 😀 z
  const std::u16string wide = Utf8ToUtf16(text);
  EXPECT_EQ(wide, u"a\u00E9\u20AC\U0001F600z");
  EXPECT_EQ(Utf16ToUtf8(wide), text);
  // ASCII runs of every length around the sixteen-byte steps, between other characters.
  std::string mixed;
  std::u16string expected;
  for (int run = 0; run < 40; ++run) {
    mixed += std::string(static_cast<size_t>(run), 'a' + run % 26) + text;
    expected += std::u16string(static_cast<size_t>(run), u'a' + run % 26) + wide;
  }
  EXPECT_EQ(Utf8ToUtf16(mixed), expected);
}

TEST(Utf, EachInvalidByteBecomesOneReplacement) {
  // A lone continuation byte, an overlong form, a truncated sequence, an encoded surrogate.
  EXPECT_EQ(Utf8ToUtf16("\x80"), u"\uFFFD");
  EXPECT_EQ(Utf8ToUtf16("\xC0\xAF"), u"\uFFFD\uFFFD");
  EXPECT_EQ(Utf8ToUtf16("x\xE2\x82"), u"x\uFFFD\uFFFD");
  EXPECT_EQ(Utf8ToUtf16("\xED\xA0\x80"), u"\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(Utf8ToUtf16("\xF4\x90\x80\x80"), u"\uFFFD\uFFFD\uFFFD\uFFFD");  // above U+10FFFF
}

TEST(Utf, UnpairedSurrogatesBecomeReplacement) {
  const char16_t lowFirst[] = {0xDC00, u'a', 0};
  const char16_t highLast[] = {u'a', 0xD800, 0};
  EXPECT_EQ(Utf16ToUtf8(lowFirst), "\xEF\xBF\xBD" "a");
  EXPECT_EQ(Utf16ToUtf8(highLast), "a\xEF\xBF\xBD");
}

TEST(Colour, TextIsUpperCaseRedGreenBlue) {
  EXPECT_EQ(ColourText(Rgb(0x1E, 0xab, 0x0F)), "#1EAB0F");
  EXPECT_EQ(ColourText(0x00563412), "#123456");
}
