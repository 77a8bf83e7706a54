#include "search/regex_replace.h"

#include <gtest/gtest.h>

namespace nebro {
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
  EXPECT_EQ(ApplyPreserveCase(u"world", u"HELLO"), u"WORLD");
  EXPECT_EQ(ApplyPreserveCase(u"world", u"hello"), u"world");
  EXPECT_EQ(ApplyPreserveCase(u"wORLD", u"hello"), u"world");
  EXPECT_EQ(ApplyPreserveCase(u"world", u"Hello"), u"World");
  EXPECT_EQ(ApplyPreserveCase(u"wORLD", u"Hello"), u"World");
  EXPECT_EQ(ApplyPreserveCase(u"world", u"hELLO"), u"world");
  EXPECT_EQ(ApplyPreserveCase(u"WoRlD", u"hELLO"), u"WoRlD");
  // No letters at all counts as all upper.
  EXPECT_EQ(ApplyPreserveCase(u"world", u"42"), u"WORLD");
  EXPECT_EQ(ApplyPreserveCase(u"world", u"A-1"), u"WORLD");
  // Empty either way: unchanged.
  EXPECT_EQ(ApplyPreserveCase(u"", u"HELLO"), u"");
  EXPECT_EQ(ApplyPreserveCase(u"world", u""), u"world");
  // Letters beyond ASCII, whatever the process locale is.
  EXPECT_EQ(ApplyPreserveCase(u"\u00E9t\u00E9", u"\u00C9COLE"), u"\u00C9T\u00C9");
  EXPECT_EQ(ApplyPreserveCase(u"\u00C9T\u00C9", u"\u00E9cole"), u"\u00E9t\u00E9");
  EXPECT_EQ(ApplyPreserveCase(u"\u00E9T\u00C9", u"\u00C9cole"), u"\u00C9t\u00E9");
  EXPECT_EQ(ApplyPreserveCase(u"\u0431\u0443\u043A\u0432\u0430", u"\u041F\u0420\u0418"),
            u"\u0411\u0423\u041A\u0412\u0410");
  // Letters outside the BMP map as whole characters (Deseret).
  EXPECT_EQ(ApplyPreserveCase(u"\U00010428x", u"AB"), u"\U00010400X");
}

TEST(RegexReplace, ReplaceAllUsesIteratorSemantics) {
  RegexReplaceAllResult r =
      ReplaceAllText(u"Cat cat CAT concatenate", u"cat", u"dog", false, true, true);
  EXPECT_EQ(r.status, RegexStatus::Ok);
  EXPECT_EQ(r.text, u"Dog dog DOG concatenate");
  EXPECT_EQ(r.count, 3u);

  r = ReplaceAllText(u"Cat cat CAT", u"cat", u"dog", false, false, false);
  EXPECT_EQ(r.text, u"dog dog dog");

  // '^' only at the start of the text (unlike Find All's sub-ranges).
  r = ReplaceAllText(u"aaa", u"^a", u"X", true, false, false);
  EXPECT_EQ(r.text, u"Xaa");
  EXPECT_EQ(r.count, 1u);

  // Empty matches: retried as non-empty at the same place, then one character on.
  r = ReplaceAllText(u"baaac", u"a*", u"<$&>", true, false, false);
  EXPECT_EQ(r.text, u"<>b<aaa><>c<>");
  EXPECT_EQ(r.count, 4u);
  r = ReplaceAllText(u"\U0001F600\U0001F600", u"", u"-", true, false, false);
  EXPECT_EQ(r.text, u"-\U0001F600-\U0001F600-");
  EXPECT_EQ(r.count, 3u);

  // Groups and '$' handling inside Replace All.
  r = ReplaceAllText(u"john@example bob@test", u"(\\w+)@(\\w+)", u"$2:$1$", true, false, false);
  EXPECT_EQ(r.text, u"example:john$ test:bob$");
  EXPECT_EQ(r.count, 2u);

  // Lines and line terminators are kept.
  r = ReplaceAllText(u"one\r\ntwo\nthree", u"^|\\n", u"|", true, false, false);
  EXPECT_EQ(r.text, u"|one\r|two|three");

  // Nothing to replace: the text as it was.
  r = ReplaceAllText(u"abc", u"x", u"y", true, false, false);
  EXPECT_EQ(r.status, RegexStatus::Ok);
  EXPECT_EQ(r.count, 0u);
  EXPECT_EQ(r.text, u"abc");

  r = ReplaceAllText(u"abc", u"(", u"y", true, false, false);
  EXPECT_EQ(r.status, RegexStatus::InvalidPattern);
  EXPECT_EQ(r.count, 0u);

  std::u16string runaway(3000, u'a');
  runaway += u"b";
  r = ReplaceAllText(runaway, u"(a+)+$", u"y", true, false, false);
  EXPECT_EQ(r.status, RegexStatus::TooComplex);
  EXPECT_EQ(r.count, 0u);
  EXPECT_TRUE(r.text.empty());
}

}  // namespace
}  // namespace nebro
