// Where the program finds its own files. An installed binary finds them in the share folder the
// install put beside it (<exe dir>/../share/nebro); a binary in its build folder finds them in
// the source tree, so the same build runs from both places.
#pragma once

#include <string>

namespace nebro {

// The folder of the running executable, or empty when it cannot be read.
std::string ExecutableFolder();

// True when the program runs from an install (its share folder exists beside it).
bool RunsInstalled();

// The folder holding the sounds and other data files.
std::string ResourceFolder();

// The base folder holding the program's icon theme (hicolor/...), for windows' icons.
std::string IconFolder();

}  // namespace nebro
