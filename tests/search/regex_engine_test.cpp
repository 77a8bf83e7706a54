#include "search/regex_engine.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace nebro::search {
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

// The comparison with std::wregex covers ECMAScript on ASCII text; these are the readings it
// cannot check: non-ASCII text, line terminators beyond CR and LF, and the compile options.
TEST(RegexBuild, CompileOptionsFollowEcmaScript) {
  std::string error;
  for (std::u16string_view bad : {u"(", u"[a", u"a)", u"*a", u"\\C", u"(?<n>a)(?<n>b)"}) {
    EXPECT_FALSE(BuildRegex(bad, true, false, &error)) << std::string(bad.begin(), bad.end());
  }
  EXPECT_FALSE(error.empty());

  // Case folding beyond ASCII; \w stays ASCII, as in ECMAScript.
  EXPECT_EQ(Texts(CollectAll(u"une \u00C9cole, l'\u00E9cole", u"\u00C9COLE", 10, false)),
            (std::vector<std::u16string>{u"\u00C9cole", u"\u00E9cole"}));
  EXPECT_EQ(Texts(CollectAll(u"caf\u00E9 ok", u"\\w+", 10)), (std::vector<std::u16string>{u"caf", u"ok"}));
  // `.` stops at every ECMAScript line terminator.
  EXPECT_EQ(Texts(CollectAll(u"ab\rcd\nef\u2028gh\u2029ij", u".+", 10)),
            (std::vector<std::u16string>{u"ab", u"cd", u"ef", u"gh", u"ij"}));
  // Empty classes.
  EXPECT_TRUE(CollectAll(u"abc", u"[]", 10).empty());
  EXPECT_EQ(CollectAll(u"ab", u"[^]", 10).size(), 2u);

  // The whole-word wrapping is textual: a pattern can close the wrapper's group itself.
  EXPECT_TRUE(BuildRegex(u"a)(?:b", true, true));
  RegexPtr groups = BuildRegex(u"(a)(?:b)(c(d))", true, false);
  ASSERT_TRUE(groups);
  EXPECT_EQ(RegexGroupCount(*groups), 3u);
}

