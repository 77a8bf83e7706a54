#include "document/file_load.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <thread>

#include "common/utf.h"
#include "document/document_texts.h"
#include "../support/disk_fixtures.h"

using namespace nebro;
using namespace nebro::test;

namespace {

constexpr uint64_t kNoLimit = 1ull << 40;

struct Loaded {
  LoadDecision decision;
  std::string text;
  TextEncoding encoding;
  std::optional<LineEndingMode> eol;
  std::string message;
  std::string title;
};

Loaded LoadBytes(const TempFolder& folder, const std::string& bytes) {
  const std::string path = folder / "file.txt";
  WriteBytes(path, bytes);
  LoadResult r = LoadDocumentFile(path, kNoLimit);
  return {r.decision, std::string(r.text.view()), r.encoding, r.eolMode, r.message, r.title};
}

bool HasTrace(const LoadResult& r, std::string_view line) {
  return std::find(r.trace.begin(), r.trace.end(), line) != r.trace.end();
}

}  // namespace

TEST(FileLoad, RefusesKnownBinaryFormatsBySignature) {
  TempFolder folder;
  const std::string signatures[] = {
      "%PDF", "MZ", "PK", "\x89PNG", "\xFF\xD8", "GIF", "BM", "\xD0\xCF\x11\xE0", "\x7F" "ELF",
      "RIFF"};
  for (const std::string& signature : signatures) {
    const Loaded r = LoadBytes(folder, signature + std::string("text that follows"));
    EXPECT_EQ(r.decision, LoadDecision::KnownBinary) << signature;
    EXPECT_EQ(r.message, "Cannot open binary file.\n\n");
    EXPECT_EQ(r.title, "Nebro - Cannot Open");
  }
  // Fewer than 4 bytes: the signatures are not looked at, so "MZ" and "GIF" are text.
  EXPECT_EQ(LoadBytes(folder, "MZ").decision, LoadDecision::Loaded);
  EXPECT_EQ(LoadBytes(folder, "GIF").decision, LoadDecision::Loaded);
  EXPECT_EQ(LoadBytes(folder, "MZ").text, "MZ");
  EXPECT_EQ(LoadBytes(folder, "MZab").decision, LoadDecision::KnownBinary);
  // A plain text that happens to start with "PK" is refused too.
  EXPECT_EQ(LoadBytes(folder, "PKZIP notes\n").decision, LoadDecision::KnownBinary);
}

TEST(FileLoad, CountsNulBytesOnlyInTheFirstKilobyte) {
  TempFolder folder;
  std::string two(2000, 'a');
  two[0] = '\0';
  two[500] = '\0';
  EXPECT_EQ(LoadBytes(folder, two).decision, LoadDecision::Loaded);

  std::string thirdAtLastSniffedByte = two;
  thirdAtLastSniffedByte[1023] = '\0';
  const Loaded refused = LoadBytes(folder, thirdAtLastSniffedByte);
  EXPECT_EQ(refused.decision, LoadDecision::TooManyNulls);
  EXPECT_EQ(refused.message, "This file appears to be a binary file and cannot be opened as text.");
  EXPECT_EQ(refused.title, "Nebro - Cannot Open");

  std::string thirdJustBeyond = two;
  thirdJustBeyond[1024] = '\0';  // byte 1,025 is never seen
  const Loaded loaded = LoadBytes(folder, thirdJustBeyond);
  EXPECT_EQ(loaded.decision, LoadDecision::Loaded);
  EXPECT_EQ(loaded.text, thirdJustBeyond);  // the zero bytes reach the editor unchanged
}

