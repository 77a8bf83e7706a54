// Main of every GUI test program. Each test process gets an X server of its own, so GUI tests
// can run beside each other (and beside unit tests) without sharing focus, windows or the
// pointer; GTK is initialised once on it.
#include <gtest/gtest.h>
#include <gtk/gtk.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

pid_t xServer = 0;

void StopXServer() {
  if (xServer > 0) {
    kill(xServer, SIGTERM);
    waitpid(xServer, nullptr, 0);
    xServer = 0;
  }
}

// Starts Xvfb on a free display number, which it writes to a pipe once it accepts clients.
bool StartXServer() {
  int fds[2];
  if (pipe(fds) != 0) return false;
  xServer = fork();
  if (xServer < 0) return false;
  if (xServer == 0) {
    close(fds[0]);
    const std::string fd = std::to_string(fds[1]);
    execlp("Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-screen", "0", "1280x1024x24", "-nolisten", "tcp",
           "-noreset", static_cast<char*>(nullptr));
    _exit(127);
  }
  close(fds[1]);
  std::string display;
  char c;
  while (read(fds[0], &c, 1) == 1 && c != '\n') display += c;
  close(fds[0]);
  if (display.empty()) {
    StopXServer();
    return false;
  }
  setenv("DISPLAY", (":" + display).c_str(), 1);
  std::atexit(StopXServer);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  // A controlled desktop: no session bus behind GSettings (the file chooser writes its state
  // there), no accessibility bus.
  setenv("GSETTINGS_BACKEND", "memory", 0);
  setenv("NO_AT_BRIDGE", "1", 0);
  if (!getenv("NEBRO_TEST_SHARED_DISPLAY") && !StartXServer()) {
    std::fprintf(stderr, "GUI tests need Xvfb (package xvfb)\n");
    return 1;
  }
  if (!gtk_init_check(&argc, &argv)) {
    std::fprintf(stderr, "GUI tests need a display\n");
    return 1;
  }
  const int result = RUN_ALL_TESTS();
  StopXServer();
  return result;
}
