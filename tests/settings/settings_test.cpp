#include "settings/settings.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstring>
#include <filesystem>

#include "../support/disk_fixtures.h"
#include "settings/data_folder.h"
#include "settings/histories.h"
#include "settings/temp_files.h"

using namespace nebro;
using namespace nebro::settings;
using namespace nebro::test;
namespace fs = std::filesystem;

namespace {

// The bytes of a record laid out by hand from the offset table.
struct HandRecord {
  std::string bytes = std::string(kSettingsRecordSize, '\0');
  void u32(size_t off, uint32_t v) { std::memcpy(&bytes[off], &v, 4); }
  void u8(size_t off, uint8_t v) { bytes[off] = static_cast<char>(v); }
  void text(size_t off, std::u16string_view t) {
    for (size_t i = 0; i < t.size(); ++i) {
      bytes[off + 2 * i] = static_cast<char>(t[i] & 0xFF);
      bytes[off + 2 * i + 1] = static_cast<char>(t[i] >> 8);
    }
  }
};

HandRecord DefaultsByHand() {
  HandRecord r;
  r.u32(4, 11);
  r.text(8, u"Consolas");
  for (size_t off : {138, 139, 140, 688, 691, 31470, 31483, 31484}) r.u8(off, 1);
  for (size_t off : {141, 145}) r.u32(off, 0x80000000u);
  r.u32(149, 920);
  r.u32(153, 660);
  for (size_t off : {10932, 10936, 10940, 10944}) r.u32(off, 1500);
  r.u32(10948, 21000);
  r.u32(10952, 29700);
  r.u32(10982, 4);
  r.u32(31471, 3000);
  r.u32(31475, 10000);
  r.u32(31479, 1);
  return r;
}

std::string FileOf(const std::string& record) {
  std::string file = "NEBR";
  const uint32_t header[3] = {15, 36687,
                              Fnv1a(reinterpret_cast<const unsigned char*>(record.data()), record.size())};
  file.append(reinterpret_cast<const char*>(header), sizeof header);
  return file + record;
}

}  // namespace

TEST(SettingsFile, DefaultsAndFieldsLandAtTheirOffsets) {
  AppSettings s;
  SetDefaultSettings(s);
  HandRecord expected = DefaultsByHand();
  EXPECT_EQ(EncodeSettingsRecord(s), expected.bytes);

  // Fields at the far end and at odd offsets.
  s.theme = 5;
  s.transparency = 30;
  s.soundOnNewLine = true;
  SetFieldText(s.lastFile, u"/home/u/a.txt");
  SetFieldText(s.regexPatternHistory[9], u"\\d+");
  SetFieldText(s.recentFiles[1], u"/x\u00e9");
  s.helpTopic = 7;
  expected.u32(0, 5);
  expected.u32(678, 30);
  expected.u8(36686, 1);
  expected.text(158, u"/home/u/a.txt");
  expected.text(10987 + 9 * 1024, u"\\d+");
  expected.text(31485 + 520, u"/x\u00e9");
  expected.u32(10972, 7);
  EXPECT_EQ(EncodeSettingsRecord(s), expected.bytes);

  TempFolder dir;
  const std::string path = dir.Path() + "/nebro.cfg";
  ASSERT_TRUE(SaveSettingsTo(path, s));
  const std::string onDisk = ReadBytes(path);
  EXPECT_EQ(onDisk.size(), 36703u);
  EXPECT_EQ(onDisk, FileOf(expected.bytes));

  AppSettings back;
  ASSERT_TRUE(LoadSettingsFrom(path, back));
  EXPECT_EQ(EncodeSettingsRecord(back), expected.bytes);
  EXPECT_EQ(FieldText(back.lastFile), u"/home/u/a.txt");
}

TEST(SettingsFile, BadFilesYieldDefaultsAndAreRewrittenAtTheNextSave) {
  TempFolder dir;
  const std::string path = dir.Path() + "/nebro.cfg";
  AppSettings s;
  SetDefaultSettings(s);
  s.theme = 3;
  ASSERT_TRUE(SaveSettingsTo(path, s));
  const std::string good = ReadBytes(path);
  const std::string defaults = EncodeSettingsRecord([] { AppSettings d; SetDefaultSettings(d); return d; }());

  auto loadsDefaults = [&](const std::string& bytes) {
    WriteBytes(path, bytes);
    AppSettings loaded;
    loaded.theme = 99;
    const bool ok = LoadSettingsFrom(path, loaded);
    return !ok && EncodeSettingsRecord(loaded) == defaults;
  };

  auto withVersion = [&good](uint32_t version) {
    std::string v = good;
    std::memcpy(&v[4], &version, 4);
    return v;
  };
  // Empty, one byte short, the header cut, another version; a flipped byte of the magic, the
  // size, the checksum or the record.
  std::vector<std::string> bad = {"", good.substr(0, good.size() - 1), good.substr(0, 10), withVersion(14), withVersion(16)};
  for (size_t at : {size_t(0), size_t(8), size_t(12), size_t(15), size_t(16), size_t(16 + 158), size_t(16 + 31484), good.size() - 1}) {
    bad.push_back(good);
    bad.back()[at] ^= 0x40;
  }
  for (const std::string& bytes : bad) EXPECT_TRUE(loadsDefaults(bytes)) << testing::PrintToString(bytes.substr(0, 16));
  EXPECT_FALSE(LoadSettingsFrom(dir.Path() + "/missing.cfg", s));
  // A pipe in the file's place gives the defaults at once instead of waiting for a writer.
  const std::string fifo = dir.Path() + "/fifo.cfg";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  AppSettings fromPipe;
  fromPipe.theme = 99;
  EXPECT_FALSE(LoadSettingsFrom(fifo, fromPipe));
  EXPECT_EQ(EncodeSettingsRecord(fromPipe), defaults);

  // Extra bytes behind the record are ignored.
  WriteBytes(path, good + "trailing junk");
  AppSettings loaded;
  EXPECT_TRUE(LoadSettingsFrom(path, loaded));
  EXPECT_EQ(loaded.theme, 3u);

  // A version-14 file is replaced by a version-15 file at the next save.
  WriteBytes(path, withVersion(14));
  LoadSettingsFrom(path, loaded);
  ASSERT_TRUE(SaveSettingsTo(path, loaded));
  EXPECT_EQ(ReadBytes(path).substr(4, 4), withVersion(15).substr(4, 4));
}

