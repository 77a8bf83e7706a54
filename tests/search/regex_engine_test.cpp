#include "search/regex_engine.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace nebro {
namespace {

struct Found {
  int64_t start;
  int64_t end;
  std::u16string text;
  int64_t line;
  bool operator==(const Found&) const = default;
};

std::vector<Found> Flatten(const std::vector<RegexMatch>& matches) {
  std::vector<Found> out;
  for (const RegexMatch& m : matches) out.push_back({m.start, m.end, m.text, m.line});
  return out;
}

// All matches FindBatch collects from the start, in batches of `want`.
std::vector<RegexMatch> CollectAll(std::u16string_view text, std::u16string_view pattern,
                                   uint64_t want, bool matchCase = true, bool wholeWord = false) {
  RegexPtr regex = BuildRegex(pattern, matchCase, wholeWord);
  EXPECT_TRUE(regex) << "pattern does not compile";
  if (!regex) return {};
  FindBatchContext context;
  uint64_t cursor = 0;
  std::vector<RegexMatch> all;
  for (int guard = 0; guard < 1000; ++guard) {
    RegexBatch batch = FindBatch(text, *regex, cursor, want, context);
    EXPECT_EQ(batch.status, RegexStatus::Ok);
    if (batch.matches.empty()) break;
    all.insert(all.end(), batch.matches.begin(), batch.matches.end());
  }
  return all;
}

std::vector<std::u16string> Texts(const std::vector<RegexMatch>& matches) {
  std::vector<std::u16string> out;
  for (const RegexMatch& m : matches) out.push_back(m.text);
  return out;
}

TEST(RegexBuild, CompileOptionsFollowEcmaScript) {
  std::string error;
  for (std::u16string_view bad : {u"(", u"[a", u"a)", u"*a", u"\\C", u"(?<n>a)(?<n>b)"}) {
    EXPECT_FALSE(BuildRegex(bad, true, false, &error)) << std::string(bad.begin(), bad.end());
  }
  EXPECT_FALSE(error.empty());

  // Case: the flag, and folding beyond ASCII.
  EXPECT_EQ(Texts(CollectAll(u"Hello HELLO hello", u"hello", 10)),
            std::vector<std::u16string>{u"hello"});
  EXPECT_EQ(CollectAll(u"Hello HELLO hello", u"hello", 10, false).size(), 3u);
  EXPECT_EQ(Texts(CollectAll(u"une \u00C9cole, l'\u00E9cole", u"\u00C9COLE", 10, false)),
            (std::vector<std::u16string>{u"\u00C9cole", u"\u00E9cole"}));

  // \w and \b are ASCII, as in ECMAScript.
  EXPECT_EQ(Texts(CollectAll(u"caf\u00E9 ok", u"\\w+", 10)),
            (std::vector<std::u16string>{u"caf", u"ok"}));
  // `.` stops at every ECMAScript line terminator.
  EXPECT_EQ(Texts(CollectAll(u"ab\rcd\nef\u2028gh\u2029ij", u".+", 10)),
            (std::vector<std::u16string>{u"ab", u"cd", u"ef", u"gh", u"ij"}));
  // `$` is the end of input only, also before a final newline.
  EXPECT_TRUE(CollectAll(u"a\n", u"a$", 10).empty());
  EXPECT_EQ(CollectAll(u"a\na", u"a$", 10).size(), 1u);
  // \uXXXX escapes, empty classes, unset back-references.
  EXPECT_EQ(Texts(CollectAll(u"xAy", u"\\u0041", 10)), std::vector<std::u16string>{u"A"});
  EXPECT_TRUE(CollectAll(u"abc", u"[]", 10).empty());
  EXPECT_EQ(CollectAll(u"ab", u"[^]", 10).size(), 2u);
  EXPECT_EQ(Texts(CollectAll(u"b", u"(a)?\\1b", 10)), std::vector<std::u16string>{u"b"});

  // Whole word wraps the pattern as a whole: "\b(?:a|b)\b".
  EXPECT_TRUE(CollectAll(u"concatenate", u"cat", 10, true, true).empty());
  EXPECT_EQ(CollectAll(u"a cat.", u"cat", 10, true, true).size(), 1u);
  std::vector<RegexMatch> words = CollectAll(u"ab a b", u"a|b", 10, true, true);
  ASSERT_EQ(words.size(), 2u);
  EXPECT_EQ(words[0].start, 3);
  EXPECT_EQ(words[1].start, 5);
  // The wrapping is textual: a pattern can close the wrapper's group itself.
  EXPECT_TRUE(BuildRegex(u"a)(?:b", true, true));

  RegexPtr groups = BuildRegex(u"(a)(?:b)(c(d))", true, false);
  ASSERT_TRUE(groups);
  EXPECT_EQ(RegexGroupCount(*groups), 3u);
}

TEST(RegexFindBatch, SubRangesBatchesAndEmptyMatches) {
  // 'x*' over 'ab': the empty match at the batch's start is stepped over, the one at 1 repeats
  // until the batch is full; the next batch starts there and steps over it.
  RegexPtr regex = BuildRegex(u"x*", true, false);
  ASSERT_TRUE(regex);
  FindBatchContext context;
  uint64_t cursor = 0;
  RegexBatch batch = FindBatch(u"ab", *regex, cursor, 5, context);
  EXPECT_EQ(Flatten(batch.matches),
            (std::vector<Found>{
                {0, 0, u"", 1}, {1, 1, u"", 1}, {1, 1, u"", 1}, {1, 1, u"", 1}, {1, 1, u"", 1}}));
  EXPECT_EQ(cursor, 1u);
  batch = FindBatch(u"ab", *regex, cursor, 5, context);
  EXPECT_EQ(Flatten(batch.matches), (std::vector<Found>{{1, 1, u"", 1}}));
  EXPECT_EQ(cursor, 2u);
  batch = FindBatch(u"ab", *regex, cursor, 5, context);
  EXPECT_TRUE(batch.matches.empty());
  EXPECT_EQ(batch.status, RegexStatus::Ok);
  EXPECT_EQ(cursor, 2u);

  // An empty match at the end of the text is collected once: no search follows it.
  EXPECT_EQ(Flatten(CollectAll(u"ab", u"$", 5)), (std::vector<Found>{{2, 2, u"", 1}}));

  // Each sub-range starts the input: '^a' matches after every match, \b sees nothing before.
  EXPECT_EQ(CollectAll(u"aaa", u"^a", 10).size(), 3u);
  EXPECT_EQ(Texts(CollectAll(u"ab", u"a|\\bb", 10)), (std::vector<std::u16string>{u"a", u"b"}));
  EXPECT_TRUE(CollectAll(u"ab", u"\\bb", 10).empty());
  EXPECT_TRUE(CollectAll(u"ab", u"(?<=a)b", 10).size() == 1);
  EXPECT_EQ(Texts(CollectAll(u"ab", u"a|(?<=a)b", 10)), std::vector<std::u16string>{u"a"});

  // Continuation: the cursor carries the run from batch to batch.
  regex = BuildRegex(u"\\w+", true, false);
  FindBatchContext words;
  cursor = 0;
  const std::u16string_view text = u"one two\nthree\r\nfour\rfive";
  std::vector<std::vector<std::u16string>> batches;
  for (;;) {
    RegexBatch b = FindBatch(text, *regex, cursor, 2, words);
    if (b.matches.empty()) break;
    batches.push_back(Texts(b.matches));
    if (batches.size() == 1) {
      EXPECT_EQ(cursor, 7u);
    }
  }
  EXPECT_EQ(batches, (std::vector<std::vector<std::u16string>>{
                         {u"one", u"two"}, {u"three", u"four"}, {u"five"}}));
  // Lines count LF only: CR alone starts no line.
  std::vector<RegexMatch> all = CollectAll(text, u"\\w+", 2);
  std::vector<int64_t> lines;
  for (const RegexMatch& m : all) lines.push_back(m.line);
  EXPECT_EQ(lines, (std::vector<int64_t>{1, 1, 2, 3, 3}));
  for (const RegexMatch& m : CollectAll(u"a\ra\ra\r", u"a", 1)) EXPECT_EQ(m.line, 1);

  // A context reused with a cursor that moves back still counts lines from the start.
  cursor = 14;
  RegexBatch late = FindBatch(text, *regex, cursor, 1, words);
  ASSERT_EQ(late.matches.size(), 1u);
  EXPECT_EQ(late.matches[0].line, 3);
  cursor = 0;
  RegexBatch early = FindBatch(text, *regex, cursor, 1, words);
  EXPECT_EQ(early.matches[0].line, 1);

  // Zero wanted, or a cursor at the end: nothing, and the cursor stays.
  cursor = 3;
  EXPECT_TRUE(FindBatch(text, *regex, cursor, 0, words).matches.empty());
  EXPECT_EQ(cursor, 3u);
  cursor = text.size() + 5;
  EXPECT_TRUE(FindBatch(text, *regex, cursor, 4, words).matches.empty());
  EXPECT_EQ(cursor, text.size() + 5);
}

TEST(RegexFindBatch, SurrogatePairsStayWhole) {
  const std::u16string text = u"\U0001F600\U0001F600a";  // two pairs, then 'a'
  // The empty match at the start steps over a whole pair, never into it.
  RegexPtr empty = BuildRegex(u"", true, false);
  FindBatchContext context;
  uint64_t cursor = 0;
  RegexBatch batch = FindBatch(text, *empty, cursor, 2, context);
  EXPECT_EQ(Flatten(batch.matches), (std::vector<Found>{{0, 0, u"", 1}, {2, 2, u"", 1}}));
  EXPECT_EQ(cursor, 2u);

  EXPECT_EQ(
      Flatten(CollectAll(text, u".", 10)),
      (std::vector<Found>{{0, 2, u"\U0001F600", 1}, {2, 4, u"\U0001F600", 1}, {4, 5, u"a", 1}}));
  // A cursor inside a pair starts after it.
  RegexPtr dot = BuildRegex(u".", true, false);
  FindBatchContext dots;
  cursor = 1;
  batch = FindBatch(text, *dot, cursor, 1, dots);
  ASSERT_EQ(batch.matches.size(), 1u);
  EXPECT_EQ(batch.matches[0].start, 2);

  // Unpaired surrogates read as U+FFFD, at the same positions.
  std::u16string broken = u"a?b?";
  broken[1] = 0xD800;
  broken[3] = 0xDC00;
  EXPECT_EQ(Flatten(CollectAll(broken, u".", 10)),
            (std::vector<Found>{
                {0, 1, u"a", 1}, {1, 2, u"\uFFFD", 1}, {2, 3, u"b", 1}, {3, 4, u"\uFFFD", 1}}));
}

TEST(RegexFindBatch, CancelAndRunawayPatternsStopCleanly) {
  // A flag set before the call: no search at all.
  std::atomic<bool> cancel{true};
  RegexPtr regex = BuildRegex(u"a", true, false);
  FindBatchContext context;
  context.cancel = &cancel;
  uint64_t cursor = 0;
  RegexBatch batch = FindBatch(u"aaa", *regex, cursor, 3, context);
  EXPECT_TRUE(batch.matches.empty());
  EXPECT_EQ(batch.status, RegexStatus::Cancelled);
  EXPECT_EQ(cursor, 0u);

  // A flag set while one search crawls over a long text (quadratic in the run of a's) stops that
  // very search.
  const std::u16string as = std::u16string(200'000, u'a') + u"xc";
  RegexPtr slow = BuildRegex(u"(a|b)*c", true, false);
  ASSERT_TRUE(slow);
  std::atomic<bool> stop{false};
  FindBatchContext slowContext;
  slowContext.cancel = &stop;
  std::thread canceller([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    stop = true;
  });
  cursor = 0;
  batch = FindBatch(as, *slow, cursor, 1, slowContext);
  canceller.join();
  EXPECT_EQ(batch.status, RegexStatus::Cancelled);
  EXPECT_TRUE(batch.matches.empty());

  // Catastrophic backtracking hits the engine's limit instead of running for ever.
  std::u16string text(5000, u'a');
  text += u'b';
  RegexPtr nested = BuildRegex(u"(a+)+$", true, false);
  FindBatchContext nestedContext;
  cursor = 0;
  batch = FindBatch(text, *nested, cursor, 10, nestedContext);
  EXPECT_EQ(batch.status, RegexStatus::TooComplex);
  EXPECT_TRUE(batch.matches.empty());
}

TEST(RegexFindBatch, MatchesOfSeveralMegabytes) {
  std::u16string text;
  text.reserve(5 << 20);
  while (text.size() < (5u << 20)) text += u"Some prose, and a line of it.\n";
  for (std::u16string_view pattern : {u"[\\s\\S]*", u"(?:.|\\n)*"}) {
    RegexPtr regex = BuildRegex(pattern, true, false);
    ASSERT_TRUE(regex);
    FindBatchContext context;
    uint64_t cursor = 0;
    RegexBatch batch = FindBatch(text, *regex, cursor, 1, context);
    ASSERT_EQ(batch.status, RegexStatus::Ok);
    ASSERT_EQ(batch.matches.size(), 1u);
    EXPECT_EQ(batch.matches[0].start, 0);
    EXPECT_EQ(static_cast<size_t>(batch.matches[0].end), text.size());
    EXPECT_EQ(batch.matches[0].text.size(), text.size());
  }
  // One line of 20 million units.
  const std::u16string line(20'000'000, u'q');
  std::vector<RegexMatch> all = CollectAll(line, u".*", 5);
  ASSERT_EQ(all.size(), 1u);
  EXPECT_EQ(all[0].end, 20'000'000);
}

// Literal patterns take a plain text search instead of the engine; both must find the same.
TEST(RegexFindBatch, LiteralsAndTheirAlternationsMatchLikeTheEngine) {
  const std::u16string pieces[] = {u"a", u"b", u"ab", u"\n", u"\U0001F600", u"\u00E9", u"aa"};
  uint32_t seed = 12345;
  auto next = [&] {
    seed = seed * 1103515245u + 12345u;
    return (seed >> 16) & 0x7FFF;
  };
  for (int round = 0; round < 60; ++round) {
    std::u16string text;
    const size_t length = next() % 70;
    while (text.size() < length) text += pieces[next() % std::size(pieces)];
    for (std::u16string_view literal :
         {u"a", u"ab", u"aa", u"aaa", u"ba", u"\U0001F600a", u"\u00E9\n", u"b\U0001F600", u"zz",
          // Alternations of literals: at a position the first alternative that fits wins.
          u"a|ab", u"ab|a", u"b|aa|a", u"\U0001F600|\u00E9", u"zz|ab|b", u"\n|ba|a|b|aa|zz|ab|x|y"}) {
      SCOPED_TRACE(testing::Message() << "round " << round);
      for (uint64_t want : {1u, 4u}) {
        EXPECT_EQ(Flatten(CollectAll(text, literal, want)),
                  Flatten(CollectAll(text, u"(?:" + std::u16string(literal) + u")", want)));
      }
      RegexPtr plain = BuildRegex(literal, true, false);
      RegexPtr group = BuildRegex(u"(?:" + std::u16string(literal) + u")", true, false);
      std::vector<int64_t> a, b;
      ForEachMatch(text, *plain, [&](const std::vector<RegexSpan>& g, std::u16string_view) {
        a.push_back(g[0].start);
        a.push_back(g[0].end);
        return true;
      });
      ForEachMatch(text, *group, [&](const std::vector<RegexSpan>& g, std::u16string_view) {
        b.push_back(g[0].start);
        b.push_back(g[0].end);
        return true;
      });
      EXPECT_EQ(a, b);
    }
  }
  // Non-overlapping, left to right, up to the very end.
  EXPECT_EQ(Flatten(CollectAll(u"aaaaa", u"aa", 10)),
            (std::vector<Found>{{0, 2, u"aa", 1}, {2, 4, u"aa", 1}}));
  EXPECT_EQ(CollectAll(u"xxab", u"ab", 10).size(), 1u);
  EXPECT_TRUE(CollectAll(u"a", u"ab", 10).empty());
}

TEST(RegexSingleSearches, FindNextFindPrevAndWholeMatch) {
  const std::u16string text = u"cat dog\ncat bird cat";
  RegexPtr regex = BuildRegex(u"cat", true, false);
  // Find / Next from the caret, then from the start.
  RegexFound next = FindNextMatch(text, *regex, 1);
  ASSERT_TRUE(next.match);
  EXPECT_EQ(next.match->start, 8);
  EXPECT_EQ(next.match->line, 2);
  next = FindNextMatch(text, *regex, 18);
  ASSERT_TRUE(next.match);
  EXPECT_EQ(next.match->start, 0);
  RegexPtr none = BuildRegex(u"cow", true, false);
  EXPECT_FALSE(FindNextMatch(text, *none, 3).match);
  // Find / Next searches the sub-range: '^' matches at the caret.
  RegexPtr anchored = BuildRegex(u"^\\w+", true, false);
  next = FindNextMatch(text, *anchored, 4);
  ASSERT_TRUE(next.match);
  EXPECT_EQ(next.match->text, u"dog");

  // Find Prev: the last match wholly before the anchor, else the last one of the text.
  RegexFound prev = FindPrevMatch(text, *regex, 17);
  ASSERT_TRUE(prev.match);
  EXPECT_EQ(prev.match->start, 8);
  prev = FindPrevMatch(text, *regex, 10);
  ASSERT_TRUE(prev.match);
  EXPECT_EQ(prev.match->start, 0);
  prev = FindPrevMatch(text, *regex, 2);
  ASSERT_TRUE(prev.match);
  EXPECT_EQ(prev.match->start, 17);
  EXPECT_EQ(prev.match->line, 2);
  EXPECT_FALSE(FindPrevMatch(text, *none, 5).match);
  // Find Prev enumerates with iterator semantics: '^' only at the start of the text.
  prev = FindPrevMatch(u"aaa", *BuildRegex(u"^a", true, false), 3);
  ASSERT_TRUE(prev.match);
  EXPECT_EQ(prev.match->start, 0);

  // Replace's check: the selection must match as a whole.
  RegexPtr groups = BuildRegex(u"(\\w+)@(x)?(\\w+)", true, false);
  std::optional<RegexCaptures> captures = MatchWhole(*groups, u"me@home");
  ASSERT_TRUE(captures);
  EXPECT_EQ(*captures, (RegexCaptures{u"me@home", u"me", std::nullopt, u"home"}));
  EXPECT_FALSE(MatchWhole(*groups, u"me@home!"));
  EXPECT_FALSE(MatchWhole(*groups, u" me@home"));
  EXPECT_TRUE(MatchWhole(*BuildRegex(u"a|ab", true, false), u"ab"));
}

}  // namespace
}  // namespace nebro