TEST(FileLoad, CountsControlBytesAfterTheNulRule) {
  TempFolder folder;
  // TAB, LF and CR are not control bytes here; FF and ESC are.
  std::string five = "\x01\x02\x0C\x1B\x1F" + std::string(2000, '\t');
  five += "\r\n";
  EXPECT_EQ(LoadBytes(folder, five).decision, LoadDecision::Loaded);

  std::string sixthInside = five;
  sixthInside[1023] = '\x07';
  const Loaded refused = LoadBytes(folder, sixthInside);
  EXPECT_EQ(refused.decision, LoadDecision::TooManyControls);
  EXPECT_EQ(refused.message,
            "This file contains binary control characters and cannot be opened as text.");
  EXPECT_EQ(refused.title, "Nebro - Cannot Open");

  std::string sixthBeyond = five;
  sixthBeyond[1024] = '\x07';
  EXPECT_EQ(LoadBytes(folder, sixthBeyond).decision, LoadDecision::Loaded);

  // Three NULs and nothing else: the NUL rule speaks. Two NULs and four other control bytes
  // make six control bytes. Six control bytes before three NULs: still the NUL rule, it runs
  // first over the whole range.
  EXPECT_EQ(LoadBytes(folder, std::string("ab\0c\0d\0", 7)).decision, LoadDecision::TooManyNulls);
  EXPECT_EQ(LoadBytes(folder, std::string("a\0b\0\x01\x02\x03\x04", 8)).decision,
            LoadDecision::TooManyControls);
  EXPECT_EQ(LoadBytes(folder, std::string("\x01\x02\x03\x04\x05\x06 \0\0\0", 10)).decision,
            LoadDecision::TooManyNulls);
}

TEST(FileLoad, DetectsByteOrderMarks) {
  TempFolder folder;
  Loaded r = LoadBytes(folder, "\xEF\xBB\xBFh\xC3\xA9");
  EXPECT_EQ(r.decision, LoadDecision::Loaded);
  EXPECT_EQ(r.encoding, TextEncoding::Utf8Bom);
  EXPECT_EQ(r.text, "h\xC3\xA9");

  // An incomplete mark is text.
  r = LoadBytes(folder, "\xEF\xBB");
  EXPECT_EQ(r.encoding, TextEncoding::Utf8);
  EXPECT_EQ(r.text, "\xEF\xBB");
  r = LoadBytes(folder, "\xEF" "abc");
  EXPECT_EQ(r.encoding, TextEncoding::Utf8);
  EXPECT_EQ(r.text, "\xEF" "abc");

  // Bytes that are not UTF-8 pass unchanged (a Windows-1252 file shows them wrongly).
  r = LoadBytes(folder, "caf\xE9\n");
  EXPECT_EQ(r.encoding, TextEncoding::Utf8);
  EXPECT_EQ(r.text, "caf\xE9\n");

  // Empty and one-byte files.
  r = LoadBytes(folder, "");
  EXPECT_EQ(r.decision, LoadDecision::Loaded);
  EXPECT_EQ(r.encoding, TextEncoding::Utf8);
  EXPECT_EQ(r.text, "");
  EXPECT_FALSE(r.eol.has_value());
  EXPECT_EQ(LoadBytes(folder, "x").text, "x");
}

TEST(FileLoad, Utf8MarkIsSkipped) {
  TempFolder folder;
  const std::string path = folder / "bom.txt";
  WriteBytes(path, "\xEF\xBB\xBF" + std::string(100000, 'z'));
  LoadResult r = LoadDocumentFile(path, kNoLimit);
  ASSERT_EQ(r.decision, LoadDecision::Loaded);
  EXPECT_EQ(r.encoding, TextEncoding::Utf8Bom);
  EXPECT_EQ(r.text.size, 100000u);
  EXPECT_EQ(r.text.view(), std::string(100000, 'z'));
}

