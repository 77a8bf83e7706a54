// Loading files into the editor: FileLoad against a bare read() + SCI_SETTEXT of the same bytes,
// time and peak memory, each case in a fresh process. Also the save of a 100 MB document.
// Run on a display: xvfb-run -a build/bench/file_load_bench [--quick]
#include <fcntl.h>
#include <gtk/gtk.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/main_window_gtk.h"
#include "appearance/current_theme.h"
#include "document/document_ops_gtk.h"
#include "document/file_load_gtk.h"
#include "document/text_decode.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "settings/data_folder.h"
#include "settings/settings.h"

using Clock = std::chrono::steady_clock;
using namespace nebro;
using namespace nebro::app;
using namespace nebro::appearance;
using namespace nebro::document;
using namespace nebro::settings;

namespace {

// The main window's own load, run until it has ended (large files load in the background).
bool LoadAndWait(const std::string& path) {
  bool done = false, loaded = false;
  LoadAsDocument(MainDocumentWindow(), path, [&](bool ok) {
    loaded = ok;
    done = true;
  });
  while (!done) g_main_context_iteration(nullptr, TRUE);
  return loaded;
}


double Seconds(Clock::time_point a) { return std::chrono::duration<double>(Clock::now() - a).count(); }

void MakeFile(const std::string& path, size_t bytes, bool utf16) {
  if (std::filesystem::exists(path) && std::filesystem::file_size(path) >= bytes) return;
  FILE* f = std::fopen(path.c_str(), "wb");
  const char* lines[] = {
      "    for (size_t i = 0; i < count; ++i) total += values[i] * 2; // sum\n",
      "static const char* kName = \"nebro\"; int answer = 42; bool ok = true;\n",
      "Plain prose follows here, with words of several lengths, and so on..\n",
  };
  if (utf16) std::fwrite("\xFF\xFE", 1, 2, f);
  size_t written = 0;
  std::string chunk;
  for (size_t i = 0; written < bytes; ++i) {
    const char* line = lines[i % 3];
    if (utf16) {
      for (const char* p = line; *p; ++p) chunk.push_back(*p), chunk.push_back('\0');
    } else {
      chunk += line;
    }
    if (chunk.size() > (1 << 20)) {
      std::fwrite(chunk.data(), 1, chunk.size(), f);
      written += chunk.size();
      chunk.clear();
    }
  }
  std::fclose(f);
}

// Runs `body` in a child with GTK and Scintilla ready; returns its peak RSS in MB and prints
// what the child printed.
double InChild(const std::function<void()>& body) {
  std::fflush(stdout);
  const pid_t pid = fork();
  if (pid == 0) {
    int argc = 0;
    gtk_init(&argc, nullptr);
    SetDefaultSettings(gSettings);
    gThemeChosenByUser = true;
    sci::LoadScintilla();
    sci::LoadLexilla();
    body();
    std::fflush(stdout);
    _exit(0);
  }
  int status = 0;
  rusage usage{};
  wait4(pid, &status, 0, &usage);
  return usage.ru_maxrss / 1024.0;
}

}  // namespace

