#include "document/file_load.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <thread>

#include "common/utf.h"
#include "document/document_texts.h"
#include "../support/disk_fixtures.h"

using namespace nebro;
using namespace nebro::document;
using namespace nebro::test;

namespace {

constexpr uint64_t kNoLimit = 1ull << 40;

LoadResult LoadBytes(const TempFolder& folder, const std::string& bytes) {
  WriteBytes(folder / "file.txt", bytes);
  return LoadDocumentFile(folder / "file.txt", kNoLimit);
}

bool HasTrace(const LoadResult& r, std::string_view line) {
  return std::find(r.trace.begin(), r.trace.end(), line) != r.trace.end();
}

std::string With(std::string s, size_t at, char c) {
  s[at] = c;
  return s;
}

}  // namespace

TEST(FileLoad, BinaryRefusalsLookAtSignaturesAndTheFirstKilobyte) {
  TempFolder folder;
  for (const std::string signature : {"%PDF", "MZ", "PK", "\x89PNG", "\xFF\xD8", "GIF", "BM",
                                      "\xD0\xCF\x11\xE0", "\x7F" "ELF", "RIFF"}) {
    const LoadResult r = LoadBytes(folder, signature + "text that follows");
    EXPECT_EQ(r.decision, LoadDecision::KnownBinary) << signature;
    EXPECT_EQ(r.message + "|" + r.title, "Cannot open binary file.\n\n|Nebro - Cannot Open");
  }
  // Two NULs, and five control bytes (TAB, LF and CR are none), are still text.
  std::string two(2000, 'a');
  two[0] = two[500] = '\0';
  const std::string five = "\x01\x02\x0C\x1B\x1F" + std::string(2000, '\t') + "\r\n";
  struct Case {
    std::string bytes;
    LoadDecision decision;
  } cases[] = {
      // Fewer than 4 bytes: the signatures are not looked at.
      {"MZ", LoadDecision::Loaded}, {"GIF", LoadDecision::Loaded},
      {"MZab", LoadDecision::KnownBinary}, {"PKZIP notes\n", LoadDecision::KnownBinary},
      {two, LoadDecision::Loaded}, {five, LoadDecision::Loaded},
      // The third NUL or sixth control byte counts up to byte 1,024 and not beyond.
      {With(two, 1023, '\0'), LoadDecision::TooManyNulls}, {With(two, 1024, '\0'), LoadDecision::Loaded},
      {With(five, 1023, '\x07'), LoadDecision::TooManyControls}, {With(five, 1024, '\x07'), LoadDecision::Loaded},
      // Two NULs and four other control bytes make six control bytes; six control bytes before
      // three NULs still give the NUL rule, which runs first over the whole range.
      {std::string("a\0b\0\x01\x02\x03\x04", 8), LoadDecision::TooManyControls},
      {std::string("\x01\x02\x03\x04\x05\x06 \0\0\0", 10), LoadDecision::TooManyNulls},
      // A UTF-16 mark bypasses every binary test.
      {"\xFE\xFF" + std::string("\x01\x02\x03\x04\x05\x06\x07\x08", 8), LoadDecision::Loaded},
      {"\xFF\xFE" "MZ" + std::string(10, '\0'), LoadDecision::Loaded},
  };
  for (const Case& c : cases) {
    const LoadResult r = LoadBytes(folder, c.bytes);
    EXPECT_EQ(r.decision, c.decision) << testing::PrintToString(c.bytes.substr(0, 12));
    if (c.decision == LoadDecision::Loaded && c.bytes[0] != '\xFE' && c.bytes[0] != '\xFF') {
      EXPECT_TRUE(r.text.view() == c.bytes);  // zero and control bytes reach the editor unchanged
    }
  }
  EXPECT_EQ(LoadBytes(folder, With(two, 1023, '\0')).message,
            "This file appears to be a binary file and cannot be opened as text.");
  const LoadResult controls = LoadBytes(folder, With(five, 1023, '\x07'));
  EXPECT_EQ(controls.message + "|" + controls.title,
            "This file contains binary control characters and cannot be opened as text.|Nebro - Cannot Open");
}

