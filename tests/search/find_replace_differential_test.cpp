// The fast scans against plain reference scans written straight from the rules, over random
// texts built from pieces that stress the edge cases (case pairs, multi-byte letters, a
// character outside the BMP, word and non-word neighbours, line ends).
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "common/utf.h"
#include "search/find_replace_replace.h"
#include "search/find_replace_search.h"
#include "search/find_replace_text.h"

namespace nebro::search {
namespace {

using namespace find_replace_internal;

const std::vector<std::string> kPieces = {
    "a", "A", "b", "B", "ab", "AB", "_", " ", "-", "1", "\n", "\r\n",
    "\xC3\xA9", "\xC3\x89", "\xE4\xB8\xAD", "\xF0\x9F\x98\x80", "\xE2\x84\xAA", "k"};

std::string RandomText(std::mt19937& rng, int pieces) {
  std::uniform_int_distribution<size_t> pick(0, kPieces.size() - 1);
  std::string s;
  for (int i = 0; i < pieces; ++i) s += kPieces[pick(rng)];
  return s;
}

// The editor's search, one character position after another, folding every character.
std::vector<FindMatch> ReferenceMatchList(const std::string& doc, const std::string& find,
                                          bool matchCase, bool wholeWord) {
  std::vector<FindMatch> out;
  const std::string want = matchCase ? find : FoldUtf8(find);
  size_t pos = 0;
  while (pos < doc.size()) {
    size_t p = pos;
    std::string got;
    while (got.size() < want.size() && p < doc.size()) {
      const size_t w = EditorCharWidth(doc, p);
      got += matchCase ? doc.substr(p, w) : FoldUtf8(doc.substr(p, w));
      p += w;
    }
    if (got == want && (!wholeWord || IsEditorWordAt(doc, pos, p))) {
      out.push_back({static_cast<int64_t>(pos), static_cast<int64_t>(p)});
      pos = p;
    } else {
      pos += EditorCharWidth(doc, pos);
    }
  }
  return out;
}

// The dialog's wide-character Replace All, literally: lower-case copies of both sides, a left to
// right scan, neighbours tested for letters, digits and '_'.
std::string ReferenceReplaceAll(const std::string& range, const std::string& find,
                                const std::string& replace, bool matchCase, bool wholeWord,
                                int* count) {
  const std::u16string original = Utf8ToUtf16(range);
  std::u16string hay = matchCase ? original : LowerUtf16(original);
  const std::u16string needle = matchCase ? Utf8ToUtf16(find) : LowerUtf16(Utf8ToUtf16(find));
  const auto codePointBefore = [&](size_t i) -> char32_t {
    if (i == 0) return 0;
    if (i >= 2 && hay[i - 1] >= 0xDC00 && hay[i - 1] <= 0xDFFF)
      return 0x10000 + ((hay[i - 2] - 0xD800) << 10) + (hay[i - 1] - 0xDC00);
    return hay[i - 1];
  };
  const auto codePointAt = [&](size_t i) -> char32_t {
    if (i >= hay.size()) return 0;
    if (hay[i] >= 0xD800 && hay[i] <= 0xDBFF)
      return 0x10000 + ((hay[i] - 0xD800) << 10) + (hay[i + 1] - 0xDC00);
    return hay[i];
  };
  const auto word = [](char32_t c) { return c == '_' || (c != 0 && IsAlnumChar(c)); };
  std::u16string out;
  *count = 0;
  size_t i = 0;
  while (i < hay.size()) {
    if (hay.compare(i, needle.size(), needle) == 0 &&
        (!wholeWord || (!word(codePointBefore(i)) && !word(codePointAt(i + needle.size()))))) {
      out += Utf8ToUtf16(replace);
      i += needle.size();
      ++*count;
    } else {
      out += original[i++];
    }
  }
  return Utf16ToUtf8(out);
}

TEST(FindReplaceDifferential, FastScansAgreeWithPlainScans) {
  std::mt19937 rng(20240611);
  for (int round = 0; round < 3000; ++round) {
    const std::string doc = RandomText(rng, 1 + round % 40);
    const std::string find = RandomText(rng, 1 + round % 3);
    for (int flags = 0; flags < 4; ++flags) {
      const bool matchCase = flags & 1;
      const bool wholeWord = flags & 2;
      SCOPED_TRACE(::testing::Message() << "doc=\"" << doc << "\" find=\"" << find
                                        << "\" case=" << matchCase << " word=" << wholeWord);
      ASSERT_EQ(BuildMatchList(doc, find, FindTextOptions{matchCase, wholeWord}),
                ReferenceMatchList(doc, find, matchCase, wholeWord));
      int count = 0;
      const std::string expected = ReferenceReplaceAll(doc, find, "<>", matchCase, wholeWord, &count);
      const auto got = ReplaceAllLiteral(doc, find, "<>", ReplaceAllOptions{matchCase, wholeWord, false});
      ASSERT_EQ(got.newText, expected);
      ASSERT_EQ(got.count, count);
      for (const auto& r : got.replaced) ASSERT_EQ(got.newText.substr(r.start, r.end - r.start), "<>");
    }
  }
}

}  // namespace
}  // namespace nebro::search