int main(int argc, char** argv) {
  const bool quick = argc > 1 && std::strcmp(argv[1], "--quick") == 0;
  if (!getenv("DISPLAY")) {
    std::fprintf(stderr, "needs a display: run under xvfb-run -a\n");
    return 1;
  }
  const std::string dir = "/tmp/nebro-load-bench";
  std::filesystem::create_directories(dir);
  SetConfigRoot(dir + "/cfg");

  struct Case {
    const char* name;
    size_t bytes;
    bool utf16;
  };
  std::vector<Case> cases = {{"10 MB UTF-8", 10u << 20, false}, {"100 MB UTF-8", 100u << 20, false},
                             {"100 MB UTF-16", 100u << 20, true}, {"1 GB UTF-8", 1024u << 20, false}};
  if (quick) cases.resize(2);

  // What the FileLoad child holds before it loads anything: GTK and the main window.
  const double baseline = InChild([] { CreateMainWindow("bench", 0, 0, 800, 600, true); });
  std::printf("process baseline (GTK + main window): %.0f MB peak\n", baseline);
  std::printf("%-14s %10s %10s %10s %12s %12s %8s\n", "file", "FileLoad s", "bare s", "ratio", "FileLoad MB",
              "bare MB", "mem/size");

  for (const Case& c : cases) {
    const std::string path = dir + "/" + std::to_string(c.bytes) + (c.utf16 ? "-16" : "-8") + ".txt";
    MakeFile(path, c.bytes, c.utf16);
    const double sizeMb = static_cast<double>(std::filesystem::file_size(path)) / (1 << 20);

    int pipeFds[2];
    pipe(pipeFds);
    const double loadMem = InChild([&] {
      CreateMainWindow("bench", 0, 0, 800, 600, true);
      const auto start = Clock::now();
      const bool ok = LoadAndWait(path);
      const double s = ok ? Seconds(start) : -1;
      write(pipeFds[1], &s, sizeof s);
    });
    double loadSeconds = -1;
    read(pipeFds[0], &loadSeconds, sizeof loadSeconds);

    const double bareMem = InChild([&] {
      GtkWidget* editor = sci::NewEditor();
      g_object_ref_sink(editor);
      const auto start = Clock::now();
      const int fd = open(path.c_str(), O_RDONLY);
      const size_t size = std::filesystem::file_size(path);
      std::unique_ptr<char[]> buf(new char[size + 1]);
      size_t done = 0;
      while (done < size) {
        const ssize_t n = read(fd, buf.get() + done, size - done);
        if (n <= 0) break;
        done += static_cast<size_t>(n);
      }
      close(fd);
      buf[size] = '\0';
      if (c.utf16) {
        // The editor takes UTF-8: the reference converts as plainly as it can, then sets it.
        const auto* units = reinterpret_cast<const unsigned char*>(buf.get()) + 2;
        std::unique_ptr<char[]> text(new char[Utf16BytesToUtf8Size(units, size - 2, false) + 1]);
        const size_t n = Utf16BytesToUtf8(units, size - 2, false, text.get());
        text[n] = '\0';
        buf.reset();
        sci::Send(editor, sci::SCI_SETTEXT, 0, reinterpret_cast<sci::sptr_t>(text.get()));
      } else {
        sci::Send(editor, sci::SCI_SETTEXT, 0, reinterpret_cast<sci::sptr_t>(buf.get()));
      }
      const double s = Seconds(start);
      write(pipeFds[1], &s, sizeof s);
    });
    double bareSeconds = -1;
    read(pipeFds[0], &bareSeconds, sizeof bareSeconds);
    close(pipeFds[0]);
    close(pipeFds[1]);
    std::printf("%-14s %10.3f %10.3f %10.2f %12.0f %12.0f %8.2f\n", c.name, loadSeconds, bareSeconds,
                loadSeconds / bareSeconds, loadMem, bareMem, (loadMem - baseline) / sizeMb);
  }

  // Save of a 100 MB document.
  const std::string source = dir + "/" + std::to_string(100u << 20) + "-8.txt";
  const std::string copy = dir + "/save-copy.txt";
  std::filesystem::copy_file(source, copy, std::filesystem::copy_options::overwrite_existing);
  InChild([&] {
    CreateMainWindow("bench", 0, 0, 800, 600, true);
    LoadAndWait(copy);
    sci::SendPtr(gMain.editor, sci::SCI_APPENDTEXT, 1, "x");
    const auto start = Clock::now();
    const bool ok = SaveDocument(MainDocumentWindow());
    std::printf("save of a 100 MB document: %.3f s (%s)\n", Seconds(start), ok ? "ok" : "FAILED");
  });
  std::filesystem::remove(copy);
  return 0;
}
