#include "app/startup_rules.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace nebro;
using namespace nebro::app;

// Started as a process (a file, the viewer with and without its place, a lone "--viewer", no
// argument) in startup_guitest; these are the edges of the argument rules.
TEST(StartupArgs, ViewerAndFileRules) {
  auto plain = ParseStartupArgs({"nebro", "/tmp/a.cpp", "/tmp/ignored.txt"});
  EXPECT_FALSE(plain.viewerMode);
  EXPECT_EQ(plain.fileToOpen, "/tmp/a.cpp");
  EXPECT_FALSE(plain.fileFromViewerArgument);
  EXPECT_FALSE(ParseStartupArgs({"nebro", "--viewer", "/tmp/big.txt"}).viewerGeometry);

  // Anywhere but first, "--viewer" is a path; and the comparison is exact.
  EXPECT_EQ(ParseStartupArgs({"nebro", "a.txt", "--viewer", "b.txt"}).fileToOpen, "a.txt");
  EXPECT_FALSE(ParseStartupArgs({"nebro", "--Viewer", "x"}).viewerMode);
  EXPECT_FALSE(ParseStartupArgs({"nebro", "--viewer=x"}).viewerMode);
}

TEST(StartupArgs, ViewerGeometryTravelsAfterThePath) {
  const std::string arg = ViewerGeometryArgument({140, 90, 740, 860});
  const auto parsed = ParseStartupArgs({"nebro", "--viewer", "/tmp/x.txt", arg}).viewerGeometry;
  ASSERT_TRUE(parsed);
  EXPECT_EQ(std::tie(parsed->x, parsed->y, parsed->width, parsed->height), std::make_tuple(140, 90, 740, 860));
  EXPECT_FALSE(ParseStartupArgs({"nebro", "--viewer", "x", "--nebro-viewer-geometry=1,2"}).viewerGeometry);
  EXPECT_FALSE(ParseStartupArgs({"nebro", "--viewer", "x", "--nebro-viewer-geometry=1,2,0,5"}).viewerGeometry);
  // A normal start ignores everything after its path.
  EXPECT_FALSE(ParseStartupArgs({"nebro", "x", arg}).viewerGeometry);
}

TEST(StartupArgs, TransparencyAlphaTruncates) {
  EXPECT_EQ(TransparencyAlpha(10), 230);  // 255 - 25.5, the half dropped (0 % and 50 %: on the window)
}
