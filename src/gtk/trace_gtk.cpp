#include "gtk/trace_gtk.h"

#include <cstdarg>

namespace nebro {

void Trace(const char* format, ...) {
  va_list args;
  va_start(args, format);
  g_logv("Nebro", G_LOG_LEVEL_DEBUG, format, args);
  va_end(args);
}

}  // namespace nebro