TEST(FileLoad, ConvertsUtf16InBothByteOrders) {
  TempFolder folder;
  // "hé€😀\n" as UTF-16 LE, and the same as BE; an odd trailing byte is dropped.
  const std::string le("\xFF\xFEh\0\xE9\0\xAC\x20\x3D\xD8\x00\xDE\n\0\x41", 15);
  const std::string be("\xFE\xFF\0h\0\xE9\x20\xAC\xD8\x3D\xDE\x00\0\n\x41", 15);
  const std::string expected = "h\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\n";
  Loaded r = LoadBytes(folder, le);
  EXPECT_EQ(r.decision, LoadDecision::Loaded);
  EXPECT_EQ(r.encoding, TextEncoding::Utf16Le);
  EXPECT_EQ(r.text, expected);
  EXPECT_EQ(r.eol, LineEndingMode::LF);
  r = LoadBytes(folder, be);
  EXPECT_EQ(r.encoding, TextEncoding::Utf16Be);
  EXPECT_EQ(r.text, expected);

  // Only the mark: an empty document.
  r = LoadBytes(folder, "\xFF\xFE");
  EXPECT_EQ(r.encoding, TextEncoding::Utf16Le);
  EXPECT_EQ(r.text, "");
  r = LoadBytes(folder, "\xFE\xFF\x41");
  EXPECT_EQ(r.encoding, TextEncoding::Utf16Be);
  EXPECT_EQ(r.text, "");

  // A mark bypasses every binary test: zeros, control bytes, a signature after it.
  r = LoadBytes(folder, "\xFF\xFE" + std::string(3000, '\0'));
  EXPECT_EQ(r.decision, LoadDecision::Loaded);
  EXPECT_EQ(r.text, std::string(1500, '\0'));
  r = LoadBytes(folder, "\xFE\xFF" + std::string("\x01\x02\x03\x04\x05\x06\x07\x08", 8));
  EXPECT_EQ(r.decision, LoadDecision::Loaded);
}

