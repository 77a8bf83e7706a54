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

namespace {

std::string Read(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

// Waits until a window whose whole title is `title` exists; returns its id or "".
std::string WaitForWindow(const std::string& title) {
  for (int i = 0; i < 100; ++i) {
    const std::string out = "/tmp/nebro-e2e-window";
    if (Shell("xdotool search --name '^" + title + "$' > " + out + " 2>/dev/null") == 0) {
      std::string id;
      std::ifstream(out) >> id;
      if (!id.empty()) return id;
    }
    usleep(100000);
  }
  return "";
}

struct Session {
  std::string dir;
  Session() {
    char name[] = "/tmp/nebro-e2e-XXXXXX";
    dir = mkdtemp(name);
  }
  ~Session() { fs::remove_all(dir); }
  std::vector<std::string> Env() const { return {"XDG_CONFIG_HOME=" + dir + "/cfg", "G_MESSAGES_DEBUG=Nebro"}; }
};

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
  Session s;
  struct Case {
    std::string name, before, after;
  } cases[] = {
      {"plain.txt", "first\nsecond\n", "first\nsecond\ntyped here"},
      {"bom.txt", "\xEF\xBB\xBF" "a\r\nb\r\n", "\xEF\xBB\xBF" "a\r\nb\r\ntyped here"},
      {"wide.txt", std::string("\xFF\xFE" "x\0\r\0\n\0", 8), "x\r\ntyped here"},
      {"mixed.cpp", "int a;\r\nint b;\nint c;\r", "int a;\r\nint b;\nint c;\rtyped here"},
  };
  for (const Case& c : cases) {
    const std::string file = s.dir + "/" + c.name;
    std::ofstream(file, std::ios::binary) << c.before;
    Child nebro({NEBRO_EXECUTABLE, file}, s.Env());
    ASSERT_TRUE(nebro.WaitForLine("FileLoad completed successfully")) << nebro.Output();
    TypeAndSave(c.name);
    EXPECT_EQ(Read(file), c.after) << c.name;
    nebro.Signal(SIGTERM);
    EXPECT_EQ(nebro.Wait(), 0);
  }
}
