#include "document/recent_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <cwctype>
#include <string>

#include "document/document_texts.h"
#include "support/disk_fixtures.h"

using namespace nebro;
using namespace nebro::document;

namespace {

std::u16string Name(int i) { return u"/docs/file" + std::u16string(1, static_cast<char16_t>(u'0' + i)) + u".txt"; }

std::vector<std::u16string> Entries(const RecentFileList& list) {
  std::vector<std::u16string> out;
  for (int i = 0; i < kRecentFileCount; ++i) out.emplace_back(RecentFileEntry(list, i));
  return out;
}

// Files 9 (oldest) to 0 (newest) added in turn: entry i holds file i.
void Fill(RecentFileList& list) {
  ClearRecentFiles(list);
  for (int i = kRecentFileCount - 1; i >= 0; --i) AddRecentFile(list, Name(i));
}

std::vector<std::u16string> Names(std::initializer_list<int> indices) {
  std::vector<std::u16string> out;
  for (int i : indices) out.push_back(i < 0 ? u"" : Name(i));
  return out;
}

}  // namespace

TEST(RecentFiles, AddMovesToTopAndDropsTheOldest) {
  RecentFileList list;
  std::fill(&list[0][0], &list[0][0] + sizeof list / sizeof(char16_t), u'?');  // settle garbage
  ClearRecentFiles(list);
  EXPECT_FALSE(AddRecentFile(list, u""));
  EXPECT_EQ(Entries(list), std::vector<std::u16string>(10));

  // A path already at 4, in other letter case: moved to the top with the new spelling, the rest
  // keep their order, still ten entries.
  Fill(list);
  AddRecentFile(list, u"/DOCS/FILE4.TXT");
  std::vector<std::u16string> expected = Names({-1, 0, 1, 2, 3, 5, 6, 7, 8, 9});
  expected[0] = u"/DOCS/FILE4.TXT";
  EXPECT_EQ(Entries(list), expected);
  // Already on top: only its spelling changes.
  AddRecentFile(list, u"/docs/File4.txt");
  expected[0] = u"/docs/File4.txt";
  EXPECT_EQ(Entries(list), expected);
  // Reopening an entry passes the entry's own text.
  AddRecentFile(list, RecentFileEntry(list, 9));
  EXPECT_EQ(RecentFileEntry(list, 0), Name(9));
  EXPECT_EQ(RecentFileEntry(list, 1), u"/docs/File4.txt");

  // Empty entries (as a damaged settings file might have them) move along with the rest.
  ClearRecentFiles(list);
  for (const char16_t* path : {u"/a", u"/b", u"/c"}) AddRecentFile(list, path);
  std::fill(list[1], list[1] + kRecentFileUnits, u'\0');
  AddRecentFile(list, u"/d");
  EXPECT_EQ(Entries(list), (std::vector<std::u16string>{u"/d", u"/c", u"", u"/a", u"", u"", u"", u"", u"", u""}));
  AddRecentFile(list, u"/A");  // found at 3: entries 0 to 2 move down, the gap with them
  EXPECT_EQ(Entries(list), (std::vector<std::u16string>{u"/A", u"/d", u"/c", u"", u"", u"", u"", u"", u"", u""}));
}

TEST(RecentFiles, EntriesHoldAtMost259UnitsAndAreZeroFilled) {
  RecentFileList list;
  ClearRecentFiles(list);
  const std::u16string longPath = u"/" + std::u16string(400, u'x');
  AddRecentFile(list, longPath);
  EXPECT_EQ(RecentFileEntry(list, 0), longPath.substr(0, 259));
  EXPECT_EQ(list[0][259], u'\0');

  // The whole path is compared, not the stored part: a 300-unit path matches no entry.
  AddRecentFile(list, u"/short");
  AddRecentFile(list, longPath.substr(0, 300));
  EXPECT_EQ(RecentFileEntry(list, 0), RecentFileEntry(list, 2));
  EXPECT_EQ(RecentFileEntry(list, 1), u"/short");

  // A shorter path written where a longer one was leaves no tail of it; neither does removal.
  AddRecentFile(list, u"/z");
  auto zeroFrom = [](const char16_t* entry, int from) {
    return std::all_of(entry + from, entry + kRecentFileUnits, [](char16_t c) { return c == 0; });
  };
  EXPECT_TRUE(zeroFrom(list[0], 2));
  for (int i = 0; i < 7; ++i) AddRecentFile(list, Name(i));
  RemoveRecentFile(list, 0);
  EXPECT_TRUE(zeroFrom(list[9], 0));

  // A surrogate pair is never cut in half.
  std::u16string emoji = u"/" + std::u16string(257, u'e') + u"\U0001F600";  // units 258 and 259
  AddRecentFile(list, emoji);
  EXPECT_EQ(RecentFileEntry(list, 0), emoji.substr(0, 258));
}