TEST(FileLoad, UnpairedSurrogatesBecomeReplacementCharacters) {
  TempFolder folder;
  const std::string fffd = "\xEF\xBF\xBD";
  // A lone low surrogate, a high one followed by a letter, a high one at the very end.
  const std::string le("\xFF\xFE\x00\xDC" "a\0" "\x3D\xD8" "b\0" "\x3D\xD8", 12);
  Loaded r = LoadBytes(folder, le);
  EXPECT_EQ(r.text, fffd + "a" + fffd + "b" + fffd);
  // The high half whose low half would be the dropped odd byte is unpaired as well.
  const std::string be("\xFE\xFF\xD8\x3D\xDE", 5);
  r = LoadBytes(folder, be);
  EXPECT_EQ(r.text, fffd);
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
      le += static_cast<char>(u & 0xFF);
      le += static_cast<char>(u >> 8);
      be += static_cast<char>(u >> 8);
      be += static_cast<char>(u & 0xFF);
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

TEST(FileLoad, LineEndingModeFollowsWhichCharactersOccur) {
  TempFolder folder;
  EXPECT_EQ(LoadBytes(folder, "a\r\nb\r\n").eol, LineEndingMode::CRLF);
  EXPECT_EQ(LoadBytes(folder, "a\rb\r").eol, LineEndingMode::CR);
  EXPECT_EQ(LoadBytes(folder, "a\nb\n").eol, LineEndingMode::LF);
  EXPECT_FALSE(LoadBytes(folder, "no line end").eol.has_value());
  // A bare CR and later a bare LF: CRLF, though no pair occurs.
  EXPECT_EQ(LoadBytes(folder, "a\rb\nc").eol, LineEndingMode::CRLF);
  // One CRLF among a thousand LFs.
  std::string many;
  for (int i = 0; i < 1000; ++i) many += "line\n";
  many += "last\r\n";
  const Loaded mixed = LoadBytes(folder, many);
  EXPECT_EQ(mixed.eol, LineEndingMode::CRLF);
  EXPECT_EQ(mixed.text, many);  // endings are never converted
  // Detected on the decoded text of a UTF-16 file.
  EXPECT_EQ(LoadBytes(folder, std::string("\xFF\xFE" "a\0\r\0", 6)).eol, LineEndingMode::CR);
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
  EXPECT_EQ(OpenErrorText(kOpenErrorLocked, "/x"),
            "File is already open by another program.\nPlease close it first.");
  EXPECT_EQ(OpenErrorText(EIO, "/x"), "Cannot open file (error 5).\n\n/x");

  // A path that is not UTF-8 is shown with U+FFFD; the text stops at 511 UTF-16 units and never
  // inside a character.
  EXPECT_EQ(OpenErrorText(ENOENT, "/a\xFF"), "File not found (error 2).\n\n/a\xEF\xBF\xBD");
  const std::string longPath = "/" + std::string(600, 'p');
  EXPECT_EQ(OpenErrorText(ENOENT, longPath).size(), 511u);
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
  EXPECT_EQ(r.title, kTitleErrorMangled);
  EXPECT_FALSE(r.lock.Valid());
  EXPECT_EQ(r.text.block, nullptr);  // nothing was read

  // The mangled title is really the three characters U+00E2 U+20AC U+201D.
  EXPECT_EQ(Utf8ToUtf16(r.title), u"Nebro \u00E2\u20AC\u201D Error");
  EXPECT_GT(DefaultMaxLoadBytes(), 1ull << 20);
}

TEST(FileLoad, ShortReadIsReportedAsReadFailure) {
  // sysfs files claim 4096 bytes and deliver fewer: a file that ends before its size. Only
  // read-only attributes, so nothing is ever opened for writing here.
  const char* candidates[] = {"/sys/kernel/uevent_seqnum",
                              "/sys/kernel/mm/transparent_hugepage/hpage_pmd_size",
                              "/sys/kernel/address_bits"};
  for (const char* path : candidates) {
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
  EXPECT_TRUE(HasTrace(first, "Nebro: File read successfully"));

  // A second open, here or in another process, is refused while the first holds the lock.
  LoadResult second = LoadDocumentFile(path, kNoLimit);
  EXPECT_EQ(second.decision, LoadDecision::OpenFailed);
  EXPECT_EQ(second.error, kOpenErrorLocked);
  EXPECT_EQ(second.message, "File is already open by another program.\nPlease close it first.");
  EXPECT_EQ(second.title, "Nebro - Error");
  EXPECT_FALSE(second.lock.Valid());

  const pid_t child = fork();
  if (child == 0) {
    const OpenedDocument opened = OpenDocumentFile(path);
    _exit(opened.error == kOpenErrorLocked ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the other process was not refused";

  // Dropping the lock (closing the file) lets the next open through.
  int fd = first.lock.Release();
  CloseDocumentLock(fd);
  EXPECT_EQ(fd, -1);
  EXPECT_EQ(LoadDocumentFile(path, kNoLimit).decision, LoadDecision::Loaded);
}

TEST(FileLoad, OpenAndReadSplitAcrossThreadsLikeTheWindowDoes) {
  TempFolder folder;
  const std::string path = folder / "split.txt";
  WriteBytes(path, std::string("\xFF\xFEx\0", 4));
  OpenedDocument opened = OpenDocumentFile(path);
  ASSERT_TRUE(opened.fd.Valid());
  LoadResult r;
  std::thread worker([&] { r = ReadDocumentFile(std::move(opened), kNoLimit); });
  worker.join();
  EXPECT_EQ(r.decision, LoadDecision::Loaded);
  EXPECT_EQ(r.text.view(), "x");
  EXPECT_TRUE(r.lock.Valid());

  // A refusal closes the file it had opened: the lock goes with it.
  const std::string binary = folder / "bin";
  WriteBytes(binary, "%PDF-1.7");
  EXPECT_EQ(LoadDocumentFile(binary, kNoLimit).decision, LoadDecision::KnownBinary);
  EXPECT_EQ(LoadDocumentFile(binary, kNoLimit).decision, LoadDecision::KnownBinary);  // not "locked"
}

TEST(FileLoad, ReadOnlyFileOpensReadOnlyWithoutLock) {
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
  AsNobody nobody;
  r = LoadDocumentFile(path, kNoLimit);
  EXPECT_EQ(r.decision, LoadDecision::OpenFailed);
  EXPECT_EQ(r.error, EACCES);
  EXPECT_EQ(r.message.substr(0, 26), "Access denied (error 13).\n");
}

TEST(FileLoad, FileOnReadOnlyMountOpensReadOnly) {
  TempFolder folder;
  mkdir((folder / "src").c_str(), 0777);
  WriteBytes(folder / "src/a.txt", "on a read-only disk\r\n");
  if (!MountReadOnlyView(folder, folder / "src", folder / "ro")) GTEST_SKIP() << kNoMountsReason;
  LoadResult r = LoadDocumentFile(folder / "ro/a.txt", kNoLimit);
  ASSERT_EQ(r.decision, LoadDecision::Loaded);
  EXPECT_TRUE(r.readOnly);
  EXPECT_EQ(r.eolMode, LineEndingMode::CRLF);
}
