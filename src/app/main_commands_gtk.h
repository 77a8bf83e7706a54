// The main window's own commands: editing, view, themes, transparency and exit, and the rows of
// the windows that are not built yet (their keys stay free until they are).
#pragma once

#include "common/command_table.h"

namespace nebro::app {

void AddMainWindowCommands(CommandTable& table);

}  // namespace nebro::app
