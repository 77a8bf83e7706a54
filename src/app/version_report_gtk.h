// nebro --version: the program's version and the Scintilla and Lexilla libraries it loads.
#pragma once

namespace nebro::app {

// Prints the report on stdout without opening a display. Returns the exit code: 0, or 1 when
// a library is missing.
int PrintVersionReport();

}  // namespace nebro::app
