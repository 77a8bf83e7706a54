#include "app/typewriter_gtk.h"

#ifdef NEBRO_HAVE_CANBERRA
#include <canberra.h>

#include <string>

#include "common/install_paths.h"
#endif

namespace nebro::app {

#ifdef NEBRO_HAVE_CANBERRA
namespace {

ca_context* context = nullptr;
bool unavailable = false;
constexpr uint32_t kSoundId = 333;

}  // namespace

void PlayTypewriterSound(TypewriterSound sound) {
  if (sound == TypewriterSound::None || unavailable) return;
  if (!context && ca_context_create(&context) != CA_SUCCESS) {
    unavailable = true;
    return;
  }
  static const std::string keyFile = ResourceFolder() + "/typewriter_key.wav";
  static const std::string returnFile = ResourceFolder() + "/typewriter_return.wav";
  const std::string& file = sound == TypewriterSound::NewLine ? returnFile : keyFile;
  ca_context_cancel(context, kSoundId);
  ca_context_play(context, kSoundId, CA_PROP_MEDIA_FILENAME, file.c_str(), CA_PROP_CANBERRA_CACHE_CONTROL,
                  "volatile", nullptr);
}
#else
void PlayTypewriterSound(TypewriterSound) {}
#endif

}  // namespace nebro::app
