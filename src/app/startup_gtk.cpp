#include "app/startup_gtk.h"

#include <gtk/gtk.h>

namespace nebro {

int RunNebro(int argc, char** argv) {
  gtk_init(&argc, &argv);
  return 0;
}

}  // namespace nebro