TEST(RegexFindBatch, LineNumbersCursorAndSubRanges) {
  // Each sub-range starts the input (the comparison with std::wregex covers '^', '\b' and empty
  // matches); a look-behind sees nothing before it either.
  EXPECT_EQ(Texts(CollectAll(u"ab", u"a|(?<=a)b", 10)), std::vector<std::u16string>{u"a"});

  // Lines count LF only: CR alone starts no line.
  const std::u16string_view text = u"one two\nthree\r\nfour\rfive";
  std::vector<int64_t> lines;
  for (const RegexMatch& m : CollectAll(text, u"\\w+", 2)) lines.push_back(m.line);
  EXPECT_EQ(lines, (std::vector<int64_t>{1, 1, 2, 3, 3}));

  // A context reused with a cursor that moves back still counts lines from the start.
  RegexPtr regex = BuildRegex(u"\\w+", true, false);
  FindBatchContext words;
  uint64_t cursor = 14;
  RegexBatch late = FindBatch(text, *regex, cursor, 1, words);
  ASSERT_EQ(late.matches.size(), 1u);
  EXPECT_EQ(late.matches[0].line, 3);
  EXPECT_EQ(cursor, 19u);
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
  auto run = [](std::u16string_view text, std::u16string_view pattern, const std::atomic<bool>* cancel) {
    FindBatchContext context;
    context.cancel = cancel;
    uint64_t cursor = 0;
    RegexBatch batch = FindBatch(text, *BuildRegex(pattern, true, false), cursor, 10, context);
    EXPECT_TRUE(batch.matches.empty());
    EXPECT_EQ(cursor, 0u);
    return batch.status;
  };
  // A flag set before the call: no search at all.
  const std::atomic<bool> cancelled{true};
  EXPECT_EQ(run(u"aaa", u"a", &cancelled), RegexStatus::Cancelled);

  // A flag set while one search crawls over a long text (quadratic in the run of a's) stops that
  // very search.
  std::atomic<bool> stop{false};
  std::thread canceller([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    stop = true;
  });
  EXPECT_EQ(run(std::u16string(200'000, u'a') + u"xc", u"(a|b)*c", &stop), RegexStatus::Cancelled);
  canceller.join();

  // Catastrophic backtracking hits the engine's limit instead of running for ever.
  EXPECT_EQ(run(std::u16string(5000, u'a') + u"b", u"(a+)+$", nullptr), RegexStatus::TooComplex);
}

TEST(RegexFindBatch, MatchesOfSeveralMegabytes) {
  std::u16string text;
  while (text.size() < (5u << 20)) text += u"Some prose, and a line of it.\n";
  for (std::u16string_view pattern : {u"[\\s\\S]*", u"(?:.|\\n)*"}) {
    const std::vector<RegexMatch> all = CollectAll(text, pattern, 1);
    ASSERT_FALSE(all.empty());
    EXPECT_EQ(all[0].start, 0);
    EXPECT_EQ(all[0].text.size(), text.size());
  }
  // One line of 20 million units.
  const std::vector<RegexMatch> line = CollectAll(std::u16string(20'000'000, u'q'), u".*", 5);
  ASSERT_EQ(line.size(), 1u);
  EXPECT_EQ(line[0].end, 20'000'000);
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
      auto spans = [&text](std::u16string_view pattern) {
        std::vector<int64_t> out;
        ForEachMatch(text, *BuildRegex(pattern, true, false), [&](const std::vector<RegexSpan>& g, std::u16string_view) {
          out.insert(out.end(), {g[0].start, g[0].end});
          return true;
        });
        return out;
      };
      EXPECT_EQ(spans(literal), spans(u"(?:" + std::u16string(literal) + u")"));
    }
  }
}

TEST(RegexSingleSearches, FindNextFindPrevAndWholeMatch) {
  const std::u16string text = u"cat dog\ncat bird cat";
  RegexPtr cat = BuildRegex(u"cat", true, false);
  RegexPtr cow = BuildRegex(u"cow", true, false);
  auto start = [](const RegexFound& found) { return found.match ? found.match->start : -1; };
  // Find / Next from the caret, else from the start (the plain steps both ways, on the real window:
  // regex_search_guitest); it searches the sub-range, so '^' matches at the caret.
  EXPECT_EQ(FindNextMatch(text, *cat, 1).match->line, 2);
  EXPECT_EQ(start(FindNextMatch(text, *cat, 18)), 0);
  EXPECT_EQ(start(FindNextMatch(text, *cow, 3)), -1);
  EXPECT_EQ(FindNextMatch(text, *BuildRegex(u"^\\w+", true, false), 4).match->text, u"dog");

  // Find Prev: the last match wholly before the anchor, else the last one of the text; it
  // enumerates with iterator semantics, so '^' only at the start of the text.
  EXPECT_EQ(start(FindPrevMatch(text, *cat, 10)), 0);
  EXPECT_EQ(start(FindPrevMatch(text, *cat, 2)), 17);
  EXPECT_EQ(FindPrevMatch(text, *cat, 2).match->line, 2);
  EXPECT_EQ(start(FindPrevMatch(text, *cow, 5)), -1);
  EXPECT_EQ(start(FindPrevMatch(u"aaa", *BuildRegex(u"^a", true, false), 3)), 0);

  // Replace's check: the selection must match as a whole.
  RegexPtr groups = BuildRegex(u"(\\w+)@(x)?(\\w+)", true, false);
  EXPECT_EQ(MatchWhole(*groups, u"me@home"), (RegexCaptures{u"me@home", u"me", std::nullopt, u"home"}));
  EXPECT_FALSE(MatchWhole(*groups, u"me@home!"));
  EXPECT_FALSE(MatchWhole(*groups, u" me@home"));
  EXPECT_TRUE(MatchWhole(*BuildRegex(u"a|ab", true, false), u"ab"));
}

}  // namespace
}  // namespace nebro::search
