// The program's only log: one line per start-up step and per file load, on the GLib log under
// the domain "Nebro" at debug level (shown with G_MESSAGES_DEBUG=Nebro).
#pragma once

#include <glib.h>

namespace nebro {

void Trace(const char* format, ...) G_GNUC_PRINTF(1, 2);

}  // namespace nebro
