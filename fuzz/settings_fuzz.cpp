// Fuzzes the settings reader: a damaged or foreign file of any content must give the defaults,
// and a file that is accepted must read back the same after it is written again.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "settings/settings.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace nebro::settings;
  static const std::string path = "/tmp/nebro-settings-fuzz-" + std::to_string(getpid());
  static const std::string defaults = [] {
    AppSettings d;
    SetDefaultSettings(d);
    return EncodeSettingsRecord(d);
  }();
  // Most inputs are refused at the header; a valid header in front reaches the record's fields.
  std::string bytes(reinterpret_cast<const char*>(data), size);
  if (size > 0 && data[0] == 'V' && bytes.size() >= 1 + defaults.size()) {
    const std::string record = bytes.substr(1, defaults.size());
    std::string file = "NEBR";
    auto put32 = [&file](uint32_t v) { for (int i = 0; i < 4; ++i) file += static_cast<char>(v >> (8 * i)); };
    put32(15);
    put32(static_cast<uint32_t>(record.size()));
    put32(Fnv1a(reinterpret_cast<const unsigned char*>(record.data()), record.size()));
    bytes = file + record;
  }
  std::ofstream(path, std::ios::binary | std::ios::trunc).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  AppSettings loaded;
  if (!LoadSettingsFrom(path, loaded)) {
    if (EncodeSettingsRecord(loaded) != defaults) {
      std::fprintf(stderr, "settings_fuzz: a refused file did not give the defaults\n");
      std::abort();
    }
    return 0;
  }
  const std::string once = EncodeSettingsRecord(loaded);
  AppSettings again;
  DecodeSettingsRecord(reinterpret_cast<const unsigned char*>(once.data()), again);
  if (EncodeSettingsRecord(again) != once) {
    std::fprintf(stderr, "settings_fuzz: an accepted record does not read back the same\n");
    std::abort();
  }
  return 0;
}
