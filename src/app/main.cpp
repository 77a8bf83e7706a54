#include "app/startup_gtk.h"

int main(int argc, char** argv) { return nebro::app::RunNebro(argc, argv); }
