#include "app/typewriter_gtk.h"

#ifdef NEBRO_HAVE_CANBERRA
#include <canberra.h>
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
  const char* file = sound == TypewriterSound::NewLine ? NEBRO_RESOURCE_DIR "/typewriter_return.wav"
                                                       : NEBRO_RESOURCE_DIR "/typewriter_key.wav";
  ca_context_cancel(context, kSoundId);
  ca_context_play(context, kSoundId, CA_PROP_MEDIA_FILENAME, file, CA_PROP_CANBERRA_CACHE_CONTROL, "volatile",
                  nullptr);
}
#else
void PlayTypewriterSound(TypewriterSound) {}
#endif

}  // namespace nebro::app
