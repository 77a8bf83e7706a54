// The editor started as a process: trace order, settings written at exit, the last file, the
// viewer, signals and the fatal start-up failures.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "../support/process.h"
#include "common/utf.h"
#include "settings/settings.h"

namespace fs = std::filesystem;
using nebro::test::Child;
using nebro::test::ReadBytes;
using nebro::test::Sandbox;
using nebro::test::Shell;

namespace {

nebro::settings::AppSettings LoadConfig(const Sandbox& box, bool* ok = nullptr) {
  nebro::settings::AppSettings s;
  const bool loaded = nebro::settings::LoadSettingsFrom(box.Config(), s);
  if (ok) *ok = loaded;
  return s;
}

// Starts the editor, waits for the trace `line`, ends it with `sig` and returns its output; the
// exit must be a clean one.
std::string RunUntil(const Sandbox& box, const std::vector<std::string>& args, const std::string& line,
                     int sig = SIGTERM) {
  Child nebro(args, box.Env());
  EXPECT_TRUE(nebro.WaitForLine(line)) << nebro.Output();
  nebro.Signal(sig);
  EXPECT_EQ(nebro.Wait(), 0) << nebro.Output();
  return nebro.Output();
}

// Checks that `expected` appear in the output in this order, each on a later line than the one
// before (other lines may come between).
void ExpectInOrder(const std::string& output, const std::vector<std::string>& expected) {
  size_t at = 0, from = 0;
  for (; at < expected.size(); ++at) {
    const size_t found = output.find(expected[at], from);
    if (found == std::string::npos) break;
    from = output.find('\n', found);
  }
  EXPECT_EQ(at, expected.size()) << "missing from here on: " << (at < expected.size() ? expected[at] : "")
                                 << "\noutput:\n" << output;
}

}  // namespace

TEST(Startup, TraceOrderSettingsAndLastFile) {
  Sandbox box;
  const std::string file = box.Write("sample.cpp", "int main() { return 0; }\n");
  ExpectInOrder(RunUntil(box, {NEBRO_EXECUTABLE, file}, "Nebro: FileLoad completed successfully"), {
        "Nebro: Started", "Nebro: Loading settings",
        "Nebro: Parsing command line for --viewer flag", "Nebro: Loading font aliases",
        "Nebro: Loading libscintilla.so", "Nebro: libscintilla.so loaded",
        "Nebro: Loading liblexilla.so", "Nebro: liblexilla.so loaded", "Nebro: CreateLexer function found",
        "Nebro: Creating main window", "Nebro: Normal mode - using settings for window position",
        "Nebro: Position left to the window manager", "Nebro: Window size: 920 x 660", "Nebro: Main window created",
        "Nebro: Window shown", "Nebro: Processing command line arguments", "Nebro: Command line has 2 arguments",
        "Nebro: First argument: " + file, "Nebro: Normal mode - loading file from command line",
        "Nebro: Entering message loop", "Nebro: FileLoad called for: " + file, "Nebro: File opened successfully",
        "Nebro: File read successfully", "Nebro: FileLoad completed successfully", "Nebro: Exited message loop",
        "Nebro: Cleaning up resources", "Nebro: liblexilla.so unloaded", "Nebro: libscintilla.so unloaded",
        "Nebro: Exiting with code 0"});
  // The first start left a valid settings file; the exit stored the document and the window.
  EXPECT_EQ(fs::file_size(box.Config()), 36703u);
  bool ok = false;
  nebro::settings::AppSettings s = LoadConfig(box, &ok);
  ASSERT_TRUE(ok);
  EXPECT_FALSE(s.firstRun);
  EXPECT_EQ(nebro::Utf16ToUtf8(nebro::settings::FieldText(s.lastFile)), file);
  EXPECT_EQ(s.windowWidth, 920);
  EXPECT_EQ(s.windowHeight, 660);

  // No argument: the last file comes back.
  ExpectInOrder(RunUntil(box, {NEBRO_EXECUTABLE}, "Nebro: FileLoad completed successfully", SIGINT),
                {"Nebro: Command line has 1 arguments", "Nebro: No command line file, checking last file from settings",
                 "Nebro: Loading last file from settings", "Nebro: FileLoad called for: " + file});
  // The last file is gone: an untitled start that forgets it.
  fs::remove(file);
  const std::string untitled = RunUntil(box, {NEBRO_EXECUTABLE}, "Nebro: Entering message loop");
  ExpectInOrder(untitled, {"Nebro: Last file no longer exists, clearing", "Nebro: Entering message loop"});
  EXPECT_EQ(untitled.find("FileLoad called"), std::string::npos);
  EXPECT_EQ(nebro::settings::FieldText(LoadConfig(box).lastFile), u"");
}

