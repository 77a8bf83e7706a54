// The options that make the editor a command-line tool: --help, --version, and --export for
// batch use.
#pragma once

#include <string>
#include <vector>

namespace nebro::app {

enum class ToolCommand { None, Help, Version, Export, UsageError };

struct ToolRequest {
  ToolCommand command = ToolCommand::None;
  std::string format;  // "html", "rtf" or "txt"
  std::string input;
  std::string output;
  std::string error;  // for UsageError
};

// `args` includes the program path as args[0].
ToolRequest ParseToolRequest(const std::vector<std::string>& args);

// The text printed by --help.
const char* UsageText();

// A message box text as one line for a terminal: line breaks become blanks, the ends trimmed.
std::string OneLine(const std::string& text);

}  // namespace nebro::app
