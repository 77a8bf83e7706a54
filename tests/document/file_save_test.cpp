#include "document/file_save.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <set>

#include "document/file_load.h"
#include "document/recovery.h"
#include "settings/data_folder.h"
#include "../support/disk_fixtures.h"

using namespace nebro;
using namespace nebro::document;
using namespace nebro::test;

namespace {

constexpr uint64_t kNoLimit = 1ull << 40;

SaveResult Save(const std::string& path, std::string_view text, TextEncoding encoding, int& lockFd) {
  return SaveDocumentFile(path, text.data(), text.size(), encoding, lockFd);
}

struct Lock {
  int fd = -1;
  ~Lock() { CloseDocumentLock(fd); }
};

}  // namespace

TEST(FileSave, RoundTripsEveryEncodingAndLineEnding) {
  // Load a file, save the editor's text back, load again: the text and its line endings stay
  // exactly; the file becomes UTF-8, with a mark only when it had a UTF-8 mark.
  TempFolder folder;
  const std::string path = folder / "round.txt";
  const std::string endings[] = {"\n", "\r\n", "\r", "\r\n\n\r"};
  for (const std::string& eol : endings) {
    const std::string text = "line one" + eol + "line two \xC3\xA9\xE2\x82\xAC" + eol + "end";
    std::u16string wide = u"line one";
    for (char c : eol) wide += static_cast<char16_t>(c);
    wide += u"line two \u00E9\u20AC";
    for (char c : eol) wide += static_cast<char16_t>(c);
    wide += u"end";
    std::string le = "\xFF\xFE", be = "\xFE\xFF";
    for (char16_t u : wide) {
      le += static_cast<char>(u & 0xFF);
      le += static_cast<char>(u >> 8);
      be += static_cast<char>(u >> 8);
      be += static_cast<char>(u & 0xFF);
    }
    const struct {
      std::string bytes;
      TextEncoding encoding;
      std::string saved;
    } cases[] = {
        {text, TextEncoding::Utf8, text},
        {"\xEF\xBB\xBF" + text, TextEncoding::Utf8Bom, "\xEF\xBB\xBF" + text},
        {le, TextEncoding::Utf16Le, text},
        {be, TextEncoding::Utf16Be, text},
    };
    for (const auto& c : cases) {
      WriteBytes(path, c.bytes);
      LoadResult loaded = LoadDocumentFile(path, kNoLimit);
      ASSERT_EQ(loaded.decision, LoadDecision::Loaded);
      EXPECT_EQ(loaded.encoding, c.encoding);
      EXPECT_EQ(loaded.text.view(), text);
      int lockFd = loaded.lock.Release();
      const SaveResult saved = Save(path, loaded.text.view(), loaded.encoding, lockFd);
      EXPECT_TRUE(saved.Ok()) << saved.detail;
      EXPECT_EQ(ReadBytes(path), c.saved);
      CloseDocumentLock(lockFd);
      LoadResult again = LoadDocumentFile(path, kNoLimit);
      EXPECT_EQ(again.text.view(), text);
      EXPECT_EQ(again.eolMode, loaded.eolMode);
    }
  }
  EXPECT_TRUE(OnlyNames(folder.Path(), {"round.txt"}));  // no temporary file left behind
}

TEST(FileSave, ShorterTextReplacesTheWholeFileAndTheLockMovesToIt) {
  TempFolder folder;
  const std::string path = folder / "doc.txt";
  WriteBytes(path, "a long first version of the text\n");
  LoadResult loaded = LoadDocumentFile(path, kNoLimit);
  Lock lock{loaded.lock.Release()};
  ASSERT_TRUE(Save(path, "short", TextEncoding::Utf8, lock.fd).Ok());
  EXPECT_EQ(ReadBytes(path), "short");
  // The document holds the lock of the file now on disk, open for writing.
  ASSERT_GE(lock.fd, 0);
  EXPECT_EQ(fcntl(lock.fd, F_GETFL) & O_ACCMODE, O_RDWR);
  struct stat onDisk {}, held {};
  stat(path.c_str(), &onDisk);
  fstat(lock.fd, &held);
  EXPECT_EQ(onDisk.st_ino, held.st_ino);
  EXPECT_EQ(OpenDocumentFile(path).error, kOpenErrorLocked);

  // Saving again onto the file we hold the lock of is not refused as "locked elsewhere".
  EXPECT_TRUE(Save(path, "", TextEncoding::Utf8Bom, lock.fd).Ok());
  EXPECT_EQ(ReadBytes(path), "\xEF\xBB\xBF");
}

