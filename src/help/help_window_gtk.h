// The help window: modeless, one at a time, the topic list on the left and the topic's text on
// the right, in the theme's colours.
#pragma once

#include <gtk/gtk.h>

#include "common/command_table.h"
#include "settings/settings.h"

namespace nebro::help {

// Opens the help window over `owner` at the size and topic it had when last closed, or brings
// the open one to the front. Its size and topic go back into `settings` (and the settings file)
// when it closes. The shortcut topic is made from `commands` as they are now.
void ShowHelp(GtkWindow* owner, const CommandTable& commands, settings::AppSettings& settings);

}  // namespace nebro::help
