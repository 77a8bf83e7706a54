// SIGTERM ends the editor in order whatever window is open: the settings are written, the exit
// code is 0, open questions and choosers count as cancelled, and no file is written or emptied.
#include <gtest/gtest.h>
#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <functional>

#include "../support/process.h"
#include "settings/settings.h"

namespace fs = std::filesystem;
using nebro::test::Child;
using nebro::test::ReadBytes;
using nebro::test::Sandbox;
using nebro::test::Shell;
using nebro::test::WaitForWindow;

namespace {

// Keys sent to the window titled `title` (a regular expression, as xdotool takes it).
void Keys(const std::string& title, const std::string& keys) {
  const std::string id = WaitForWindow(title);
  ASSERT_FALSE(id.empty()) << "no window titled " << title;
  ASSERT_EQ(Shell("xdotool windowfocus --sync " + id + " key --window " + id + " " + keys), 0);
}

// Presses a button of the editor's toolbar the way a screen reader would.
void ClickThroughAccessibility(pid_t pid, const std::string& button) {
  ASSERT_EQ(Shell("/usr/bin/python3 " NEBRO_TEST_SUPPORT_DIR "/atspi_tool.py --pid " + std::to_string(pid) +
                  " 'click|push button|" + button + "'"), 0);
}

struct State {
  const char* what;
  std::string file;                     // opened from the command line
  std::function<void()> reach;          // brings the editor into the state
  std::string shown;                    // the title of the window open when the signal comes
};

}  // namespace

TEST(SignalExit, EndsInOrderFromEveryWindowAndWritesNothing) {
  Sandbox box;
  const std::string text = "first line\nsecond line\n";
  fs::create_directories(box.Path() + "/folder");
  fs::create_directories(box.Path() + "/gone");
  const std::string plain = box.Write("folder/plain.txt", text);
  const std::string gone = box.Write("gone/notes.txt", text);
  const std::string binary = box.Write("image.bin", std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16));
  const std::string locked = box.Write("locked.txt", text);
  // Another program holds the file.
  const int lockFd = open(locked.c_str(), O_RDWR);
  struct flock lock = {};
  lock.l_type = F_WRLCK;
  ASSERT_EQ(fcntl(lockFd, F_OFD_SETLK, &lock), 0);

  pid_t pid = 0;  // the running editor's
  const State states[] = {
      {"idle", plain, [] {}, "Nebro - plain.txt"},
      {"the binary-file refusal at start-up", binary, [] {}, "Nebro - Cannot Open"},
      {"the refusal of a file held by another program", locked, [] {}, ""},
      {"the save question after Ctrl+N",
       plain, [] { Keys("Nebro - plain.txt", "ctrl+End x ctrl+n"); }, "Nebro"},
      {"the Save As chooser", plain, [] { Keys("Nebro - plain.txt", "ctrl+End x ctrl+shift+s"); }, "Save As - Nebro"},
      {"the Font dialog", plain, [] { Keys("Nebro - plain.txt", "ctrl+shift+f"); }, "Nebro - Font"},
      {"the Help window", plain, [] { Keys("Nebro - plain.txt", "F1"); }, "Nebro - Help"},
      {"the Settings dialog", plain, [&] { ClickThroughAccessibility(pid, "Settings"); }, "Nebro - Settings"},
      {"\"Cannot save file.\"", gone, [&] {
         Keys("Nebro - notes.txt", "ctrl+End x");
         fs::remove_all(box.Path() + "/gone");
         Keys("Nebro - notes.txt \\*", "ctrl+s");
       }, ""},
  };
  // The editors are visible to screen readers, as on a desktop.
  std::vector<std::string> env = box.Env();
  std::erase(env, "NO_AT_BRIDGE=1");
  for (const State& s : states) {
    SCOPED_TRACE(s.what);
    fs::remove_all(box.Path() + "/cfg");
    Child nebro({NEBRO_EXECUTABLE, s.file}, env);
    pid = nebro.Pid();
    ASSERT_TRUE(nebro.WaitForLine("Nebro: FileLoad called")) << nebro.Output();
    s.reach();
    // The box or chooser of this state is on screen (a message box when no title is named).
    if (!s.shown.empty()) ASSERT_FALSE(WaitForWindow(s.shown).empty()) << nebro.Output();
    else ASSERT_TRUE(nebro.WaitForLine("Nebro: Message box shown")) << nebro.Output();
    nebro.Signal(SIGTERM);
    EXPECT_EQ(nebro.Wait(), 0) << nebro.Output();
    EXPECT_NE(nebro.Output().find("Nebro: Exited message loop"), std::string::npos) << nebro.Output();
    // The settings were written on the way out, and every file holds what it held.
    nebro::settings::AppSettings after;
    EXPECT_TRUE(nebro::settings::LoadSettingsFrom(box.Config(), after));
    EXPECT_EQ(ReadBytes(plain), text);
    EXPECT_EQ(ReadBytes(locked), text);
  }
  // The save that failed was not retried on the way out.
  EXPECT_FALSE(fs::exists(box.Path() + "/gone"));
  close(lockFd);
}
