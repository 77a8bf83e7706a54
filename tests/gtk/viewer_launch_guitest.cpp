// Launching the viewer from the editor: one viewer at a time, placed beside the editor.
#include <gtest/gtest.h>
#include <signal.h>

#include <fstream>

#include "../support/process.h"
#include "gtk/viewer_launch_gtk.h"
#include "support/gui_helpers.h"

using nebro::testing::WaitUntil;

namespace {

bool Alive(int pid) { return pid > 0 && kill(pid, 0) == 0; }

bool WindowTitled(const std::string& title) {
  return nebro::test::Shell("xdotool search --name '^" + title + "$' >/dev/null 2>&1") == 0;
}

}  // namespace

TEST(ViewerLaunch, ANewLaunchEndsThePreviousViewer) {
  const nebro::test::TempFolder folder;
  const std::string& dir = folder.Path();
  setenv("XDG_CONFIG_HOME", (dir + "/cfg").c_str(), 1);
  std::ofstream(dir + "/first.txt") << "first\n";
  std::ofstream(dir + "/second.txt") << "second\n";

  nebro::SetViewerExecutable(NEBRO_EXECUTABLE);
  GtkWidget* owner = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_window_move(GTK_WINDOW(owner), 100, 80);
  gtk_widget_show(owner);

  nebro::LaunchViewer(GTK_WINDOW(owner), "");  // an empty path starts nothing
  EXPECT_EQ(nebro::ViewerProcess(), 0);

  nebro::LaunchViewer(GTK_WINDOW(owner), dir + "/first.txt");
  const int first = nebro::ViewerProcess();
  ASSERT_GT(first, 0);
  EXPECT_TRUE(WaitUntil([] { return WindowTitled("Nebro Viewer - first.txt"); }));

  nebro::LaunchViewer(GTK_WINDOW(owner), dir + "/second.txt");
  const int second = nebro::ViewerProcess();
  ASSERT_GT(second, 0);
  EXPECT_NE(first, second);
  EXPECT_TRUE(WaitUntil([&] { return !Alive(first); })) << "the first viewer still runs";
  EXPECT_TRUE(WaitUntil([] { return WindowTitled("Nebro Viewer - second.txt"); }));
  EXPECT_TRUE(Alive(second));

  // Closing the editor's side ends the viewer too.
  nebro::EndViewer();
  EXPECT_TRUE(WaitUntil([&] { return !Alive(second); }));
  gtk_widget_destroy(owner);
}
