#include "search/find_replace_rules.h"

#include <gtest/gtest.h>

#include <string>

namespace nebro {
namespace {

std::u16string Entry(int i) { return u"t" + std::u16string(1, static_cast<char16_t>(u'0' + i)); }

TEST(FindReplaceRules, HistoryMovesRepeatsToTheFrontAndDropsTheTenth) {
  FindHistory h;
  EXPECT_FALSE(AddToFindHistory(h, u""));
  EXPECT_TRUE(h[0].empty());
  AddToFindHistory(h, u"a");
  AddToFindHistory(h, u"b");
  EXPECT_EQ(h[0], u"b");
  EXPECT_EQ(h[1], u"a");
  AddToFindHistory(h, u"a");  // already there: moves up, nothing is duplicated
  EXPECT_EQ(h[0], u"a");
  EXPECT_EQ(h[1], u"b");
  EXPECT_TRUE(h[2].empty());
  AddToFindHistory(h, u"A");  // comparison is case-sensitive
  EXPECT_EQ(h[0], u"A");
  EXPECT_EQ(h[1], u"a");

  FindHistory full;
  for (int i = 9; i >= 0; --i) AddToFindHistory(full, Entry(i));  // t0 first ... t9 last
  AddToFindHistory(full, Entry(4));
  const FindHistory moved{Entry(4), Entry(0), Entry(1), Entry(2), Entry(3),
                          Entry(5), Entry(6), Entry(7), Entry(8), Entry(9)};
  EXPECT_EQ(full, moved);
  AddToFindHistory(full, u"new");
  const FindHistory pushed{u"new", Entry(4), Entry(0), Entry(1), Entry(2),
                           Entry(3), Entry(5), Entry(6), Entry(7), Entry(8)};
  EXPECT_EQ(full, pushed);
  AddToFindHistory(full, u"new");  // already first: nothing moves
  EXPECT_EQ(full, pushed);

  // Entries hold at most 255 units; a longer text matches its own earlier entry.
  FindHistory longer;
  const std::u16string big(300, u'x');
  AddToFindHistory(longer, big);
  AddToFindHistory(longer, big);
  EXPECT_EQ(longer[0].size(), 255u);
  EXPECT_TRUE(longer[1].empty());

  FindHistory sparse;
  sparse[0] = u"one";
  sparse[3] = u"two";
  EXPECT_EQ(FindHistoryComboEntries(sparse), (std::vector<std::u16string>{u"one", u"two"}));
}

TEST(FindReplaceRules, StatusLinesAndTheirColours) {
  EXPECT_EQ(MatchCountStatus(1, FindStatusKind::Normal),
            (FindStatus{"1 match found.", FindStatusKind::Normal}));
  EXPECT_EQ(MatchCountStatus(0, FindStatusKind::ResultCount).text, "0 matches found.");
  EXPECT_EQ(MatchCountStatus(12345, FindStatusKind::ResultCount),
            (FindStatus{"12345 matches found.", FindStatusKind::ResultCount}));
  EXPECT_EQ(ReplaceAllStatus(0), (FindStatus{"No occurrences found.", FindStatusKind::Warning}));
  EXPECT_EQ(ReplaceAllStatus(1).text, "1 occurrence(s) replaced.");
  EXPECT_EQ(ReplaceAllStatus(42), (FindStatus{"42 occurrence(s) replaced.", FindStatusKind::ResultCount}));

  const Colour text = Rgb(1, 2, 3);
  EXPECT_EQ(FindStatusColour(FindStatusKind::Normal, text), text);
  EXPECT_EQ(ColourText(FindStatusColour(FindStatusKind::Warning, text)), "#FFB400");
  EXPECT_EQ(ColourText(FindStatusColour(FindStatusKind::ResultCount, text)), "#28A050");
}

TEST(FindReplaceRules, FieldTextIsClippedTo255Units) {
  EXPECT_EQ(ClipFindFieldText("short"), "short");
  EXPECT_EQ(ClipFindFieldText(std::string(300, 'a')), std::string(255, 'a'));
  EXPECT_EQ(ClipFindFieldText(std::string(255, 'a')), std::string(255, 'a'));
  // 254 units and an emoji (two units): the pair is not split.
  EXPECT_EQ(ClipFindFieldText(std::string(254, 'a') + "\xF0\x9F\x98\x80"), std::string(254, 'a'));
  // Two-byte characters are one unit each.
  std::string accents;
  for (int i = 0; i < 256; ++i) accents += "\xC3\xA9";
  EXPECT_EQ(ClipFindFieldText(accents), accents.substr(0, 510));
}

TEST(FindReplaceRules, ReplaceAllRangeAndHighlightAll) {
  EXPECT_EQ(ResolveReplaceAllRange(100, 10, 20, false).end, 100);
  auto r = ResolveReplaceAllRange(100, 10, 20, true);
  EXPECT_EQ(r.start, 10);
  EXPECT_EQ(r.end, 20);
  EXPECT_FALSE(r.clearInSelection);
  r = ResolveReplaceAllRange(100, 30, 30, true);  // no selection: whole document, box cleared
  EXPECT_EQ(r.start, 0);
  EXPECT_EQ(r.end, 100);
  EXPECT_TRUE(r.clearInSelection);
  EXPECT_EQ(ResolveReplaceAllRange(100, 20, 10, true).start, 10);

  const std::vector<FindMatch> m{{0, 2}, {5, 7}};
  auto h = DecideHighlightAll(m, true);
  EXPECT_TRUE(h.mark);
  EXPECT_TRUE(h.selectLast);
  EXPECT_EQ(h.last, (FindMatch{5, 7}));
  EXPECT_EQ(h.status, (FindStatus{"2 matches found.", FindStatusKind::ResultCount}));
  h = DecideHighlightAll(m, false);
  EXPECT_FALSE(h.mark);
  EXPECT_FALSE(h.selectLast);
  EXPECT_EQ(h.status.text, "2 matches found.");
  h = DecideHighlightAll({}, true);
  EXPECT_FALSE(h.mark);
  EXPECT_EQ(h.status, (FindStatus{"No matches found.", FindStatusKind::Warning}));
}

}  // namespace
}  // namespace nebro