TEST(FileLoad, DecodingAgreesWithTheSharedConverterOnRandomUnits) {
  // Many random unit sequences, rich in surrogates, through the file decoder and through the
  // program's UTF-16 helper: both must give the same bytes in both byte orders.
  uint32_t seed = 12345;
  auto next = [&] { return seed = seed * 1103515245u + 12345u; };
  for (int round = 0; round < 300; ++round) {
    std::u16string units;
    const int n = static_cast<int>(next() % 40);
    for (int i = 0; i < n; ++i) {
      const uint32_t pick = next() >> 8;
      const char16_t kinds[] = {static_cast<char16_t>(pick % 0x80), static_cast<char16_t>(0xD800 + pick % 0x800),
                                static_cast<char16_t>(0x800 + pick % 0xD000), static_cast<char16_t>(0x80 + pick % 0x780)};
      units.push_back(kinds[pick % 4]);
    }
    std::string le, be;
    for (char16_t u : units) {
      le += {static_cast<char>(u & 0xFF), static_cast<char>(u >> 8)};
      be += {static_cast<char>(u >> 8), static_cast<char>(u & 0xFF)};
    }
    const std::string expected = Utf16ToUtf8(units);
    for (bool bigEndian : {false, true}) {
      const std::string& bytes = bigEndian ? be : le;
      const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
      const size_t size = Utf16BytesToUtf8Size(p, bytes.size(), bigEndian);
      std::string out(size, '\0');
      ASSERT_EQ(Utf16BytesToUtf8(p, bytes.size(), bigEndian, out.data()), size);
      EXPECT_EQ(out, expected) << "round " << round;
    }
  }
}

TEST(FileLoad, OpenFailuresNameTheErrnoAndThePath) {
  TempFolder folder;
  const std::string missing = folder / "missing.txt";
  LoadResult r = LoadDocumentFile(missing, kNoLimit);
  EXPECT_EQ(r.decision, LoadDecision::OpenFailed);
  EXPECT_EQ(r.error, ENOENT);
  EXPECT_EQ(r.title, "Nebro - Error");
  EXPECT_EQ(r.message, "File not found (error 2).\n\n" + missing);
  EXPECT_TRUE(HasTrace(r, "Nebro: ERROR - Failed to open file, error code: 2"));
  EXPECT_FALSE(r.lock.Valid());

  WriteBytes(folder / "plain", "x");
  r = LoadDocumentFile(folder / "plain" + "/below", kNoLimit);
  EXPECT_EQ(r.message, "File not found (error 20).\n\n" + folder / "plain" + "/below");
  r = LoadDocumentFile(folder.Path(), kNoLimit);
  EXPECT_EQ(r.decision, LoadDecision::OpenFailed);
  EXPECT_EQ(r.message, "Cannot open file (error 21).\n\n" + folder.Path());

  EXPECT_EQ(OpenErrorText(EACCES, "/x"),
            "Access denied (error 13).\n\n"
            "The file may be read-only, protected, or your account lacks permission.");
  EXPECT_EQ(OpenErrorText(EPERM, "/x").substr(0, 25), "Access denied (error 1).\n");
  EXPECT_EQ(OpenErrorText(EIO, "/x"), "Cannot open file (error 5).\n\n/x");

  // A path that is not UTF-8 is shown with U+FFFD; the text stops at 511 UTF-16 units and never
  // inside a character.
  EXPECT_EQ(OpenErrorText(ENOENT, "/a\xFF"), "File not found (error 2).\n\n/a\xEF\xBF\xBD");
  EXPECT_EQ(OpenErrorText(ENOENT, "/" + std::string(600, 'p')).size(), 511u);
  std::string emoji;
  for (int i = 0; i < 300; ++i) emoji += "\xF0\x9F\x98\x80";  // two units each
  const std::string cut = OpenErrorText(ENOENT, emoji);
  const std::u16string units = Utf8ToUtf16(cut);
  EXPECT_LE(units.size(), 511u);
  EXPECT_GE(units.size(), 510u);
  EXPECT_EQ(Utf16ToUtf8(units), cut);  // whole characters only
}

