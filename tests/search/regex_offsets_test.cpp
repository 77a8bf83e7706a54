#include "search/regex_offsets.h"

#include <gtest/gtest.h>

#include "common/utf.h"

namespace nebro::search {
namespace {

TEST(RegexOffsets, BothDirectionsFollowTheConversionRule) {
  // ASCII, 2-, 3- and 4-byte characters, and invalid bytes (each one U+FFFD).
  const std::string pieces[] = {"a",    "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80",
                                "\xFF", "\xC3",     "\xE2\x82",     "\xED\xA0\x80",
                                "\n",   "\xC0\xAF"};
  std::string text;
  for (int round = 0; round < 300; ++round) text += pieces[(round * 7 + round / 3) % 10];
  const std::u16string converted = Utf8ToUtf16(text);

  // A byte offset starts a character when converting the two sides apart changes nothing.
  RegexOffsetCache cache;
  int starts = 0;
  for (size_t byte = 0; byte < text.size(); ++byte) {
    const std::string_view head = std::string_view(text).substr(0, byte);
    const std::string_view rest = std::string_view(text).substr(byte);
    if (Utf8ToUtf16(head) + Utf8ToUtf16(rest) != converted) continue;
    const uint64_t unit = Utf8ToUtf16(head).size();
    EXPECT_EQ(Utf8OffsetToUtf16Index(text, byte), unit) << "byte " << byte;
    EXPECT_EQ(Utf16IndexToUtf8Offset(text, cache, unit), byte) << "unit " << unit;
    ++starts;
  }
  EXPECT_GT(starts, 300);

  // A long text, past many checkpoints: round trips land on the same character.
  while (text.size() < 200'000) text += text;
  const std::u16string longText = Utf8ToUtf16(text);
  cache.Clear();
  EXPECT_EQ(Utf8OffsetToUtf16Index(text, text.size()), longText.size());
  EXPECT_EQ(Utf8OffsetToUtf16Index(text, text.size() + 10), longText.size());
  EXPECT_EQ(Utf16IndexToUtf8Offset(text, cache, longText.size()), text.size());
  EXPECT_EQ(Utf16IndexToUtf8Offset(text, cache, longText.size() + 3), text.size());
  for (uint64_t k = 1; k < 40; ++k) {
    const uint64_t byte = text.size() * k / 40;
    const uint64_t unit = Utf8OffsetToUtf16Index(text, byte);
    const uint64_t back = Utf16IndexToUtf8Offset(text, cache, unit);
    EXPECT_GE(back, byte);  // a byte inside a character maps to the next character
    EXPECT_LE(back, byte + 3);
    EXPECT_EQ(Utf8OffsetToUtf16Index(text, back), unit) << byte;
  }
  // The second unit of a pair belongs to the character that starts two units earlier.
  const std::string emoji = "x\xF0\x9F\x98\x80y";
  RegexOffsetCache small;
  EXPECT_EQ(Utf16IndexToUtf8Offset(emoji, small, 2), 1u);
  EXPECT_EQ(Utf16IndexToUtf8Offset(emoji, small, 3), 5u);
  EXPECT_EQ(Utf8OffsetToUtf16Index(emoji, 3), 3u);  // inside the emoji: counted as passed
  small.Clear();
  EXPECT_EQ(Utf16IndexToUtf8Offset("", small, 0), 0u);
}

}  // namespace
}  // namespace nebro::search