TEST(Startup, StoredPlacementIsUsedAndViewerWritesNothing) {
  Sandbox box;
  nebro::settings::AppSettings s;
  nebro::settings::SetDefaultSettings(s);
  s.firstRun = false;
  s.windowX = 0x80000000;  // default X with a real Y: both default
  s.windowY = 50;
  s.windowWidth = 700;
  s.windowHeight = 500;
  s.theme = 9;
  fs::create_directories(box / "cfg/Nebro");
  ASSERT_TRUE(nebro::settings::SaveSettingsTo(box.Config(), s));
  const std::string file = box.Write("notes.md", "# Title\n\nSome *text*.\n");
  ExpectInOrder(RunUntil(box, {NEBRO_EXECUTABLE, file}, "FileLoad completed successfully"),
                {"Nebro: Position left to the window manager", "Nebro: Window size: 700 x 500"});
  EXPECT_EQ(LoadConfig(box).theme, 9u);  // kept as stored, drawn as theme 0

  const std::string before = ReadBytes(box.Config());
  const std::string viewer = RunUntil(box, {NEBRO_EXECUTABLE, "--viewer", file, "--nebro-viewer-geometry=40,60,500,400"},
                                      "FileLoad completed successfully");
  ExpectInOrder(viewer, {"Nebro: Viewer mode enabled", "Nebro: libscintilla.so loaded",
                         "Nebro: Viewer mode - window place from the launching editor",
                         "Nebro: Using the position given by the editor", "Nebro: Viewer window size set",
                         "Nebro: Window size: 500 x 400, pos: 40, 60", "Nebro: Viewer mode - loading file from command line"});
  EXPECT_EQ(viewer.find("liblexilla"), std::string::npos);
  EXPECT_EQ(ReadBytes(box.Config()), before);  // a viewer never writes the settings

  // A lone --viewer opens a viewer that then reports a file named "--viewer" as not found.
  {
    Child viewer({NEBRO_EXECUTABLE, "--viewer"}, box.Env());
    ASSERT_TRUE(viewer.WaitForLine("Failed to open file")) << viewer.Output();
    viewer.Signal(SIGKILL);  // the box is modal; nothing to save in a viewer
    viewer.Wait();
    ExpectInOrder(viewer.Output(), {"Nebro: Viewer mode enabled", "Nebro: Window size: 660 x 820",
                           "Nebro: Normal mode - loading file from command line",
                           "Nebro: FileLoad called for: --viewer"});
  }
}

