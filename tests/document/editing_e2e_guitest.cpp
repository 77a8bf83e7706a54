// A person's session, played with real input: open a file from the command line, type, see the
// title change, save with Ctrl+S, and find the right bytes on disk.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "../support/process.h"

namespace fs = std::filesystem;
using nebro::test::Child;
using nebro::test::Shell;
using nebro::test::WaitForWindow;

namespace {

void TypeAndSave(const std::string& name) {
  const std::string id = WaitForWindow("Nebro - " + name);
  ASSERT_FALSE(id.empty()) << "no window titled Nebro - " << name;
  // Go to the end of the document and type a line.
  ASSERT_EQ(Shell("xdotool windowfocus --sync " + id + " key --window " + id + " ctrl+End"), 0);
  ASSERT_EQ(Shell("xdotool type --window " + id + " --delay 20 'typed here'"), 0);
  EXPECT_FALSE(WaitForWindow("Nebro - " + name + " \\*").empty()) << "the title shows no change mark";
  ASSERT_EQ(Shell("xdotool key --window " + id + " ctrl+s"), 0);
  EXPECT_FALSE(WaitForWindow("Nebro - " + name).empty()) << "the change mark stayed after Ctrl+S";
}

}  // namespace

TEST(EditingSession, TypeAndSaveKeepsEncodingRules) {
  nebro::test::Sandbox s;
  struct Case {
    std::string name, before, after;
  } cases[] = {
      {"plain.txt", "first\nsecond\n", "first\nsecond\ntyped here"},
      {"bom.txt", "\xEF\xBB\xBF" "a\r\nb\r\n", "\xEF\xBB\xBF" "a\r\nb\r\ntyped here"},
      {"wide.txt", std::string("\xFF\xFE" "x\0\r\0\n\0", 8), "x\r\ntyped here"},
      {"mixed.cpp", "int a;\r\nint b;\nint c;\r", "int a;\r\nint b;\nint c;\rtyped here"},
  };
  for (const Case& c : cases) {
    const std::string file = s.Write(c.name, c.before);
    Child nebro({NEBRO_EXECUTABLE, file}, s.Env());
    ASSERT_TRUE(nebro.WaitForLine("FileLoad completed successfully")) << nebro.Output();
    TypeAndSave(c.name);
    EXPECT_EQ(nebro::test::ReadBytes(file), c.after) << c.name;
    nebro.Signal(SIGTERM);
    EXPECT_EQ(nebro.Wait(), 0);
  }
}
