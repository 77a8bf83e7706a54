#include "export/export_output.h"

#include <dirent.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "export/plain_text_export.h"
#include "export_test_support.h"

using namespace nebro;
using namespace nebro::testing;

namespace {

// A fresh folder under /tmp, removed with its files at the end of the test.
class TempFolder {
 public:
  TempFolder() {
    char name[] = "/tmp/nebro_export_out_XXXXXX";
    path_ = mkdtemp(name) ? name : "";
  }
  ~TempFolder() {
    for (const std::string& entry : Entries()) unlink((path_ + "/" + entry).c_str());
    rmdir(path_.c_str());
  }
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }
  std::vector<std::string> Entries() const {
    std::vector<std::string> names;
    if (DIR* dir = opendir(path_.c_str())) {
      while (dirent* e = readdir(dir))
        if (std::string(e->d_name) != "." && std::string(e->d_name) != "..") names.push_back(e->d_name);
      closedir(dir);
    }
    return names;
  }

 private:
  std::string path_;
};

mode_t ModeOf(const std::string& path) {
  struct stat st {};
  stat(path.c_str(), &st);
  return st.st_mode & 07777;
}

}  // namespace

TEST(ExportBytes, GrowsMovesAndReleases) {
  ExportBytes bytes;
  EXPECT_EQ(bytes.view(), "");
  ASSERT_TRUE(bytes.Append("abc"));
  std::string big(100000, 'x');
  ASSERT_TRUE(bytes.Append(big));
  EXPECT_EQ(bytes.size(), 100003u);
  EXPECT_EQ(bytes.view().substr(0, 4), "abcx");
  ExportBytes moved = std::move(bytes);
  EXPECT_EQ(moved.size(), 100003u);
  EXPECT_TRUE(bytes.empty());
  moved.release();
  EXPECT_EQ(moved.capacity(), 0u);
  EXPECT_FALSE(moved.MakeRoom(SIZE_MAX));
}

TEST(ExportFile, WritesReplacesAndKeepsWhatWasThere) {
  TempFolder folder;
  const std::string path = folder / "out.txt";

  // A new file gets the usual permissions; the bytes are exactly the text.
  ASSERT_EQ(WritePlainTextExport("one\r\ntwo\r\n", path), ExportResult::Ok);
  EXPECT_EQ(ReadFile(path), "one\r\ntwo\r\n");
  const mode_t mask = umask(0);
  umask(mask);
  EXPECT_EQ(ModeOf(path), 0666 & ~mask);

  // Replacing keeps the permission bits of the file that was there; LF stays LF.
  chmod(path.c_str(), 0640);
  ASSERT_EQ(WritePlainTextExport("lf\nonly\n", path), ExportResult::Ok);
  EXPECT_EQ(ReadFile(path), "lf\nonly\n");
  EXPECT_EQ(ModeOf(path), 0640u);

  // An empty document makes an empty file.
  ASSERT_EQ(WritePlainTextExport("", path), ExportResult::Ok);
  EXPECT_EQ(ReadFile(path), "");

  // A symbolic link keeps pointing at its file, which gets the new content.
  const std::string link = folder / "link.txt";
  ASSERT_EQ(symlink(path.c_str(), link.c_str()), 0);
  ASSERT_EQ(WriteExportFile(link, "through the link"), ExportResult::Ok);
  struct stat st {};
  ASSERT_EQ(lstat(link.c_str(), &st), 0);
  EXPECT_TRUE(S_ISLNK(st.st_mode));
  EXPECT_EQ(ReadFile(path), "through the link");

  // No temporary file is left behind.
  EXPECT_EQ(folder.Entries().size(), 2u);
}

TEST(ExportFile, RefusalsAndFailedWrites) {
  TempFolder folder;
  EXPECT_EQ(WriteExportFile(folder / "missing/x.txt", "x"), ExportResult::CannotCreate);
  EXPECT_EQ(WriteExportFile(folder / "", "x"), ExportResult::CannotCreate);  // the folder itself
  EXPECT_EQ(WriteExportFile("", "x"), ExportResult::CannotCreate);

  const std::string path = folder / "kept.txt";
  ASSERT_EQ(WriteExportFile(path, "previous content"), ExportResult::Ok);
  if (geteuid() != 0) {
    // A file the user may not write is refused and left alone (root may write anything).
    chmod(path.c_str(), 0444);
    EXPECT_EQ(WriteExportFile(path, "new"), ExportResult::CannotCreate);
    EXPECT_EQ(ReadFile(path), "previous content");
    chmod(path.c_str(), 0644);
  }

  // A write that fails half-way (here: the file-size limit) leaves the previous file as it was
  // and no partial file. The limit is set in a child process so the test runner keeps its own.
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{4096, 4096};
    setrlimit(RLIMIT_FSIZE, &limit);
    const ExportResult result = WriteExportFile(path, std::string(100000, 'n'));
    _exit(static_cast<int>(result));
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), static_cast<int>(ExportResult::WriteFailed));
  EXPECT_EQ(ReadFile(path), "previous content");
  EXPECT_EQ(folder.Entries(), std::vector<std::string>{"kept.txt"});
}
