// Loading a 100 MB file through the document loader against a bare read() of the same file into
// one buffer, the least any loader must do. Reports time, throughput and the peak memory the
// load added, as a multiple of the file's size (VmHWM is reset before each run).
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <algorithm>
#include <fstream>
#include <memory>
#include <string>

#include "common/utf.h"
#include "document/file_load.h"

namespace {

constexpr size_t kTargetBytes = 100u << 20;

std::string MakeText() {
  // Mostly ASCII source-like lines with some accented letters, symbols and an emoji.
  const std::string line =
      "    const auto caf\xC3\xA9 = compute(value, \"\xE2\x82\xAC 42\"); // na\xC3\xAFve \xF0\x9F\x98\x80\n";
  std::string text;
  text.reserve(kTargetBytes + line.size());
  while (text.size() < kTargetBytes) text += line;
  return text;
}

struct Files {
  std::string folder;
  std::string utf8, utf16le, utf16be;
  uint64_t utf8Size = 0, utf16Size = 0;

  Files() {
    char pattern[] = "/tmp/nebro-decode-bench-XXXXXX";
    folder = mkdtemp(pattern);
    const std::string text = MakeText();
    utf8 = folder + "/utf8.txt";
    utf16le = folder + "/utf16le.txt";
    utf16be = folder + "/utf16be.txt";
    std::ofstream(utf8, std::ios::binary).write(text.data(), static_cast<std::streamsize>(text.size()));
    const std::u16string wide = nebro::Utf8ToUtf16(text);
    std::string le = "\xFF\xFE", be = "\xFE\xFF";
    le.reserve(wide.size() * 2 + 2);
    be.reserve(wide.size() * 2 + 2);
    for (char16_t u : wide) {
      le += static_cast<char>(u & 0xFF);
      le += static_cast<char>(u >> 8);
      be += static_cast<char>(u >> 8);
      be += static_cast<char>(u & 0xFF);
    }
    std::ofstream(utf16le, std::ios::binary).write(le.data(), static_cast<std::streamsize>(le.size()));
    std::ofstream(utf16be, std::ios::binary).write(be.data(), static_cast<std::streamsize>(be.size()));
    utf8Size = text.size();
    utf16Size = le.size();
  }
  ~Files() {
    std::remove(utf8.c_str());
    std::remove(utf16le.c_str());
    std::remove(utf16be.c_str());
    rmdir(folder.c_str());
  }
};

Files& TheFiles() {
  static Files files;
  return files;
}

long StatusKb(const char* key) {
  std::FILE* f = std::fopen("/proc/self/status", "r");
  if (!f) return 0;
  char line[256];
  long value = 0;
  const size_t keyLength = std::strlen(key);
  while (std::fgets(line, sizeof line, f)) {
    if (std::strncmp(line, key, keyLength) == 0) value = std::atol(line + keyLength);
  }
  std::fclose(f);
  return value;
}

// Resets the peak-RSS mark and returns the current RSS in kB.
long ResetPeak() {
  if (std::FILE* f = std::fopen("/proc/self/clear_refs", "w")) {
    std::fputs("5", f);
    std::fclose(f);
  }
  return StatusKb("VmRSS:");
}

void Report(benchmark::State& state, uint64_t fileSize, long addedKb) {
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * fileSize));
  state.counters["peak_MB"] = static_cast<double>(addedKb) / 1024.0;
  state.counters["peak_x_file"] = static_cast<double>(addedKb) * 1024.0 / static_cast<double>(fileSize);
}

void BareRead(benchmark::State& state, const std::string& path, uint64_t size) {
  long added = 0;
  for (auto _ : state) {
    const long base = ResetPeak();
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat st {};
    fstat(fd, &st);
    auto buffer = std::make_unique_for_overwrite<char[]>(static_cast<size_t>(st.st_size));
    size_t done = 0;
    while (done < static_cast<size_t>(st.st_size)) {
      const ssize_t n = read(fd, buffer.get() + done, static_cast<size_t>(st.st_size) - done);
      if (n <= 0) break;
      done += static_cast<size_t>(n);
    }
    close(fd);
    benchmark::DoNotOptimize(buffer.get());
    added = std::max(added, StatusKb("VmHWM:") - base);
  }
  Report(state, size, added);
}

void Load(benchmark::State& state, const std::string& path, uint64_t size) {
  long added = 0;
  for (auto _ : state) {
    const long base = ResetPeak();
    nebro::document::LoadResult r = nebro::document::LoadDocumentFile(path, 1ull << 40);
    if (r.decision != nebro::document::LoadDecision::Loaded) state.SkipWithError(r.message.c_str());
    benchmark::DoNotOptimize(r.text.data());
    added = std::max(added, StatusKb("VmHWM:") - base);
  }
  Report(state, size, added);
}

void BM_BareReadUtf8(benchmark::State& s) { BareRead(s, TheFiles().utf8, TheFiles().utf8Size); }
void BM_LoadUtf8(benchmark::State& s) { Load(s, TheFiles().utf8, TheFiles().utf8Size); }
void BM_BareReadUtf16(benchmark::State& s) { BareRead(s, TheFiles().utf16le, TheFiles().utf16Size); }
void BM_LoadUtf16Le(benchmark::State& s) { Load(s, TheFiles().utf16le, TheFiles().utf16Size); }
void BM_LoadUtf16Be(benchmark::State& s) { Load(s, TheFiles().utf16be, TheFiles().utf16Size); }

BENCHMARK(BM_BareReadUtf8)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_LoadUtf8)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_BareReadUtf16)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_LoadUtf16Le)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_LoadUtf16Be)->Unit(benchmark::kMillisecond)->MinTime(2);

}  // namespace

BENCHMARK_MAIN();