TEST(FileLoad, SizesAreSixtyFourBitAndTooLargeIsRefused) {
  TempFolder folder;
  // 4 GiB + 10 bytes, sparse: read modulo 4 GiB it would look like a 10-byte file.
  const std::string path = folder / "huge.txt";
  const int fd = open(path.c_str(), O_CREAT | O_WRONLY, 0644);
  ASSERT_GE(fd, 0);
  ASSERT_EQ(ftruncate(fd, (4ll << 30) + 10), 0);
  close(fd);
  LoadResult r = LoadDocumentFile(path, 1 << 20);
  EXPECT_EQ(r.decision, LoadDecision::TooLarge);
  EXPECT_EQ(r.fileSize, (4ull << 30) + 10);
  EXPECT_EQ(r.message,
            "File is too large to open (4294967306 bytes).\n\n"
            "The editor can hold at most 1048576 bytes on this computer.");
  // The title is kept with the three characters U+00E2 U+20AC U+201D users have always seen.
  EXPECT_EQ(Utf8ToUtf16(r.title), u"Nebro \u00E2\u20AC\u201D Error");
  EXPECT_FALSE(r.lock.Valid());
  EXPECT_EQ(r.text.block, nullptr);  // nothing was read
  EXPECT_GT(DefaultMaxLoadBytes(), 1ull << 20);
}

TEST(FileLoad, ShortReadIsReportedAsReadFailure) {
  // sysfs files claim 4096 bytes and deliver fewer: a file that ends before its size. Only
  // read-only attributes, so nothing is ever opened for writing here.
  for (const char* path : {"/sys/kernel/uevent_seqnum", "/sys/kernel/mm/transparent_hugepage/hpage_pmd_size",
                           "/sys/kernel/address_bits"}) {
    struct stat st {};
    if (stat(path, &st) != 0 || st.st_size != 4096 || (st.st_mode & 0222) != 0) continue;
    LoadResult r = LoadDocumentFile(path, kNoLimit);
    EXPECT_EQ(r.decision, LoadDecision::ReadFailed) << path;
    EXPECT_EQ(r.message, "Cannot read file.");
    EXPECT_EQ(r.title, kTitleErrorMangled);
    EXPECT_TRUE(HasTrace(r, "Nebro: ERROR - Cannot read file"));
    EXPECT_FALSE(r.lock.Valid());
    return;
  }
  GTEST_SKIP() << "no sysfs attribute that reads shorter than its size";
}

TEST(FileLoad, KeepsTheFileOpenForWritingAndLocked) {
  TempFolder folder;
  const std::string path = folder / "doc.txt";
  WriteBytes(path, "hello\n");
  LoadResult first = LoadDocumentFile(path, kNoLimit);
  ASSERT_EQ(first.decision, LoadDecision::Loaded);
  EXPECT_TRUE(first.locked);
  EXPECT_FALSE(first.readOnly);
  EXPECT_EQ(fcntl(first.lock.Get(), F_GETFL) & O_ACCMODE, O_RDWR);
  EXPECT_TRUE(HasTrace(first, "Nebro: File opened successfully"));

  // A second open, here or in another process, is refused while the first holds the lock.
  LoadResult second = LoadDocumentFile(path, kNoLimit);
  EXPECT_EQ(second.decision, LoadDecision::OpenFailed);
  EXPECT_EQ(second.error, kOpenErrorLocked);
  EXPECT_EQ(second.message, "File is already open by another program.\nPlease close it first.");
  EXPECT_EQ(second.title, "Nebro - Error");
  EXPECT_FALSE(second.lock.Valid());

  const pid_t child = fork();
  if (child == 0) _exit(OpenDocumentFile(path).error == kOpenErrorLocked ? 0 : 1);
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the other process was not refused";

  // Dropping the lock (closing the file) lets the next open through.
  int fd = first.lock.Release();
  CloseDocumentLock(fd);
  EXPECT_EQ(fd, -1);
  EXPECT_EQ(LoadDocumentFile(path, kNoLimit).decision, LoadDecision::Loaded);

  // Opening and reading split across threads, as the window does.
  WriteBytes(path, std::string("\xFF\xFEx\0", 4));
  OpenedDocument opened = OpenDocumentFile(path);
  ASSERT_TRUE(opened.fd.Valid());
  LoadResult r;
  std::thread worker([&] { r = ReadDocumentFile(std::move(opened), kNoLimit); });
  worker.join();
  EXPECT_EQ(r.text.view(), "x");
  EXPECT_TRUE(r.lock.Valid());

  // A refusal closes the file it had opened: the lock goes with it.
  const std::string binary = folder / "bin";
  WriteBytes(binary, "%PDF-1.7");
  EXPECT_EQ(LoadDocumentFile(binary, kNoLimit).decision, LoadDecision::KnownBinary);
  EXPECT_EQ(LoadDocumentFile(binary, kNoLimit).decision, LoadDecision::KnownBinary);  // not "locked"
}

