#include "app/command_line_tool.h"

#include <gtest/gtest.h>

using namespace nebro;
using namespace nebro::app;

// Exports in every format, failures and an unknown format run as a process in
// command_line_export_guitest, and plain and viewer starts in startup_guitest.
TEST(CommandLineTool, Requests) {
  EXPECT_EQ(ParseToolRequest({"nebro", "--help"}).command, ToolCommand::Help);
  EXPECT_EQ(ParseToolRequest({"nebro", "-h"}).command, ToolCommand::Help);
  EXPECT_EQ(ParseToolRequest({"nebro", "--version"}).command, ToolCommand::Version);
  EXPECT_EQ(ParseToolRequest({"nebro", "--export", "html", "a"}).command, ToolCommand::UsageError);
  EXPECT_EQ(ParseToolRequest({"nebro", "--export", "html", "a", "b", "c"}).command, ToolCommand::UsageError);
  // Only the first argument selects a tool: a file may be called --export elsewhere.
  EXPECT_EQ(ParseToolRequest({"nebro", "a", "--export"}).command, ToolCommand::None);

  EXPECT_EQ(OneLine("File not found (error 2).\n\n/tmp/x"), "File not found (error 2). /tmp/x");
  EXPECT_EQ(OneLine("a\r\nb"), "a b");
  EXPECT_NE(std::string(UsageText()).find("--export FORMAT INPUT OUTPUT"), std::string::npos);
}
