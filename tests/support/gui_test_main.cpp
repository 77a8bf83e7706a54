// Main of every GUI test program: GTK needs initialising once, on a display (Xvfb in the
// test script).
#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <cstdlib>

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  // A controlled desktop: no session bus behind GSettings (the file chooser writes its state
  // there), no accessibility bus.
  setenv("GSETTINGS_BACKEND", "memory", 0);
  setenv("NO_AT_BRIDGE", "1", 0);
  if (!gtk_init_check(&argc, &argv)) {
    fprintf(stderr, "GUI tests need a display; run them through scripts/test.sh\n");
    return 1;
  }
  return RUN_ALL_TESTS();
}
