// Literal search for the Find & Replace dialog. The random comparison with plain scans covers the
// common folding and whole-word cases; these pin the editor's readings that the plain scans
// share with the fast ones (character classes, folding, malformed bytes) and the dialog's rules.
#include "search/find_replace_search.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "search/find_replace_rules.h"

namespace nebro::search {
namespace {

using Matches = std::vector<FindMatch>;

Matches List(std::string_view doc, std::string_view find, bool matchCase, bool wholeWord) {
  return BuildMatchList(doc, find, FindTextOptions{matchCase, wholeWord});
}

TEST(FindReplaceSearch, FoldingWholeWordsAndMalformedBytes) {
  // Non-ASCII letters fold too; positions are bytes (É and é are two bytes each).
  const std::string french = "\xC3\x89" "COLE \xC3\xA9" "cole";
  EXPECT_EQ(List(french, "\xC3\xA9" "cole", false, false), (Matches{{0, 6}, {7, 13}}));
  EXPECT_EQ(List(french, "\xC3\xA9" "cole", true, false), (Matches{{7, 13}}));
  const std::string russian = "\xD0\x9F\xD1\x80\xD0\xB8 \xD0\x9F\xD0\xA0\xD0\x98";  // При ПРИ
  EXPECT_EQ(List(russian, "\xD0\xBF\xD1\x80\xD0\xB8", false, false), (Matches{{0, 6}, {7, 13}}));
  // A folded match may differ in length from the find text: the Kelvin sign folds to "k".
  EXPECT_EQ(List("a\xE2\x84\xAA" "b", "K", false, false), (Matches{{1, 4}}));
  EXPECT_TRUE(List("a\xE2\x84\xAA" "b", "K", true, false).empty());

  // '_' and digits are word characters, punctuation and line ends separate.
  EXPECT_EQ(List("foo_bar foo1 foo.bar (foo)", "foo", true, true), (Matches{{13, 16}, {22, 25}}));
  EXPECT_EQ(List("foo\nfoo\r\nfoo", "foo", false, true), (Matches{{0, 3}, {4, 7}, {9, 12}}));
  // A punctuation find text is a word between characters of another class only.
  EXPECT_EQ(List("a-b a--b", "-", true, true), (Matches{{1, 2}}));
  // A find text that starts or ends with a blank is never a whole word.
  EXPECT_TRUE(List("x foo y", " foo", true, true).empty());
  EXPECT_TRUE(List("x foo y", "foo ", true, true).empty());
  // Every non-ASCII character counts as a letter: next to é, or «, a word goes on.
  EXPECT_EQ(List("\xC3\xA9" "foo foo", "foo", true, true), (Matches{{6, 9}}));
  EXPECT_TRUE(List("\xC2\xAB" "foo\xC2\xBB", "foo", true, true).empty());

  // A malformed byte is a character of its own and is compared as it stands.
  EXPECT_EQ(List("\xFF" "abc\xFF", "ABC", false, false), (Matches{{1, 4}}));
  EXPECT_EQ(List("\xFF" "abc\xFF", "\xFF", false, false), (Matches{{0, 1}, {4, 5}}));
  // Bytes inside a well-formed character are never the start of a match.
  EXPECT_TRUE(List("\xE2\x82\xAC", "\x82\xAC", true, false).empty());
  EXPECT_TRUE(List("\xE2\x82\xAC", "\x82\xAC", false, false).empty());
  EXPECT_TRUE(List("abc", "", false, false).empty());
}

TEST(FindReplaceSearch, FindTextRangeKeepsToItsRange) {
  const std::string doc = "foo foo foo";
  const FindTextOptions exact{true, false};
  EXPECT_EQ(FindTextRange(doc, 1, 11, "foo", exact), (FindMatch{4, 7}));
  EXPECT_EQ(FindTextRange(doc, 0, 6, "foo", exact), (FindMatch{0, 3}));
  EXPECT_FALSE(FindTextRange(doc, 4, 6, "foo", exact).has_value());
  EXPECT_EQ(FindTextRange(doc, 4, 7, "FOO", FindTextOptions{}), (FindMatch{4, 7}));
  EXPECT_FALSE(FindTextRange(doc, 8, 2, "foo", exact).has_value());
  EXPECT_EQ(FindTextRange(doc, 3, 6, "", exact), (FindMatch{3, 3}));
  // The whole-word test looks past the end of the range at the document.
  EXPECT_FALSE(FindTextRange("foobar", 0, 3, "foo", FindTextOptions{true, true}).has_value());
  // A range start inside a character moves on to the next character.
  EXPECT_EQ(FindTextRange("\xC3\xA9\xC3\xA9", 1, 4, "\xC3\xA9", exact), (FindMatch{2, 4}));
}

// Which match Find Next and Find Prev choose, with and without wrap-around, is checked on the
// real window in find_replace_guitest; these are the statuses it does not meet.
TEST(FindReplaceSearch, FindStatusesAndTheMatchListCache) {
  const Matches m{{0, 3}, {10, 13}, {20, 23}};
  EXPECT_EQ(ChooseFindNextMatch(m, true, 0, 0, false).status.kind, FindStatusKind::Normal);
  EXPECT_EQ(ChooseFindNextMatch(m, true, 23, 20, false).status.kind, FindStatusKind::Warning);
  EXPECT_EQ(ChooseFindNextMatch({}, true, 0, 0, true).status, (FindStatus{"No matches.", FindStatusKind::Warning}));
  EXPECT_EQ(ChooseFindNextMatch({{5, 6}}, true, 0, 0, true).status.text, "1 match found.");

  // The list is rebuilt only when the text or a flag changes; it does not look at the document,
  // so after a replacement it is forgotten.
  MatchListCache cache;
  EXPECT_TRUE(RefreshMatchList(cache, "one One ONE", "one", FindTextOptions{}));
  EXPECT_EQ(cache.matches.size(), 3u);
  EXPECT_FALSE(RefreshMatchList(cache, "one One ONE", "one", FindTextOptions{}));
  EXPECT_TRUE(RefreshMatchList(cache, "one One ONE", "one", FindTextOptions{true, false}));
  EXPECT_TRUE(RefreshMatchList(cache, "one One ONE", "one", FindTextOptions{true, true}));
  EXPECT_TRUE(RefreshMatchList(cache, "one One ONE", "One", FindTextOptions{true, true}));
  EXPECT_EQ(cache.matches, (Matches{{4, 7}}));
  EXPECT_FALSE(RefreshMatchList(cache, "One one", "One", FindTextOptions{true, true}));
  ForgetMatchList(cache);
  EXPECT_TRUE(cache.matches.empty());
  EXPECT_TRUE(RefreshMatchList(cache, "One one", "One", FindTextOptions{true, true}));
  EXPECT_EQ(cache.matches, (Matches{{0, 3}}));
}

// The window keeps its histories with the settings' recent lists (settings_test, and on the real
// window find_replace_guitest).
TEST(FindReplaceRules, FieldsStatusRangeAndHighlightAll) {
  // Fields are read up to 255 UTF-16 units; a surrogate pair is not split.
  EXPECT_EQ(ClipFindFieldText(std::string(300, 'a')), std::string(255, 'a'));
  EXPECT_EQ(ClipFindFieldText(std::string(254, 'a') + "\xF0\x9F\x98\x80"), std::string(254, 'a'));
  std::string accents;
  for (int i = 0; i < 256; ++i) accents += "\xC3\xA9";  // one unit each
  EXPECT_EQ(ClipFindFieldText(accents), accents.substr(0, 510));

  EXPECT_EQ(MatchCountStatus(12345, FindStatusKind::ResultCount),
            (FindStatus{"12345 matches found.", FindStatusKind::ResultCount}));
  EXPECT_EQ(ReplaceAllStatus(0), (FindStatus{"No occurrences found.", FindStatusKind::Warning}));
  EXPECT_EQ(ReplaceAllStatus(42), (FindStatus{"42 occurrence(s) replaced.", FindStatusKind::ResultCount}));
  EXPECT_EQ(FindStatusColour(FindStatusKind::Normal, Rgb(1, 2, 3)), Rgb(1, 2, 3));

  auto range = [](int64_t start, int64_t end, bool inSelection) {
    const ReplaceAllRange r = ResolveReplaceAllRange(100, start, end, inSelection);
    return std::tuple(r.start, r.end, r.clearInSelection);
  };
  EXPECT_EQ(range(10, 20, false), std::tuple(0, 100, false));
  EXPECT_EQ(range(20, 10, true), std::tuple(10, 20, false));
  EXPECT_EQ(range(30, 30, true), std::tuple(0, 100, true));  // no selection: the box is cleared

  // Highlight All with "Color results" on is checked on the real window; off, nothing is marked.
  const auto off = DecideHighlightAll(Matches{{0, 2}, {5, 7}}, false);
  EXPECT_FALSE(off.mark || off.selectLast);
  EXPECT_EQ(off.status.text, "2 matches found.");
  EXPECT_EQ(DecideHighlightAll({}, true).status.kind, FindStatusKind::Warning);
}

}  // namespace
}  // namespace nebro::search