TEST(FileSave, FullDiskLosesNothing) {
  TempFolder folder;
  const std::string disk = folder / "small";
  if (!MountSmallTmpfs(folder, disk, 64 * 1024)) GTEST_SKIP() << kNoMountsReason;
  const std::string path = disk + "/notes.txt";
  const std::string original(20 * 1024, 'o');
  WriteBytes(path, original);
  LoadResult loaded = LoadDocumentFile(path, kNoLimit);
  Lock lock{loaded.lock.Release()};
  const int before = lock.fd;

  const std::string bigger(100 * 1024, 'n');
  const SaveResult r = Save(path, bigger, TextEncoding::Utf8, lock.fd);
  EXPECT_EQ(r.error, SaveError::NoSpace) << r.detail;
  EXPECT_EQ(ReadBytes(path), original);
  EXPECT_TRUE(OnlyNames(disk, {"notes.txt"}));  // the partial temporary file is gone
  EXPECT_EQ(lock.fd, before);                   // the document keeps its lock
  EXPECT_EQ(OpenDocumentFile(path).error, kOpenErrorLocked);

  // Rewritten in place (a file with a second name): our own lock on it gives way to the new one.
  ASSERT_EQ(link(path.c_str(), (disk + "/second-name.txt").c_str()), 0);
  EXPECT_TRUE(Save(path, "fits", TextEncoding::Utf8, lock.fd).Ok());
  EXPECT_EQ(ReadBytes(disk + "/second-name.txt"), "fits");
  EXPECT_EQ(OpenDocumentFile(path).error, kOpenErrorLocked);

  // A device that is always full is no file to save into.
  int none = -1;
  const SaveResult full = Save("/dev/full", "x", TextEncoding::Utf8, none);
  EXPECT_EQ(full.error, SaveError::NotRegularFile);
}

TEST(FileSave, ReadOnlyTargetsAreReportedAndUntouched) {
  TempFolder folder;
  const std::string path = folder / "locked.txt";
  WriteBytes(path, "keep me");
  chmod(path.c_str(), 0444);
  int lockFd = -1;
  // The user's own read-only file, and someone else's, in a folder the user may write (where a
  // rename could replace them).
  for (bool own : {true, false}) {
    if (geteuid() == 0) {
      ASSERT_EQ(chown(path.c_str(), own ? kNobody : 0, own ? kNobody : 0), 0);
    }
    AsNobody nobody;
    const SaveResult r = Save(path, "overwritten", TextEncoding::Utf8, lockFd);
    EXPECT_EQ(r.error, SaveError::ReadOnlyFile) << r.detail;
    EXPECT_EQ(ReadBytes(path), "keep me");
    EXPECT_EQ(lockFd, -1);
  }

  // A file another program holds the lock of.
  chmod(path.c_str(), 0644);
  OpenedDocument other = OpenDocumentFile(path);
  ASSERT_TRUE(other.locked);
  EXPECT_EQ(Save(path, "overwritten", TextEncoding::Utf8, lockFd).error, SaveError::LockedElsewhere);
  EXPECT_EQ(ReadBytes(path), "keep me");
  other.fd.Reset();

  // A read-only disk.
  mkdir((folder / "src").c_str(), 0777);
  WriteBytes(folder / "src/a.txt", "on disk");
  if (!MountReadOnlyView(folder, folder / "src", folder / "ro")) GTEST_SKIP() << kNoMountsReason;
  EXPECT_EQ(Save(folder / "ro/a.txt", "changed", TextEncoding::Utf8, lockFd).error,
            SaveError::ReadOnlyFileSystem);
  EXPECT_EQ(Save(folder / "ro/new.txt", "new", TextEncoding::Utf8, lockFd).error,
            SaveError::ReadOnlyFileSystem);
  EXPECT_EQ(ReadBytes(folder / "src/a.txt"), "on disk");
}