TEST(SettingsFile, FolderFollowsTheConfigurationRoot) {
  TempFolder dir;
  SetConfigRoot(dir.Path() + "/cfg");  // (the folder and the file in it: every GUI and start-up test)
  EXPECT_EQ(GetSettingsFolder(), dir.Path() + "/cfg/Nebro");

  const std::string pdf = MakeTempPdfPath();
  const std::string prefix = dir.Path() + "/cfg/Nebro/temp_";
  ASSERT_EQ(pdf.rfind(prefix, 0), 0u) << pdf;
  const std::string name = pdf.substr(prefix.size());
  EXPECT_EQ(name.size(), std::string("YYYYMMDD_HHMMSS_mmm.pdf").size()) << name;
  EXPECT_EQ(name.substr(8, 1) + name.substr(15, 1) + name.substr(19), "__.pdf") << name;

  // No root at all: the bare name in the current directory.
  SetConfigRoot("");
  EXPECT_EQ(GetSettingsFolder(), "");
  EXPECT_EQ(GetSettingsFilePath(), "nebro.cfg");
  EXPECT_EQ(MakeTempPdfPath(), "");
}

TEST(SettingsFile, CleanupDeletesOnlyOldTemporaryDocuments) {
  TempFolder dir;
  const uint64_t now = 20000000000000000ull;  // some fixed moment, in 100 ns ticks
  const uint64_t hour = 36000000000ull;
  const struct {
    const char* name;
    uint64_t age;
    bool kept;
  } cases[] = {
      {"temp_20260101_000000_000.pdf", 25 * hour, false},  {"temp_20260101_000000_001.HTML", 25 * hour, false},
      {"temp_20260101_000000_002.txt", 25 * hour, false},  {"temp_20260101_000000_003.docx", 25 * hour, true},
      {"temp_20260101_000000_004.pdf", 23 * hour, true},
      {"temp_20260101_000000_005.pdf", 24 * hour, true},  // exactly 24 hours to the tick is kept
      {"notes_20260101.pdf", 25 * hour, true},             {"temp_nodot", 25 * hour, true},
  };
  for (const auto& c : cases) {
    WriteBytes(dir / c.name, "x");
    ASSERT_TRUE(SetFileTime(dir / c.name, static_cast<int64_t>(now - c.age) * 100));
  }
  fs::create_directory(dir / "temp_20260101_000000_006.pdf");

  CleanupTempFilesIn(dir.Path(), now);
  for (const auto& c : cases) EXPECT_EQ(fs::exists(dir / c.name), c.kept) << c.name;
  EXPECT_TRUE(fs::is_directory(dir / "temp_20260101_000000_006.pdf"));
}

TEST(RecentLists, PushMovesToTheTopAndKeepsTen) {
  char16_t list[10][256] = {};
  for (char16_t c = u'a'; c <= u'j'; ++c) PushRecent(list, std::u16string(1, c));
  // Most recent first: j i h g f e d c b a
  EXPECT_EQ(FieldText(list[0]), u"j");
  EXPECT_EQ(FieldText(list[9]), u"a");

  PushRecent(list, u"f");  // at position 4
  const char16_t* expected[] = {u"f", u"j", u"i", u"h", u"g", u"e", u"d", u"c", u"b", u"a"};
  for (int i = 0; i < 10; ++i) EXPECT_EQ(FieldText(list[i]), expected[i]) << i;

  PushRecent(list, u"new");  // "a" falls out
  EXPECT_EQ(FieldText(list[0]), u"new");
  EXPECT_EQ(FieldText(list[9]), u"b");

  PushRecent(list, u"");  // nothing happens
  EXPECT_EQ(FieldText(list[0]), u"new");
  PushRecent(list, u"New");  // case matters here
  EXPECT_EQ(FieldText(list[1]), u"new");

  PushRecent(list, std::u16string(300, u'x'));
  EXPECT_EQ(FieldText(list[0]).size(), 255u);
}