TEST(Startup, MissingLibrariesAreFatal) {
  Sandbox box;
  const std::string bin = box / "bin";
  fs::create_directories(bin);
  fs::copy_file(NEBRO_EXECUTABLE, bin + "/nebro");
  auto runExpectingFatal = [&](const std::string& trace, std::vector<std::string> args) {
    args.insert(args.begin(), bin + "/nebro");
    Child nebro(args, box.Env());
    EXPECT_TRUE(nebro.WaitForLine(trace)) << nebro.Output();
    // Answer the fatal box like a person would; the box going away ends the process.
    int code = -1;
    for (int i = 0; i < 50 && code == -1; ++i) {
      Shell("xdotool search --name '^Nebro - Fatal Error$' windowfocus --sync key Escape >/dev/null 2>&1");
      code = nebro.Wait(200);
    }
    EXPECT_EQ(code, 1) << nebro.Output();
    EXPECT_EQ(nebro.Output().find("Entering message loop"), std::string::npos);
  };

  // A broken libscintilla.so beside the executable is used and fails.
  std::ofstream(bin + "/libscintilla.so") << "not a library";
  runExpectingFatal("Nebro: ERROR - libscintilla.so not found", {});
  runExpectingFatal("Nebro: ERROR - libscintilla.so not found", {"--viewer", "x.txt"});

  // A lexer library without CreateLexer (the editing library itself has none).
  fs::remove(bin + "/libscintilla.so");
  fs::create_symlink(NEBRO_SCINTILLA_DIR "/libscintilla.so", bin + "/libscintilla.so");
  fs::create_symlink(NEBRO_SCINTILLA_DIR "/libscintilla.so", bin + "/liblexilla.so");
  runExpectingFatal("Nebro: ERROR - CreateLexer not found in liblexilla.so", {});

  // The viewer does not look for the lexer library at all.
  RunUntil(box, {bin + "/nebro", "--viewer", box.Write("v.txt", "viewer text\n")}, "FileLoad completed successfully");
}

TEST(Startup, RelativePathIsStoredAbsoluteTransparencyAndIconShow) {
  Sandbox box;
  fs::create_directories(box / "work");
  box.Write("work/notes.py", "x = 1\n");
  nebro::settings::AppSettings s = LoadConfig(box);
  s.transparency = 30;
  fs::create_directories(box / "cfg/Nebro");
  ASSERT_TRUE(nebro::settings::SaveSettingsTo(box.Config(), s));

  Child nebro({"/bin/sh", "-c", "cd '" + box.Path() + "/work' && exec '" NEBRO_EXECUTABLE "' notes.py"}, box.Env());
  ASSERT_TRUE(nebro.WaitForLine("Nebro: FileLoad completed successfully")) << nebro.Output();
  auto property = [&](const std::string& name) {
    return nebro::test::ShellOutput("for w in $(xdotool search --pid " + std::to_string(nebro.Pid()) +
                                    "); do xprop -id $w " + name + "; done");
  };
  // The window manager's compositor reads the opacity from the window's property.
  const std::string opacity = property("_NET_WM_WINDOW_OPACITY");
  EXPECT_NE(opacity.find("_NET_WM_WINDOW_OPACITY(CARDINAL) = "), std::string::npos) << opacity;
  // The window list and title bar show the program's icon, found beside the build in the source tree.
  const std::string icon = property("_NET_WM_ICON");
  EXPECT_NE(icon.find("Icon (16 x 16)"), std::string::npos) << icon;
  EXPECT_NE(icon.find("Icon (48 x 48)"), std::string::npos) << icon;
  nebro.Signal(SIGTERM);
  EXPECT_EQ(nebro.Wait(), 0);

  const nebro::settings::AppSettings after = LoadConfig(box);
  const std::string absolute = box.Path() + "/work/notes.py";
  EXPECT_EQ(nebro::Utf16ToUtf8(nebro::settings::FieldText(after.lastFile)), absolute);
  EXPECT_EQ(nebro::Utf16ToUtf8(nebro::settings::FieldText(after.recentFiles[0])), absolute);
}

TEST(Startup, ASignalCancelsARunningLoad) {
  Sandbox box;
  const std::string big = box.Write("big.txt", std::string(300u << 20, 'x'));
  Child nebro({NEBRO_EXECUTABLE, big}, box.Env());
  ASSERT_TRUE(nebro.WaitForLine("Nebro: FileLoad called")) << nebro.Output();
  nebro.Signal(SIGTERM);
  EXPECT_EQ(nebro.Wait(), 0);
  // Either the load was caught running and cancelled, or it had already ended; never in between.
  const std::string out = nebro.Output();
  EXPECT_NE(out.find("Nebro: FileLoad cancelled") == std::string::npos,
            out.find("Nebro: FileLoad completed successfully") == std::string::npos) << out;
}
