#pragma once

namespace nebro::app {

// The whole life of the process: start-up, the main loop and the clean-up. Returns the exit code.
int RunNebro(int argc, char** argv);

}  // namespace nebro::app