TEST(RecentFiles, RemoveAndClear) {
  RecentFileList list;
  Fill(list);
  EXPECT_FALSE(RemoveRecentFile(list, 10));
  EXPECT_FALSE(RemoveRecentFile(list, -1));
  EXPECT_TRUE(RemoveRecentFile(list, 0));
  EXPECT_EQ(Entries(list), Names({1, 2, 3, 4, 5, 6, 7, 8, 9, -1}));
  Fill(list);
  RemoveRecentFile(list, 9);
  RemoveRecentFile(list, 4);
  EXPECT_EQ(Entries(list), Names({0, 1, 2, 3, 5, 6, 7, 8, -1, -1}));

  ClearRecentFiles(list);
  EXPECT_EQ(Entries(list), std::vector<std::u16string>(10));
  EXPECT_EQ(RecentFileEntry(list, 12), u"");
}

// Present and missing entries opened through the window: document_ops_guitest.
TEST(RecentFiles, OpeningAMissingEntryAsksToRemoveIt) {
  nebro::test::TempFolder folder;
  EXPECT_TRUE(PathExists(folder.Path()));
  EXPECT_FALSE(PathExists(""));
  EXPECT_EQ(RecentOpenFirstStep(u"", false), RecentOpenStep::Nothing);
  EXPECT_EQ(RecentMissingQuestion(u"/home/ann/caf\u00E9.txt"),
            "\"caf\xC3\xA9.txt\" no longer exists on disk.\n\n"
            "Remove it from the Recent Files list?");
}

TEST(RecentFiles, CaseFoldingAgreesWithTheLocaleOnTheAlphabetsItCovers) {
  // ASCII, Latin-1, Latin Extended-A, Greek and Cyrillic capitals equal their small forms;
  // nothing is ever equal to a character of another small form.
  std::setlocale(LC_ALL, "C.UTF-8");
  auto covered = [](char16_t c) {
    return (c >= 0x41 && c <= 0x17F && c != 0x130) || (c >= 0x391 && c <= 0x3AB) || (c >= 0x400 && c <= 0x42F);
  };
  for (char16_t c = 1; c < 0x500; ++c) {
    const std::u16string one(1, c);
    const auto lower = static_cast<char16_t>(std::towlower(c));
    if (covered(c)) {
      EXPECT_TRUE(EqualIgnoringCase(one, std::u16string(1, lower))) << std::hex << int{c};
    }
    for (int step : {1, 0x20, 0x50}) {
      const auto other = static_cast<char16_t>(c + step);
      if (EqualIgnoringCase(one, std::u16string(1, other))) {
        EXPECT_EQ(std::towlower(c), std::towlower(other)) << std::hex << int{c} << " " << int{other};
      }
    }
  }
  EXPECT_TRUE(EqualIgnoringCase(u"/Home/\u00C9T\u00C9/\u0416", u"/home/\u00E9t\u00E9/\u0436"));
  EXPECT_FALSE(EqualIgnoringCase(u"Stra\u00DFe", u"strasse"));  // no folding that changes length
  EXPECT_FALSE(EqualIgnoringCase(u"abc", u"abcd"));
  EXPECT_FALSE(EqualIgnoringCase(u"\u0130", u"i"));
}
