#include "app/typewriter.h"

namespace nebro::app {

TypewriterSound TypewriterSoundFor(bool soundOnKeyPress, bool soundOnNewLine, uint32_t c) {
  if (!soundOnKeyPress) return TypewriterSound::None;
  if (c == 13) return soundOnNewLine ? TypewriterSound::NewLine : TypewriterSound::None;
  if (c >= 32 && c <= 126) return TypewriterSound::Key;
  return TypewriterSound::None;
}

}  // namespace nebro::app
