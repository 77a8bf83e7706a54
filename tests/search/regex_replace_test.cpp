#include "search/regex_replace.h"

#include <gtest/gtest.h>

namespace nebro::search {
namespace {

TEST(RegexReplace, ExpandReplacementTemplates) {
  const RegexCaptures match{u"john@example", u"john", std::nullopt};
  EXPECT_EQ(ExpandReplacement(u"<$&|$0>", match), u"<john@example|john@example>");
  EXPECT_EQ(ExpandReplacement(u"$1!", match), u"john!");
  // A group that took no part, or that the expression lacks, inserts nothing.
  EXPECT_EQ(ExpandReplacement(u"[$2][$3][$9]", match), u"[][][]");
  EXPECT_EQ(ExpandReplacement(u"[$2]", RegexCaptures{u"ab", u"a"}), u"[]");
  // '$' before anything else, or at the end, stays; there is no "$$" escape.
  EXPECT_EQ(ExpandReplacement(u"cost $", match), u"cost $");
  EXPECT_EQ(ExpandReplacement(u"$x", match), u"$x");
  EXPECT_EQ(ExpandReplacement(u"$$1", match), u"$john");
  EXPECT_EQ(ExpandReplacement(u"$$", match), u"$$");
  // Only one digit is read: "$12" is group 1 and a '2'.
  EXPECT_EQ(ExpandReplacement(u"$12", match), u"john2");
  EXPECT_EQ(ExpandReplacement(u"", match), u"");
  EXPECT_EQ(ExpandReplacement(u"\U0001F600$1\u00E9", match), u"\U0001F600john\u00E9");
}

TEST(RegexReplace, PreserveCase) {
  struct Case {
    std::u16string_view replacement, matched, expected;
  } cases[] = {
      {u"world", u"HELLO", u"WORLD"},
      {u"wORLD", u"hello", u"world"},
      {u"wORLD", u"Hello", u"World"},
      {u"WoRlD", u"hELLO", u"WoRlD"},  // mixed: left as it is
      {u"world", u"A-1", u"WORLD"},    // no small letter counts as all upper
      {u"world", u"42", u"WORLD"},
      {u"", u"HELLO", u""},
      {u"world", u"", u"world"},
      // Letters beyond ASCII, whatever the process locale is, and outside the BMP (Deseret).
      {u"\u00E9T\u00C9", u"\u00C9cole", u"\u00C9t\u00E9"},
      {u"\u0431\u0443\u043A\u0432\u0430", u"\u041F\u0420\u0418", u"\u0411\u0423\u041A\u0412\u0410"},
      {u"\U00010428x", u"AB", u"\U00010400X"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(ApplyPreserveCase(c.replacement, c.matched), c.expected)
        << std::string(c.matched.begin(), c.matched.end());
  }
}

// The comparison with std::regex_replace covers templates with "$&" and "$1", empty matches and
// '^' on ASCII text; these are the cases it cannot check.
TEST(RegexReplace, ReplaceAllUsesIteratorSemantics) {
  RegexReplaceAllResult r = ReplaceAllText(u"Cat cat CAT concatenate", u"cat", u"dog", false, true, true);
  EXPECT_EQ(r.status, RegexStatus::Ok);
  EXPECT_EQ(r.text, u"Dog dog DOG concatenate");
  EXPECT_EQ(r.count, 3u);
  // An empty match steps over a whole surrogate pair.
  r = ReplaceAllText(u"\U0001F600\U0001F600", u"", u"-", true, false, false);
  EXPECT_EQ(r.text, u"-\U0001F600-\U0001F600-");
  EXPECT_EQ(r.count, 3u);
  r = ReplaceAllText(u"john@example bob@test", u"(\\w+)@(\\w+)", u"$2:$1$", true, false, false);
  EXPECT_EQ(r.text, u"example:john$ test:bob$");

  // (No match at all, on the real window: regex_search_guitest.)
  r = ReplaceAllText(u"abc", u"(", u"y", true, false, false);
  EXPECT_EQ(r.status, RegexStatus::InvalidPattern);
  EXPECT_EQ(r.count, 0u);
  r = ReplaceAllText(std::u16string(3000, u'a') + u"b", u"(a+)+$", u"y", true, false, false);
  EXPECT_EQ(r.status, RegexStatus::TooComplex);
  EXPECT_EQ(r.count, 0u);
  EXPECT_TRUE(r.text.empty());
}

}  // namespace
}  // namespace nebro::search
