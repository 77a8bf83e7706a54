// Main of every GUI test program: GTK needs initialising once, on a display (Xvfb in the
// test script).
#include <gtest/gtest.h>
#include <gtk/gtk.h>

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (!gtk_init_check(&argc, &argv)) {
    fprintf(stderr, "GUI tests need a display; run them through scripts/test.sh\n");
    return 1;
  }
  return RUN_ALL_TESTS();
}
