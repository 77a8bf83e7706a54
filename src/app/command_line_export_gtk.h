// Exporting a file from the command line with the editor's own loading, lexers, theme and
// generators, through a hidden editor.
#pragma once

#include "app/command_line_tool.h"

namespace nebro::app {

// Returns the process exit code; prints a one-line message on stderr on failure. No partial
// output file is left behind. Colouring needs the editor and so a display; plain text and
// Markdown pages do not.
int RunCommandLineExport(const ToolRequest& request, int argc, char** argv);

}  // namespace nebro::app
