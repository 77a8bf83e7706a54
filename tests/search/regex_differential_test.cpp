// Our engine against the standard library's ECMAScript wide regex on short ASCII texts (short, so
// that std::wregex's recursion cannot overflow the stack). wchar_t is UTF-32 here, so on ASCII
// its positions are UTF-16 positions too.
#include "search/regex_engine.h"
#include "search/regex_replace.h"

#include <gtest/gtest.h>

#include <regex>

namespace nebro::search {
namespace {

// clang-format off
const char* const kPatterns[] = {
    "a", "abc", "a|b", "ab|a", "a|ab", "x*", "a*", "a+?", "a*?b", "(a|ab)(c|bcd)(d*)",
    "^a", "^", "$", "a$", "^$", "\\b", "\\B", "\\bcat\\b", "\\w+", "\\W+", "\\d+", "\\D",
    "\\s+", "\\S+", ".", ".+", ".*", "[a-c]+", "[^a-c]+", "[A-Z][a-z]+", "(\\w)\\1",
    "(a)|b", "(a)?b", "(?:ab)+", "(ab){2}", "a{2,3}", "a{2,}", "a{0,1}b", "(?=a)\\w", "(?!a)\\w",
    "\\w+(?=\\.)", "(\\d+)\\.(\\d+)", "([a-z]+)@([a-z]+)\\.com", "\\.", "\\(", "[.]", "[\\]]",
    "[\\w.]+", "a.c", "(a*)*b", "(a+|b)*", "(a|b|)+c", "\\bthe\\b", "e\\b", "\\x41", "\\u0062",
    "\\t", "\\n", "\\r\\n", "[\\s\\S]", "(x)?(y)?z", "([ab])\\1*", "\\d{3}-\\d{4}",
    "[^\\n]+", "(?:a|b)*?c", "q(?!u)", "^\\w+", "\\w+$", "foo|foobar", "(foo|foobar)bar",
};

const char* const kTexts[] = {
    "", "a", "aaa", "abc abcd abd", "The cat sat on the mat; concatenate the Cat.",
    "call 555-1234 or 555-9876 now", "version 1.25 and 3.5 not 7.",
    "john@example.com, mary@test.com; bad@site", "line one\nline two\r\nline three\rend",
    "  tabs\tand\t\tspaces  ", "aabbaa abab baab", "xyz yz z xz", "acbcdabcd abcd",
    "Qatar quiet qi Iraq", "foobarbar foobar foo", "ABC abc AbC", "a.b(c)d]e[f",
};
// clang-format on

std::wstring Wide(std::string_view s) { return std::wstring(s.begin(), s.end()); }
std::u16string U16(std::string_view s) { return std::u16string(s.begin(), s.end()); }

using Spans = std::vector<std::pair<int64_t, int64_t>>;

// FindBatch's rules written over std::wregex: each search covers [pos, end) as its own input.
Spans ReferenceFindBatches(const std::wstring& text, const std::wregex& re, size_t want) {
  Spans all;
  size_t cursor = 0;
  for (int guard = 0; guard < 200; ++guard) {
    const size_t batchStart = cursor;
    size_t pos = cursor;
    size_t found = 0;
    while (found < want && pos < text.size()) {
      std::wsmatch m;
      if (!std::regex_search(text.cbegin() + pos, text.cend(), m, re)) break;
      const size_t start = pos + m.position(0);
      const size_t end = start + m.length(0);
      all.emplace_back(start, end);
      ++found;
      pos = end == batchStart && start == end ? end + 1 : end;
    }
    cursor = pos;
    if (found == 0) break;
  }
  return all;
}

Spans OurFindBatches(const std::u16string& text, Regex& regex, size_t want) {
  Spans all;
  FindBatchContext context;
  uint64_t cursor = 0;
  for (int guard = 0; guard < 200; ++guard) {
    RegexBatch batch = FindBatch(text, regex, cursor, want, context);
    EXPECT_EQ(batch.status, RegexStatus::Ok);
    if (batch.matches.empty()) break;
    for (const RegexMatch& m : batch.matches) all.emplace_back(m.start, m.end);
  }
  return all;
}

Spans ReferenceIterate(const std::wstring& text, const std::wregex& re) {
  Spans all;
  for (auto it = std::wsregex_iterator(text.begin(), text.end(), re); it != std::wsregex_iterator();
       ++it) {
    all.emplace_back(it->position(0), it->position(0) + it->length(0));
  }
  return all;
}

Spans OurIterate(const std::u16string& text, Regex& regex) {
  Spans all;
  ForEachMatch(text, regex, [&](const std::vector<RegexSpan>& groups, std::u16string_view) {
    all.emplace_back(groups[0].start, groups[0].end);
    return true;
  });
  return all;
}

TEST(RegexDifferential, AgreesWithStdWregexOnAsciiCorpus) {
  int compared = 0;
  int skipped = 0;
  for (const char* pattern : kPatterns) {
    for (bool matchCase : {true, false}) {
      for (bool wholeWord : {false, true}) {
        const std::string expression =
            wholeWord ? std::string("\\b(?:") + pattern + ")\\b" : std::string(pattern);
        std::wregex reference;
        try {
          auto flags = std::regex::ECMAScript;
          if (!matchCase) flags |= std::regex::icase;
          reference.assign(Wide(expression), flags);
        } catch (const std::regex_error&) {
          ++skipped;
          continue;
        }
        RegexPtr ours = BuildRegex(U16(pattern), matchCase, wholeWord);
        ASSERT_TRUE(ours) << "does not compile: " << expression;
        for (const char* text : kTexts) {
          SCOPED_TRACE(testing::Message() << "pattern /" << expression << "/"
                                          << (matchCase ? "" : "i") << " text \"" << text << "\"");
          const std::wstring wide = Wide(text);
          const std::u16string narrow = U16(text);
          for (size_t want : {1u, 3u, 50u}) {
            EXPECT_EQ(OurFindBatches(narrow, *ours, want),
                      ReferenceFindBatches(wide, reference, want))
                << "batches of " << want;
          }
          EXPECT_EQ(OurIterate(narrow, *ours), ReferenceIterate(wide, reference));
          // Replace All against regex_replace, with a template both read alike.
          const RegexReplaceAllResult replaced =
              ReplaceAllText(narrow, U16(pattern), u"<$&|$1>", matchCase, wholeWord, false);
          const std::wstring expected =
              std::regex_replace(wide, reference, std::wstring(L"<$&|$1>"));
          EXPECT_EQ(replaced.text, std::u16string(expected.begin(), expected.end()));
          ++compared;
        }
      }
    }
  }
  EXPECT_GT(compared, 3000);
  EXPECT_LT(skipped, 8);
}

// Where libstdc++ departs from ECMAScript, we keep to ECMAScript: a back-reference to a group
// that took no part in the match matches the empty string.
TEST(RegexDifferential, UnsetBackReferencesFollowEcmaScript) {
  const std::wregex reference(L"(a)(b)?\\2c", std::regex::ECMAScript);
  EXPECT_FALSE(std::regex_search(std::wstring(L"xacx"), reference));  // libstdc++ fails it
  RegexPtr ours = BuildRegex(u"(a)(b)?\\2c", true, false);
  ASSERT_TRUE(ours);
  EXPECT_EQ(OurIterate(u"xacx abbcx", *ours), (Spans{{1, 3}, {5, 9}}));
}

}  // namespace
}  // namespace nebro::search