TEST(FileSave, FolderProblems) {
  TempFolder folder;
  int lockFd = -1;
  EXPECT_EQ(Save(folder / "gone/x.txt", "x", TextEncoding::Utf8, lockFd).error,
            SaveError::FolderMissing);
  EXPECT_EQ(Save(folder.Path(), "x", TextEncoding::Utf8, lockFd).error, SaveError::NotRegularFile);

  // A folder that may not be written: a new file cannot be made there...
  const std::string closed = folder / "closed";
  MakeClosedFolderWithWritableFile(closed, "old text that is longer");
  AsNobody nobody;
  EXPECT_EQ(Save(closed + "/new.txt", "x", TextEncoding::Utf8, lockFd).error,
            SaveError::PermissionDenied);
  // ...but a writable file in it is rewritten in place, and the document holds its lock.
  const SaveResult r = Save(closed + "/writable.txt", "new", TextEncoding::Utf8Bom, lockFd);
  EXPECT_TRUE(r.Ok()) << r.detail;
  EXPECT_EQ(ReadBytes(closed + "/writable.txt"), "\xEF\xBB\xBFnew");
  EXPECT_EQ(OpenDocumentFile(closed + "/writable.txt").error, kOpenErrorLocked);
  CloseDocumentLock(lockFd);
}

// Saves over `path` again and again in a child process killed at a random moment of the save:
// the moments spread over the time one whole save takes here, measured first by the quickest of
// three saves left to finish. `prepare` readies the file and gives the text to save; `check`
// looks at what each save left, given the saver's process id and whether it finished.
static void KillSavesAtRandom(const std::string& path, const std::string& config, int kills,
                              const std::function<std::string_view()>& prepare,
                              const std::function<void(pid_t saver, bool finished)>& check) {
  constexpr int kMeasured = 3;  // the first save also waits for the disk to take earlier writes
  std::mt19937 random(7);
  std::chrono::nanoseconds whole = std::chrono::hours(1);  // the quickest measured save
  for (int attempt = 0; attempt < kMeasured + kills; ++attempt) {
    const std::string_view text = prepare();
    const auto start = std::chrono::steady_clock::now();
    const pid_t saver = fork();
    if (saver == 0) {
      nebro::settings::SetConfigRoot(config);
      int lock = -1;
      _exit(SaveDocumentFile(path, text.data(), text.size(), TextEncoding::Utf8, lock).Ok() ? 0 : 1);
    }
    // Waits for the save to end, or for the chosen moment to kill it.
    const int64_t moment = attempt < kMeasured ? int64_t{3600} * 1'000'000'000
                                               : std::uniform_int_distribution<int64_t>(0, whole.count() * 11 / 10)(random);
    const timespec until{static_cast<time_t>(moment / 1'000'000'000), static_cast<long>(moment % 1'000'000'000)};
    pollfd ended{static_cast<int>(syscall(SYS_pidfd_open, saver, 0)), POLLIN, 0};
    ASSERT_GE(ended.fd, 0);
    if (ppoll(&ended, 1, &until, nullptr) == 0) kill(saver, SIGKILL);
    close(ended.fd);
    if (attempt < kMeasured) whole = std::min(whole, std::chrono::steady_clock::now() - start);
    int status = 0;
    waitpid(saver, &status, 0);
    check(saver, WIFEXITED(status) && WEXITSTATUS(status) == 0);
  }
  std::printf("a whole save took %lld ms; ", static_cast<long long>(whole.count() / 1'000'000));
}

// A file with a second name is rewritten in place, the one save a crash could leave half old,
// half new. Killed at random moments during such saves, the editor always leaves the whole old
// content, the whole new content, or the whole old content kept aside in the data folder.
// A copy of a file's old content that an earlier save could not write back is older than anything
// a later save could keep: it stays for the next start to offer.
TEST(FileSave, AnEarlierKeptCopyOfTheOldContentOutlivesTheNextSave) {
  TempFolder folder;
  settings::SetConfigRoot(folder / "config");
  std::filesystem::create_directories(settings::GetSettingsFolder());
  const std::string path = folder / "doc.txt";
  WriteBytes(path, "half new, half old\n");
  ASSERT_EQ(link(path.c_str(), (folder / "other.txt").c_str()), 0);  // so it is rewritten in place
  const std::string earlier = RecoveryBackupFileFor(settings::GetSettingsFolder(), getpid());
  const std::string kept = EncodeRecoveryCopy(path, 1700000000, "the first version\n");
  WriteBytes(earlier, kept);
  Lock lock;
  ASSERT_TRUE(Save(path, "new\n", TextEncoding::Utf8, lock.fd).Ok());
  EXPECT_EQ(ReadBytes(folder / "other.txt"), "new\n");
  EXPECT_EQ(ReadBytes(earlier), kept);
  EXPECT_FALSE(std::filesystem::exists(RecoveryBackupFileFor(settings::GetSettingsFolder(), getpid(), 2)));
}