TEST(FileLoad, ReadOnlyFilesAndDisksOpenReadOnlyWithoutLock) {
  TempFolder folder;
  const std::string path = folder / "ro.txt";
  WriteBytes(path, "read me\n");
  chmod(path.c_str(), 0444);
  LoadResult r;
  {
    AsNobody nobody;
    r = LoadDocumentFile(path, kNoLimit);
  }
  ASSERT_EQ(r.decision, LoadDecision::Loaded);
  EXPECT_TRUE(r.readOnly);
  EXPECT_FALSE(r.locked);
  EXPECT_EQ(r.text.view(), "read me\n");
  EXPECT_TRUE(HasTrace(r, "Nebro: Write access denied, retrying read-only"));
  EXPECT_EQ(fcntl(r.lock.Get(), F_GETFL) & O_ACCMODE, O_RDONLY);
  // Nothing is locked, so another open goes through.
  EXPECT_EQ(LoadDocumentFile(path, kNoLimit).decision, LoadDecision::Loaded);

  // Neither readable nor writable: the access-denied text with the errno.
  chmod(path.c_str(), 0000);
  {
    AsNobody nobody;
    r = LoadDocumentFile(path, kNoLimit);
  }
  EXPECT_EQ(r.error, EACCES);
  EXPECT_EQ(r.message.substr(0, 26), "Access denied (error 13).\n");

  mkdir((folder / "src").c_str(), 0777);
  WriteBytes(folder / "src/a.txt", "on a read-only disk\r\n");
  if (!MountReadOnlyView(folder, folder / "src", folder / "ro")) GTEST_SKIP() << kNoMountsReason;
  r = LoadDocumentFile(folder / "ro/a.txt", kNoLimit);
  ASSERT_EQ(r.decision, LoadDecision::Loaded);
  EXPECT_TRUE(r.readOnly);
  EXPECT_EQ(r.eolMode, LineEndingMode::CRLF);
}

TEST(FileLoad, PipesAndDevicesAreRefusedAndSizelessFilesReadToTheEnd) {
  TempFolder folder;
  const std::string fifo = folder / "pipe";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  for (const std::string& path : {fifo, std::string("/dev/zero"), std::string("/dev/null")}) {
    const LoadResult r = LoadDocumentFile(path, kNoLimit);
    EXPECT_EQ(r.decision, LoadDecision::NotRegular) << path;
    EXPECT_EQ(r.message, kTextNotRegular) << path;
    EXPECT_FALSE(r.lock.Valid()) << path;
  }
  // /proc says 0 bytes but has text: it is read to its end.
  const LoadResult cpu = LoadDocumentFile("/proc/self/status", kNoLimit);
  ASSERT_EQ(cpu.decision, LoadDecision::Loaded) << cpu.message;
  const std::string text(cpu.text.view());
  EXPECT_NE(text.find("Name:"), std::string::npos);
  EXPECT_EQ(cpu.fileSize, text.size());
  // A truly empty file is still an empty document.
  EXPECT_EQ(LoadBytes(folder, "").decision, LoadDecision::Loaded);
}
