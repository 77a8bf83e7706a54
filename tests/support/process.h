// Runs the editor as a child process for end-to-end tests: output lines are collected as they
// come, so a test can wait for a trace line, act (xdotool, signals), and then check the end.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "disk_fixtures.h"

namespace nebro::test {

class Child {
 public:
  Child(const std::vector<std::string>& argv, const std::vector<std::string>& env) {
    int fds[2];
    if (pipe(fds) != 0) return;
    pid_ = fork();
    if (pid_ == 0) {
      dup2(fds[1], 1);
      dup2(fds[1], 2);
      close(fds[0]);
      close(fds[1]);
      for (const std::string& e : env) putenv(const_cast<char*>(e.c_str()));
      std::vector<char*> args;
      for (const std::string& a : argv) args.push_back(const_cast<char*>(a.c_str()));
      args.push_back(nullptr);
      execv(args[0], args.data());
      _exit(127);
    }
    close(fds[1]);
    fd_ = fds[0];
  }
  ~Child() {
    if (pid_ > 0 && !exited_) {
      kill(pid_, SIGKILL);
      Wait(5000);
    }
    if (fd_ >= 0) close(fd_);
  }

  // Reads output until a line contains `text`; false on timeout or end of output.
  bool WaitForLine(const std::string& text, int timeoutMs = 20000) {
    for (size_t i = 0; i < lines_.size(); ++i) if (lines_[i].find(text) != std::string::npos) return true;
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (std::chrono::steady_clock::now() < end) {
      const size_t before = lines_.size();
      if (!ReadSome(100) && eof_) return false;
      for (size_t i = before; i < lines_.size(); ++i) if (lines_[i].find(text) != std::string::npos) return true;
    }
    return false;
  }

  void Signal(int sig) { if (pid_ > 0) kill(pid_, sig); }

  // Waits for the exit and returns the exit code (-1 on timeout, 128+n for a signal).
  int Wait(int timeoutMs = 20000) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (std::chrono::steady_clock::now() < end) {
      ReadSome(20);
      int status = 0;
      if (waitpid(pid_, &status, WNOHANG) == pid_) {
        exited_ = true;
        while (ReadSome(0)) {
        }
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
      }
    }
    return -1;
  }

  const std::vector<std::string>& Lines() const { return lines_; }
  std::string Output() const {
    std::string all;
    for (const std::string& l : lines_) all += l + "\n";
    return all;
  }
  pid_t Pid() const { return pid_; }

 private:
  bool ReadSome(int timeoutMs) {
    if (fd_ < 0 || eof_) return false;
    pollfd p{fd_, POLLIN, 0};
    if (poll(&p, 1, timeoutMs) <= 0) return false;
    char buf[4096];
    const ssize_t n = read(fd_, buf, sizeof buf);
    if (n <= 0) {
      eof_ = true;
      return false;
    }
    partial_.append(buf, static_cast<size_t>(n));
    size_t nl;
    while ((nl = partial_.find('\n')) != std::string::npos) {
      lines_.push_back(partial_.substr(0, nl));
      partial_.erase(0, nl + 1);
    }
    return true;
  }

  pid_t pid_ = -1;
  int fd_ = -1;
  bool exited_ = false;
  bool eof_ = false;
  std::string partial_;
  std::vector<std::string> lines_;
};

// Runs a shell command and returns its exit code.
inline int Shell(const std::string& command) { return std::system(command.c_str()); }

// What `command` writes to its standard output.
inline std::string ShellOutput(const std::string& command) {
  std::string out;
  if (FILE* pipe = popen(command.c_str(), "r")) {
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, pipe)) > 0) out.append(buf, n);
    pclose(pipe);
  }
  return out;
}

// What poppler's tools read from a PDF: its number of pages (-1 when it cannot be read), and its
// text as pdftotext prints it with `options` (pages, layout).
inline int PdfPageCount(const std::string& pdf) {
  const std::string info = ShellOutput("pdfinfo '" + pdf + "' 2>&1");
  const size_t at = info.find("Pages:");
  return at == std::string::npos ? -1 : std::atoi(info.c_str() + at + 6);
}
inline std::string PdfText(const std::string& pdf, const std::string& options = "-layout") {
  return ShellOutput("pdftotext " + options + " '" + pdf + "' -");
}

// The id of the window whose whole title is `title`, asked of the X server every 100 ms for up
// to ten seconds; "" when there is none.
inline std::string WaitForWindow(const std::string& title) {
  for (int i = 0; i < 100; ++i) {
    FILE* p = popen(("xdotool search --name '^" + title + "$' 2>/dev/null").c_str(), "r");
    char id[32] = {};
    const bool found = p && fgets(id, sizeof id, p);
    if (p) pclose(p);
    if (found) return std::string(id, std::strcspn(id, "\n"));
    usleep(100000);
  }
  return "";
}

// A throw-away folder for editors started as children; their settings go to <folder>/cfg.
class Sandbox : public TempFolder {
 public:
  std::vector<std::string> Env() const {
    return {"XDG_CONFIG_HOME=" + Path() + "/cfg", "G_MESSAGES_DEBUG=Nebro", "NO_AT_BRIDGE=1"};
  }
  std::string Config() const { return Path() + "/cfg/Nebro/nebro.cfg"; }
  std::string Write(const std::string& name, const std::string& bytes) const {
    WriteBytes(Path() + "/" + name, bytes);
    return Path() + "/" + name;
  }
};

}  // namespace nebro::test
