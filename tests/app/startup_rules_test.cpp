#include "app/startup_rules.h"

#include <gtest/gtest.h>

using namespace nebro;
using namespace nebro::app;

TEST(StartupArgs, ViewerAndFileRules) {
  auto none = ParseStartupArgs({"nebro"});
  EXPECT_FALSE(none.viewerMode);
  EXPECT_FALSE(none.fileToOpen);

  auto plain = ParseStartupArgs({"nebro", "/tmp/a.cpp", "/tmp/ignored.txt"});
  EXPECT_FALSE(plain.viewerMode);
  EXPECT_EQ(plain.fileToOpen, "/tmp/a.cpp");
  EXPECT_FALSE(plain.fileFromViewerArgument);

  auto viewer = ParseStartupArgs({"nebro", "--viewer", "/tmp/big.txt"});
  EXPECT_TRUE(viewer.viewerMode);
  EXPECT_EQ(viewer.fileToOpen, "/tmp/big.txt");
  EXPECT_TRUE(viewer.fileFromViewerArgument);
  EXPECT_FALSE(viewer.viewerGeometry);

  // A lone "--viewer" opens a viewer that then tries to open a file named "--viewer".
  auto lone = ParseStartupArgs({"nebro", "--viewer"});
  EXPECT_TRUE(lone.viewerMode);
  EXPECT_EQ(lone.fileToOpen, "--viewer");

  // Anywhere but first, "--viewer" is a path; and the comparison is exact.
  EXPECT_EQ(ParseStartupArgs({"nebro", "a.txt", "--viewer", "b.txt"}).fileToOpen, "a.txt");
  EXPECT_FALSE(ParseStartupArgs({"nebro", "--Viewer", "x"}).viewerMode);
  EXPECT_FALSE(ParseStartupArgs({"nebro", "--viewer=x"}).viewerMode);
}

TEST(StartupArgs, ViewerGeometryTravelsAfterThePath) {
  const std::string arg = ViewerGeometryArgument({140, 90, 740, 860});
  auto parsed = ParseStartupArgs({"nebro", "--viewer", "/tmp/x.txt", arg});
  ASSERT_TRUE(parsed.viewerGeometry);
  EXPECT_EQ(parsed.viewerGeometry->x, 140);
  EXPECT_EQ(parsed.viewerGeometry->y, 90);
  EXPECT_EQ(parsed.viewerGeometry->width, 740);
  EXPECT_EQ(parsed.viewerGeometry->height, 860);
  EXPECT_FALSE(ParseStartupArgs({"nebro", "--viewer", "x", "--nebro-viewer-geometry=1,2"}).viewerGeometry);
  EXPECT_FALSE(ParseStartupArgs({"nebro", "--viewer", "x", "--nebro-viewer-geometry=1,2,0,5"}).viewerGeometry);
  // A normal start ignores everything after its path.
  EXPECT_FALSE(ParseStartupArgs({"nebro", "x", arg}).viewerGeometry);
}

TEST(StartupArgs, TransparencyAlphaTruncates) {
  EXPECT_EQ(TransparencyAlpha(0), 255);
  EXPECT_EQ(TransparencyAlpha(10), 230);  // 255 - 25.5, the half dropped
  EXPECT_EQ(TransparencyAlpha(50), 128);
}
