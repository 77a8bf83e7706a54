// Replacing for the Find & Replace dialog. The random comparison with the dialog's wide-character
// scan covers counting, folding and whole words over well-formed text; these pin positions,
// preserve case, malformed bytes and the single Replace.
#include "search/find_replace_replace.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nebro::search {
namespace {

using Matches = std::vector<FindMatch>;

ReplaceAllResult ReplaceAll(std::string_view range, std::string_view find, std::string_view replace,
                            bool matchCase, bool wholeWord, bool preserveCase) {
  return ReplaceAllLiteral(range, find, replace, ReplaceAllOptions{matchCase, wholeWord, preserveCase});
}

// Positions in the new text after multi-byte characters and folded matches are compared with the
// plain scan over random texts in find_replace_differential_test.
TEST(FindReplaceReplaceAll, PositionsInTheNewText) {
  auto r = ReplaceAll("cat Cat CAT", "cat", "", true, false, false);  // an empty replacement
  EXPECT_EQ(r.newText, " Cat CAT");
  EXPECT_EQ(r.replaced, (Matches{{0, 0}}));
  r = ReplaceAll("\xF0\x9F\x98\x80" "foo\xF0\x9F\x98\x80", "foo", "x", true, true, false);
  EXPECT_EQ(r.newText, "\xF0\x9F\x98\x80" "x\xF0\x9F\x98\x80");  // an emoji is no letter
  EXPECT_EQ(r.replaced, (Matches{{4, 5}}));
  // Lower-casing may change a character's length: the Kelvin sign (3 bytes) is a "k".
  EXPECT_EQ(ReplaceAll("a\xE2\x84\xAA" "b", "K", "x", false, false, false).newText, "axb");
  // Nothing to do.
  r = ReplaceAll("abc", "", "x", false, false, false);
  EXPECT_EQ(r.count, 0);
  EXPECT_EQ(r.newText, "abc");

  // The find text's own characters are not tested, unlike the editor's whole-word search; the
  // range's edges count as separators (the text beyond a selection is not looked at).
  EXPECT_EQ(ReplaceAll("- foo b", " foo", "X", true, true, false).newText, "-X b");
  EXPECT_EQ(ReplaceAll("foo", "foo", "X", true, true, false).newText, "X");
}

TEST(FindReplaceReplaceAll, PreserveCaseFollowsEachOccurrence) {
  auto r = ReplaceAll("HELLO Hello hello hELLO H1 1H", "hello", "world", false, false, true);
  EXPECT_EQ(r.newText, "WORLD World world world H1 1H");
  EXPECT_EQ(ReplaceAll("A1 a1 1A", "a1", "wOrLd", false, false, true).newText, "World world 1A");
  EXPECT_EQ(ReplaceAll("1A", "1a", "wOrLd", false, false, true).newText, "world");
  EXPECT_EQ(ReplaceAll("HELLO", "hello", "wOrLd", false, false, false).newText, "wOrLd");
  // Case changes that change the byte length move the recorded positions.
  r = ReplaceAll("x A y", "a", "\xC3\xA9t\xC3\xA9", false, false, true);
  EXPECT_EQ(r.newText, "x \xC3\x89T\xC3\x89 y");
  EXPECT_EQ(r.replaced, (Matches{{2, 7}}));

  // The rule on its own, in both text forms.
  EXPECT_EQ(ApplyFindPreserveCase(std::string_view("WORLD"), "hello"), "world");
  EXPECT_EQ(ApplyFindPreserveCase(std::string_view("wOrLd"), ""), "wOrLd");
  EXPECT_EQ(ApplyFindPreserveCase(std::string_view(""), "Hello"), "");
  EXPECT_EQ(ApplyFindPreserveCase(std::string_view("world"), "-"), "world");
  EXPECT_EQ(ApplyFindPreserveCase(std::string_view("\xC3\xA9" "cole"), "\xC3\x9C" "ber"), "\xC3\x89" "cole");
  EXPECT_EQ(ApplyFindPreserveCase(std::string_view("\xC3\xA9" "cole"), "\xC3\x9C" "BER"), "\xC3\x89" "COLE");
  EXPECT_EQ(ApplyFindPreserveCase(std::u16string_view(u"WORLD"), u"\u00FCber"), u"world");
}

TEST(FindReplaceReplaceAll, MalformedBytesOutsideOccurrencesSurvive) {
  auto r = ReplaceAll("\xFF" "foo\xFE" "FOO", "foo", "bar", false, false, false);
  EXPECT_EQ(r.newText, "\xFF" "bar\xFE" "bar");
  EXPECT_EQ(r.replaced, (Matches{{1, 4}, {5, 8}}));
  r = ReplaceAll("\xE2\x82" "foo", "foo", "b", true, true, false);  // a cut-off character is no letter
  EXPECT_EQ(r.newText, "\xE2\x82" "b");
  // A malformed byte equals only itself, never U+FFFD, with or without "Match case".
  for (bool matchCase : {true, false}) {
    EXPECT_EQ(ReplaceAll("\xFF" "a", "\xEF\xBF\xBD" "a", "x", matchCase, false, false).count, 0);
    EXPECT_EQ(ReplaceAll("\xFF" "a\xFE", "\xFF", "x", matchCase, false, false).newText, "xa\xFE");
    // A find text cut inside a character does not match the whole character.
    EXPECT_EQ(ReplaceAll("a\xC3\xA9", "a\xC3", "x", matchCase, false, false).count, 0);
  }
}

TEST(FindReplaceReplaceOne, SelectionMustBeTheFindText) {
  EXPECT_TRUE(SelectionMatchesFindText("\xC3\x89" "COLE", "\xC3\xA9" "cole", false));
  EXPECT_FALSE(SelectionMatchesFindText("Hello", "hello", true));
  EXPECT_FALSE(SelectionMatchesFindText("Hello!", "hello", false));

  auto d = DecideReplaceOne("Hello", "hello", "world", false, false);
  EXPECT_TRUE(d.replace);
  EXPECT_EQ(d.replacement, "world");
  EXPECT_EQ(DecideReplaceOne("HELLO", "hello", "world", false, true).replacement, "WORLD");
  EXPECT_FALSE(DecideReplaceOne("Hello", "hello", "world", true, false).replace);
  EXPECT_FALSE(DecideReplaceOne("", "hello", "world", false, false).replace);
  EXPECT_FALSE(DecideReplaceOne("x", "", "world", false, false).replace);
  // Whole word is not consulted: a selected part of a word is replaced.
  EXPECT_TRUE(DecideReplaceOne("ell", "ell", "ELL", true, false).replace);
}

}  // namespace
}  // namespace nebro::search
