// Page Setup: the desktop's page setup dialog, pre-filled with the stored paper and margins.
#pragma once

#include <gtk/gtk.h>

#include "settings/settings.h"

namespace nebro::print {

// Runs the dialog over `owner`. On OK the paper size and the four margins go into `s` (in
// hundredths of a millimetre, as the settings keep them) and true comes back; on Cancel or
// Escape nothing changes.
bool RunPageSetup(GtkWindow* owner, settings::AppSettings& s);

}  // namespace nebro::print
