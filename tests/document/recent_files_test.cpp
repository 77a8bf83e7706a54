#include "document/recent_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "document/document_texts.h"
#include "../support/disk_fixtures.h"

using namespace nebro;

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

}  // namespace

TEST(RecentFiles, AddMovesToTopAndDropsTheOldest) {
  RecentFileList list;
  std::fill(&list[0][0], &list[0][0] + sizeof list / sizeof(char16_t), u'?');  // settle garbage
  ClearRecentFiles(list);
  EXPECT_FALSE(AddRecentFile(list, u""));
  EXPECT_EQ(Entries(list), std::vector<std::u16string>(10));

  AddRecentFile(list, u"/a.txt");
  AddRecentFile(list, u"/b.txt");
  EXPECT_EQ(RecentFileEntry(list, 0), u"/b.txt");
  EXPECT_EQ(RecentFileEntry(list, 1), u"/a.txt");
  EXPECT_EQ(RecentFileEntry(list, 2), u"");

  // An eleventh distinct file drops the oldest.
  Fill(list);
  AddRecentFile(list, u"/new.txt");
  std::vector<std::u16string> expected{u"/new.txt"};
  for (int i = 0; i < 9; ++i) expected.push_back(Name(i));
  EXPECT_EQ(Entries(list), expected);

  // A path already at 4, in other letter case: moved to the top with the new spelling, the rest
  // keep their order, still ten entries.
  Fill(list);
  AddRecentFile(list, u"/DOCS/FILE4.TXT");
  expected = {u"/DOCS/FILE4.TXT", Name(0), Name(1), Name(2), Name(3),
              Name(5), Name(6), Name(7), Name(8), Name(9)};
  EXPECT_EQ(Entries(list), expected);

  // Already on top: only its spelling changes.
  AddRecentFile(list, u"/docs/File4.txt");
  expected[0] = u"/docs/File4.txt";
  EXPECT_EQ(Entries(list), expected);

  // Reopening an entry passes the entry's own text.
  AddRecentFile(list, RecentFileEntry(list, 9));
  EXPECT_EQ(RecentFileEntry(list, 0), Name(9));
  EXPECT_EQ(RecentFileEntry(list, 1), u"/docs/File4.txt");
}

TEST(RecentFiles, EmptyEntriesStayWhereTheyAre) {
  RecentFileList list;
  ClearRecentFiles(list);
  AddRecentFile(list, u"/a");
  AddRecentFile(list, u"/b");
  AddRecentFile(list, u"/c");
  // Entry 1 emptied by hand (as a damaged settings file might have it): adding moves it along.
  std::fill(list[1], list[1] + kRecentFileUnits, u'\0');
  AddRecentFile(list, u"/d");
  EXPECT_EQ(Entries(list), (std::vector<std::u16string>{u"/d", u"/c", u"", u"/a", u"", u"", u"", u"", u"", u""}));
  // Found at 3: entries 0 to 2 move down, the gap moves with them.
  AddRecentFile(list, u"/A");
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
  for (int i = 0; i < 7; ++i) AddRecentFile(list, u"/fill" + std::u16string(1, static_cast<char16_t>(u'a' + i)));
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
  std::vector<std::u16string> expected;
  for (int i = 1; i < 10; ++i) expected.push_back(Name(i));
  expected.push_back(u"");
  EXPECT_EQ(Entries(list), expected);

  Fill(list);
  RemoveRecentFile(list, 9);
  EXPECT_EQ(RecentFileEntry(list, 8), Name(8));
  EXPECT_EQ(RecentFileEntry(list, 9), u"");
  RemoveRecentFile(list, 4);
  EXPECT_EQ(RecentFileEntry(list, 4), Name(5));
  EXPECT_EQ(RecentFileEntry(list, 7), Name(8));
  EXPECT_EQ(RecentFileEntry(list, 8), u"");

  ClearRecentFiles(list);
  EXPECT_EQ(Entries(list), std::vector<std::u16string>(10));
  EXPECT_EQ(RecentFileEntry(list, 12), u"");
  EXPECT_EQ(kTextClearRecent, "Clear the entire Recent Files list?");
  EXPECT_EQ(kTitleRecentClear, "Nebro - Recent Files");
}

TEST(RecentFiles, OpeningAMissingEntryAsksToRemoveIt) {
  nebro::test::TempFolder folder;
  const std::string present = folder / "here.txt";
  nebro::test::WriteBytes(present, "x");
  EXPECT_TRUE(PathExists(present));
  EXPECT_FALSE(PathExists(folder / "gone.txt"));
  EXPECT_FALSE(PathExists(""));

  EXPECT_EQ(RecentOpenFirstStep(u"", false), RecentOpenStep::Nothing);
  EXPECT_EQ(RecentOpenFirstStep(u"/x", true), RecentOpenStep::Load);
  EXPECT_EQ(RecentOpenFirstStep(u"/x", false), RecentOpenStep::AskRemoveMissing);
  EXPECT_EQ(RecentMissingQuestion(u"/home/ann/caf\u00E9.txt"),
            "\"caf\xC3\xA9.txt\" no longer exists on disk.\n\n"
            "Remove it from the Recent Files list?");
  EXPECT_EQ(kTitleRecentMissing, "Nebro \xC3\xA2\xE2\x82\xAC\xE2\x80\x9D Recent Files");
}

TEST(RecentFiles, CaseFoldingCoversCommonAlphabets) {
  EXPECT_TRUE(EqualIgnoringCase(u"/Home/ÉTÉ/Straße", u"/home/été/strasse") == false);  // no ß→ss
  EXPECT_TRUE(EqualIgnoringCase(u"/Home/ÉTÉ", u"/home/été"));
  EXPECT_TRUE(EqualIgnoringCase(u"ŁÓDŹ ĽUBICA Ÿ", u"łódź ľubica ÿ"));
  EXPECT_TRUE(EqualIgnoringCase(u"ΑΘΗΝΑ", u"αθηνα"));
  EXPECT_TRUE(EqualIgnoringCase(u"МОСКВА ЁЖ", u"москва ёж"));
  EXPECT_FALSE(EqualIgnoringCase(u"a×b", u"a÷b"));  // U+00D7 and U+00F7 are no letter pair
  EXPECT_FALSE(EqualIgnoringCase(u"abc", u"abcd"));
  EXPECT_FALSE(EqualIgnoringCase(u"İ", u"i"));
}
