#include "export/export_output.h"

#include <gtest/gtest.h>

#include <string>

#include "../support/disk_fixtures.h"
#include "export/plain_text_export.h"

using namespace nebro;
using namespace nebro::exports;
using namespace nebro::test;

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

TEST(ExportFile, WritesExactlyTheBytes) {
  // Line ends stay as they are, an empty document makes an empty file, and a device named as
  // the output gets the bytes instead of being replaced by a file.
  TempFolder folder;
  const std::string path = folder / "out.txt";
  ASSERT_EQ(WritePlainTextExport("one\r\ntwo\r\n", path), ExportResult::Ok);
  EXPECT_EQ(ReadBytes(path), "one\r\ntwo\r\n");
  ASSERT_EQ(WritePlainTextExport("lf\nonly\n", path), ExportResult::Ok);
  EXPECT_EQ(ReadBytes(path), "lf\nonly\n");
  ASSERT_EQ(WritePlainTextExport("", path), ExportResult::Ok);
  EXPECT_EQ(ReadBytes(path), "");
  EXPECT_EQ(WriteExportFile("/dev/null", "x"), ExportResult::Ok);
  struct stat st {};
  ASSERT_EQ(stat("/dev/null", &st), 0);
  EXPECT_TRUE(S_ISCHR(st.st_mode));
}

TEST(ExportFile, RefusalsAndFailedWrites) {
  TempFolder folder;
  EXPECT_EQ(WriteExportFile(folder / "missing/x.txt", "x"), ExportResult::CannotCreate);
  EXPECT_EQ(WriteExportFile(folder / "", "x"), ExportResult::CannotCreate);  // the folder itself
  EXPECT_EQ(WriteExportFile("", "x"), ExportResult::CannotCreate);

  const std::string path = folder / "kept.txt";
  ASSERT_EQ(WriteExportFile(path, "previous content"), ExportResult::Ok);
  chmod(path.c_str(), 0444);
  {
    AsNobody nobody;  // a file the user may not write is refused and left alone
    EXPECT_EQ(WriteExportFile(path, "new"), ExportResult::CannotCreate);
  }
  EXPECT_EQ(ReadBytes(path), "previous content");
  chmod(path.c_str(), 0644);

  // A write that fails half-way is WriteFailed and leaves the previous file as it was.
  EXPECT_EQ(WithFileSizeLimit(4096, [&] { return static_cast<int>(WriteExportFile(path, std::string(100000, 'n'))); }),
            static_cast<int>(ExportResult::WriteFailed));
  EXPECT_EQ(ReadBytes(path), "previous content");
  EXPECT_TRUE(OnlyNames(folder.Path(), {"kept.txt"}));
}
