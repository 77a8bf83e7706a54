#include "search/find_replace_search.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nebro {
namespace {

using Matches = std::vector<FindMatch>;

Matches List(std::string_view doc, std::string_view find, bool matchCase, bool wholeWord) {
  return BuildMatchList(doc, find, FindTextOptions{matchCase, wholeWord});
}

TEST(FindReplaceSearch, MatchCaseDecidesWhichSpellingsCount) {
  const std::string doc = "Foo foo FOO fOo";
  EXPECT_EQ(List(doc, "foo", true, false), (Matches{{4, 7}}));
  EXPECT_EQ(List(doc, "foo", false, false), (Matches{{0, 3}, {4, 7}, {8, 11}, {12, 15}}));
  EXPECT_EQ(List(doc, "FOO", false, false).size(), 4u);

  // Non-ASCII letters fold too; positions are bytes (É and é are two bytes each).
  const std::string french = "\xC3\x89" "COLE \xC3\xA9" "cole";
  EXPECT_EQ(List(french, "\xC3\xA9" "cole", false, false), (Matches{{0, 6}, {7, 13}}));
  EXPECT_EQ(List(french, "\xC3\xA9" "cole", true, false), (Matches{{7, 13}}));
  const std::string russian = "\xD0\x9F\xD1\x80\xD0\xB8 \xD0\x9F\xD0\xA0\xD0\x98";  // При ПРИ
  EXPECT_EQ(List(russian, "\xD0\xBF\xD1\x80\xD0\xB8", false, false), (Matches{{0, 6}, {7, 13}}));

  // A folded match may differ in length from the find text: the Kelvin sign folds to "k".
  EXPECT_EQ(List("a\xE2\x84\xAA" "b", "K", false, false), (Matches{{1, 4}}));
  EXPECT_TRUE(List("a\xE2\x84\xAA" "b", "K", true, false).empty());
}

TEST(FindReplaceSearch, WholeWordFollowsTheEditorsCharacterClasses) {
  EXPECT_EQ(List("foo foobar barfoo foo", "foo", true, true), (Matches{{0, 3}, {18, 21}}));
  // '_' and digits are word characters, punctuation separates.
  EXPECT_EQ(List("foo_bar foo1 foo.bar (foo)", "foo", true, true), (Matches{{13, 16}, {22, 25}}));
  // Line ends separate at both document edges.
  EXPECT_EQ(List("foo\nfoo\r\nfoo", "foo", false, true), (Matches{{0, 3}, {4, 7}, {9, 12}}));
  // A punctuation find text is a word between characters of another class only.
  EXPECT_EQ(List("a-b a--b", "-", true, true), (Matches{{1, 2}}));
  // A find text that starts or ends with a blank is never a whole word.
  EXPECT_TRUE(List("x foo y", " foo", true, true).empty());
  EXPECT_TRUE(List("x foo y", "foo ", true, true).empty());
  // Every non-ASCII character counts as a letter: next to é, or «, a word goes on.
  EXPECT_EQ(List("\xC3\xA9" "foo foo", "foo", true, true), (Matches{{6, 9}}));
  EXPECT_TRUE(List("caf\xC3\xA9 cafe", "caf", false, true).empty());
  EXPECT_TRUE(List("\xC2\xAB" "foo\xC2\xBB", "foo", true, true).empty());
  EXPECT_EQ(List("\xC3\xA9t\xC3\xA9 \xC3\x89T\xC3\x89", "\xC3\xA9t\xC3\xA9", false, true),
            (Matches{{0, 5}, {6, 11}}));
}

TEST(FindReplaceSearch, ListIsOrderedAndNeverOverlaps) {
  EXPECT_EQ(List("aaaa", "aa", true, false), (Matches{{0, 2}, {2, 4}}));
  EXPECT_EQ(List("aaa", "aa", true, false), (Matches{{0, 2}}));
  EXPECT_EQ(List("ababab", "abab", false, false), (Matches{{0, 4}}));
  // Whole word rejects a candidate and the search goes on one character later.
  EXPECT_EQ(List("abab ab", "ab", true, true), (Matches{{5, 7}}));
  // A match reaching the very end of the document ends the list.
  EXPECT_EQ(List("xab", "ab", true, false), (Matches{{1, 3}}));
}

TEST(FindReplaceSearch, EmptyTextsAndMalformedBytes) {
  EXPECT_TRUE(List("abc", "", false, false).empty());
  EXPECT_TRUE(List("", "a", false, false).empty());
  const auto empty = FindTextRange("abcdef", 3, 6, "", FindTextOptions{});
  ASSERT_TRUE(empty.has_value());
  EXPECT_EQ(*empty, (FindMatch{3, 3}));

  // A malformed byte is a character of its own and is compared as it stands.
  EXPECT_EQ(List("\xFF" "abc\xFF", "ABC", false, false), (Matches{{1, 4}}));
  EXPECT_EQ(List("\xFF" "abc\xFF", "\xFF", false, false), (Matches{{0, 1}, {4, 5}}));
  // Bytes inside a well-formed character are never the start of a match.
  EXPECT_TRUE(List("\xE2\x82\xAC", "\x82\xAC", true, false).empty());
  EXPECT_TRUE(List("\xE2\x82\xAC", "\x82\xAC", false, false).empty());
}

TEST(FindReplaceSearch, FindTextRangeKeepsToItsRange) {
  const std::string doc = "foo foo foo";
  const FindTextOptions exact{true, false};
  EXPECT_EQ(FindTextRange(doc, 1, 11, "foo", exact), (FindMatch{4, 7}));
  EXPECT_EQ(FindTextRange(doc, 0, 6, "foo", exact), (FindMatch{0, 3}));
  EXPECT_FALSE(FindTextRange(doc, 4, 6, "foo", exact).has_value());
  EXPECT_FALSE(FindTextRange(doc, 4, 6, "FOO", FindTextOptions{}).has_value());
  EXPECT_EQ(FindTextRange(doc, 4, 7, "FOO", FindTextOptions{}), (FindMatch{4, 7}));
  EXPECT_FALSE(FindTextRange(doc, 8, 2, "foo", exact).has_value());
  // The whole-word test looks past the end of the range at the document.
  EXPECT_FALSE(FindTextRange("foobar", 0, 3, "foo", FindTextOptions{true, true}).has_value());
  // A range start inside a character moves on to the next character.
  EXPECT_EQ(FindTextRange("\xC3\xA9\xC3\xA9", 1, 4, "\xC3\xA9", exact), (FindMatch{2, 4}));
}

TEST(FindReplaceSearch, FindNextAndPrevChooseFromTheListWithWrapAround) {
  const Matches m{{0, 3}, {10, 13}, {20, 23}};
  auto next = ChooseFindNextMatch(m, true, 0, 0, false);
  EXPECT_TRUE(next.select);
  EXPECT_EQ(next.index, 0u);
  EXPECT_EQ(next.status, (FindStatus{"3 matches found.", FindStatusKind::Normal}));
  EXPECT_EQ(ChooseFindNextMatch(m, true, 3, 0, false).index, 1u);
  EXPECT_EQ(ChooseFindNextMatch(m, true, 10, 0, false).index, 1u);  // a match at the caret
  EXPECT_EQ(ChooseFindNextMatch(m, true, 13, 10, false).match, (FindMatch{20, 23}));

  // Caret after the last match.
  next = ChooseFindNextMatch(m, true, 23, 20, false);
  EXPECT_FALSE(next.select);
  EXPECT_EQ(next.status, (FindStatus{"No more matches.", FindStatusKind::Warning}));
  next = ChooseFindNextMatch(m, true, 23, 20, true);
  EXPECT_TRUE(next.select);
  EXPECT_EQ(next.match, (FindMatch{0, 3}));
  EXPECT_EQ(next.status.text, "3 matches found.");

  // Backward looks before the selection start.
  auto prev = ChooseFindNextMatch(m, false, 23, 20, false);
  EXPECT_EQ(prev.match, (FindMatch{10, 13}));
  prev = ChooseFindNextMatch(m, false, 3, 0, true);  // selection exactly on the first match
  EXPECT_EQ(prev.match, (FindMatch{20, 23}));
  prev = ChooseFindNextMatch(m, false, 3, 0, false);
  EXPECT_FALSE(prev.select);
  EXPECT_EQ(prev.status.text, "No more matches.");

  EXPECT_EQ(ChooseFindNextMatch({}, true, 0, 0, true).status,
            (FindStatus{"No matches.", FindStatusKind::Warning}));
  EXPECT_EQ(ChooseFindNextMatch({{5, 6}}, true, 0, 0, true).status.text, "1 match found.");
}

TEST(FindReplaceSearch, MatchListIsRebuiltOnlyWhenTextOrFlagsChange) {
  MatchListCache cache;
  const std::string doc = "one One ONE";
  EXPECT_TRUE(RefreshMatchList(cache, doc, "one", FindTextOptions{}));
  EXPECT_EQ(cache.matches.size(), 3u);
  EXPECT_FALSE(RefreshMatchList(cache, doc, "one", FindTextOptions{}));
  EXPECT_TRUE(RefreshMatchList(cache, doc, "one", FindTextOptions{true, false}));
  EXPECT_EQ(cache.matches, (Matches{{0, 3}}));
  EXPECT_TRUE(RefreshMatchList(cache, doc, "one", FindTextOptions{true, true}));
  EXPECT_TRUE(RefreshMatchList(cache, doc, "One", FindTextOptions{true, true}));
  EXPECT_EQ(cache.matches, (Matches{{4, 7}}));

  // The cache does not look at the document; after a replacement it is forgotten.
  const std::string edited = "One one";
  EXPECT_FALSE(RefreshMatchList(cache, edited, "One", FindTextOptions{true, true}));
  ForgetMatchList(cache);
  EXPECT_TRUE(cache.matches.empty());
  EXPECT_TRUE(RefreshMatchList(cache, edited, "One", FindTextOptions{true, true}));
  EXPECT_EQ(cache.matches, (Matches{{0, 3}}));
}

}  // namespace
}  // namespace nebro