TEST(FileSave, KilledDuringAnInPlaceSaveTheOldContentSurvives) {
  TempFolder folder;
  const std::string path = folder / "doc.txt";
  const std::string oldText(8u << 20, 'o');
  std::string newText(8u << 20, 'n');
  newText.back() = '\n';
  int torn = 0;
  KillSavesAtRandom(path, folder / "config", 50, [&] {
    WriteBytes(path, oldText);
    unlink((folder / "other.txt").c_str());
    EXPECT_EQ(link(path.c_str(), (folder / "other.txt").c_str()), 0);
    return std::string_view(newText);
  }, [&](pid_t saver, bool finished) {
    const std::string now = ReadBytes(path);
    EXPECT_EQ(ReadBytes(folder / "other.txt"), now) << "the two names parted";
    const std::string backup = nebro::document::RecoveryBackupFileFor(folder / "config/Nebro", saver);
    if (now != oldText && now != newText) {
      ++torn;
      nebro::document::RecoveryCopy copy;
      ASSERT_TRUE(nebro::document::DecodeRecoveryCopy(ReadBytes(backup), copy));
      EXPECT_EQ(copy.text, oldText);
      EXPECT_EQ(copy.originalPath, path);
    } else if (now == newText && finished) {
      EXPECT_FALSE(std::filesystem::exists(backup)) << "a finished save leaves no copy behind";
    }
    unlink(backup.c_str());
  });
  std::printf("%d of 50 saves were caught half-written\n", torn);
}

// An ordinary save writes a new file beside the old one and renames it over it. Killed at random
// moments during saves of a 200 MB document, it always leaves the whole old or the whole new
// file, beside it at most the hidden new file it was writing, which a later save clears away.
TEST(FileSave, KilledDuringASaveTheFileIsWholeOldOrWholeNew) {
  TempFolder folder, config;
  const std::string path = folder / "doc.txt";
  // Two versions, each one byte throughout, told apart by their length.
  const std::string texts[] = {std::string(200u << 20, 'a'), std::string((200u << 20) + 1, 'b')};
  WriteBytes(path, texts[0]);
  auto whole = [&] {  // which version the file holds whole, judged by its length and 256 samples
    const uintmax_t size = std::filesystem::file_size(path);
    const int v = size == texts[0].size() ? 0 : size == texts[1].size() ? 1 : -1;
    std::ifstream in(path, std::ios::binary);
    for (uintmax_t at = 0; v >= 0 && at < size; at += size / 256) {
      if (!in.seekg(at) || in.get() != texts[v][0]) return -1;
    }
    return v;
  };
  int onDisk = 0, caught = 0;
  std::set<std::string> left;
  KillSavesAtRandom(path, config.Path(), 50, [&] { return std::string_view(texts[1 - onDisk]); },
                    [&](pid_t, bool finished) {
    const int now = whole();
    ASSERT_NE(now, -1) << "the file is neither version whole";
    EXPECT_TRUE(!finished || now != onDisk) << "a finished save left the old file";
    onDisk = now;
    for (const std::string& name : FolderNames(folder.Path())) {  // the new file of a killed save
      if (name == "doc.txt" || !left.insert(name).second) continue;
      EXPECT_EQ(name.rfind(".doc.txt.", 0), 0u) << name;  // hidden, beside the file
      SetFileTime(folder / name, (time(nullptr) - 120) * 1'000'000'000ll);  // as if long ago
      ++caught;
    }
  });
  int lock = -1;
  EXPECT_TRUE(Save(path, "done", TextEncoding::Utf8, lock).Ok());
  CloseDocumentLock(lock);
  EXPECT_TRUE(OnlyNames(folder.Path(), {"doc.txt"}));
  std::printf("%d of 50 saves were caught with their new file half-written\n", caught);
}
