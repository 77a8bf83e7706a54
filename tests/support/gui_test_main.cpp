// Main of every GUI test program. Each test process gets an X server and a session bus of its
// own, so GUI tests can run beside each other (and beside unit tests) without sharing focus,
// windows, the pointer or the accessibility registry; GTK is initialised once on them. The
// accessibility bus behind the session bus is the one screen readers use; tests reach the
// windows through it (tests/support/accessibility.h).
#include <gtest/gtest.h>
#include <gtk/gtk.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

pid_t xServer = 0;
pid_t sessionBus = 0;

void Stop(pid_t& pid) {
  if (pid > 0) {
    kill(-pid, SIGTERM);  // the server's own process group: the bus takes its activated services along
    waitpid(pid, nullptr, 0);
    pid = 0;
  }
}

void StopServers() {
  Stop(sessionBus);
  Stop(xServer);
}

// Starts `argv` in a process group of its own with the write end of a pipe as "{fd}" and returns
// the first line the server writes there once it is ready ("" on failure).
std::string StartServer(pid_t& pid, std::vector<std::string> argv, bool quiet = false) {
  int fds[2];
  if (pipe(fds) != 0) return "";
  pid = fork();
  if (pid < 0) return "";
  if (pid == 0) {
    setpgid(0, 0);
    close(fds[0]);
    if (quiet) freopen("/dev/null", "w", stderr);
    std::vector<char*> args;
    for (std::string& a : argv) {
      if (a.find("{fd}") != std::string::npos) a.replace(a.find("{fd}"), 4, std::to_string(fds[1]));
      args.push_back(a.data());
    }
    args.push_back(nullptr);
    execvp(args[0], args.data());
    _exit(127);
  }
  close(fds[1]);
  std::string line;
  char c;
  while (read(fds[0], &c, 1) == 1 && c != '\n') line += c;
  close(fds[0]);
  return line;
}

bool StartXServer() {
  const std::string display = StartServer(xServer, {"Xvfb", "-displayfd", "{fd}", "-screen", "0", "1280x1024x24",
                                                    "-nolisten", "tcp", "-noreset"});
  if (display.empty()) return false;
  setenv("DISPLAY", (":" + display).c_str(), 1);
  return true;
}

// A private session bus; the accessibility bus launcher is started on it on demand.
bool StartSessionBus() {
  const std::string address = StartServer(sessionBus, {"dbus-daemon", "--session", "--nofork", "--print-address={fd}"},
                                           true);  // its services' chatter would bury the tests' output
  if (address.empty()) return false;
  setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
  unsetenv("NO_AT_BRIDGE");
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  // A controlled desktop: GSettings keeps the file chooser's state in memory.
  setenv("GSETTINGS_BACKEND", "memory", 0);
  std::atexit(StopServers);
  if (!getenv("NEBRO_TEST_SHARED_DISPLAY")) {
    if (!StartXServer()) {
      std::fprintf(stderr, "GUI tests need Xvfb (package xvfb)\n");
      return 1;
    }
    if (!StartSessionBus()) {
      std::fprintf(stderr, "GUI tests need dbus-daemon (package dbus-daemon)\n");
      return 1;
    }
  }
  if (!gtk_init_check(&argc, &argv)) {
    std::fprintf(stderr, "GUI tests need a display\n");
    return 1;
  }
  const int result = RUN_ALL_TESTS();
  StopServers();
  return result;
}
