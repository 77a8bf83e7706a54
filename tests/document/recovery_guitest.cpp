// Unsaved text survives the editor: killed, it leaves a recovery copy that the next start offers
// back; ended by a signal, it keeps one; a second editor running beside never takes it.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <thread>

#include "../support/process.h"
#include "document/recovery.h"

namespace fs = std::filesystem;
using nebro::test::Child;
using nebro::test::ReadBytes;
using nebro::test::Sandbox;
using nebro::test::Shell;
using nebro::test::WaitForWindow;

namespace {

// Waits for a state that another process brings about (checked every 20 ms, 20 s at most).
bool WaitFor(const std::function<bool()>& done) {
  for (int i = 0; i < 1000; ++i) {
    if (done()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return false;
}

std::string CopyOf(const Sandbox& box, const Child& child) {
  return nebro::document::RecoveryFileFor(box.Path() + "/cfg/Nebro", child.Pid());
}

}  // namespace

TEST(Recovery, AKilledEditorsTextIsOfferedBackAndRestoredAsUnsaved) {
  Sandbox box;
  const std::string file = box.Write("notes.txt", "old text\n");
  std::string firstCopy;
  {
    Child first({NEBRO_EXECUTABLE, file}, box.Env());
    ASSERT_TRUE(first.WaitForLine("Nebro: FileLoad completed successfully")) << first.Output();
    const std::string id = WaitForWindow("Nebro - notes.txt");
    ASSERT_FALSE(id.empty());
    ASSERT_EQ(Shell("xdotool windowfocus --sync " + id + " key --window " + id + " ctrl+End"), 0);
    ASSERT_EQ(Shell("xdotool type --window " + id + " --delay 10 'typed'"), 0);
    firstCopy = CopyOf(box, first);
    ASSERT_TRUE(WaitFor([&] { return ReadBytes(firstCopy).find("old text\ntyped") != std::string::npos; }))
        << first.Output();

    // A second editor, started while the first runs, leaves the first one's copy alone.
    Child second({NEBRO_EXECUTABLE}, box.Env());
    ASSERT_TRUE(second.WaitForLine("Nebro: Entering message loop")) << second.Output();
    ASSERT_FALSE(WaitForWindow("Nebro - Untitled").empty());
    second.Signal(SIGTERM);
    EXPECT_EQ(second.Wait(), 0);
    EXPECT_EQ(second.Output().find("Nebro - Recovery"), std::string::npos) << second.Output();
    EXPECT_TRUE(fs::exists(firstCopy));

    first.Signal(SIGKILL);
    first.Wait();
  }
  EXPECT_EQ(ReadBytes(file), "old text\n");

  // The next start offers the text back; Yes makes it the document, unsaved, with its path.
  Child again({NEBRO_EXECUTABLE}, box.Env());
  ASSERT_TRUE(again.WaitForLine("Nebro: Message box shown: Nebro - Recovery")) << again.Output();
  const std::string box_id = WaitForWindow("Nebro - Recovery");
  ASSERT_FALSE(box_id.empty());
  ASSERT_EQ(Shell("xdotool windowfocus --sync " + box_id + " key --window " + box_id + " Return"), 0);
  EXPECT_FALSE(WaitForWindow("Nebro - notes.txt \\*").empty()) << again.Output();
  EXPECT_FALSE(fs::exists(firstCopy));
  EXPECT_EQ(ReadBytes(file), "old text\n");

  // Ended by a signal with the text still unsaved, the editor keeps a copy of its own.
  again.Signal(SIGTERM);
  EXPECT_EQ(again.Wait(), 0);
  EXPECT_NE(ReadBytes(CopyOf(box, again)).find("path: " + file + "\n"), std::string::npos);
  EXPECT_NE(ReadBytes(CopyOf(box, again)).find("old text\ntyped"), std::string::npos);
}
