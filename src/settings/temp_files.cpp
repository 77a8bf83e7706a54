#include "settings/temp_files.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <ctime>
#include <memory>

#include "settings/data_folder.h"

namespace nebro::settings {

uint64_t NowTicks() {
  timespec ts;
  clock_gettime(CLOCK_REALTIME, &ts);
  return static_cast<uint64_t>(ts.tv_sec) * 10000000u + static_cast<uint64_t>(ts.tv_nsec) / 100u;
}

void CleanupTempFilesIn(const std::string& folder, uint64_t nowTicks) {
  if (folder.empty()) return;
  const uint64_t cutoff = nowTicks - 864000000000ull;
  std::unique_ptr<DIR, int (*)(DIR*)> dir(opendir(folder.c_str()), closedir);
  if (!dir) return;
  while (const dirent* entry = readdir(dir.get())) {
    const std::string name = entry->d_name;
    if (name.rfind("temp_", 0) != 0) continue;
    const auto dot = name.rfind('.');
    if (dot == std::string::npos) continue;
    std::string ext = name.substr(dot);
    std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return std::tolower(c); });
    if (ext != ".html" && ext != ".pdf" && ext != ".txt") continue;
    const std::string path = folder + "/" + name;
    struct stat st;
    if (stat(path.c_str(), &st) != 0 || S_ISDIR(st.st_mode)) continue;
    const uint64_t written = static_cast<uint64_t>(st.st_mtim.tv_sec) * 10000000u +
                             static_cast<uint64_t>(st.st_mtim.tv_nsec) / 100u;
    if (written < cutoff) unlink(path.c_str());  // a failure is retried at the next start
  }
}

void CleanupTempFiles() { CleanupTempFilesIn(GetSettingsFolder(), NowTicks()); }

}  // namespace nebro::settings
