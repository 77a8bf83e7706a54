// Clean-up of the temporary preview documents left in the data folder by earlier runs.
#pragma once

#include <cstdint>
#include <string>

namespace nebro::settings {

// Deletes temp_* files ending in .html, .pdf or .txt (any case) older than 24 hours.
void CleanupTempFiles();
// The same over a given folder and "now" in 100-nanosecond ticks since the Unix epoch.
void CleanupTempFilesIn(const std::string& folder, uint64_t nowTicks);
uint64_t NowTicks();

}  // namespace nebro::settings
