// Which typewriter sound a typed character makes.
#pragma once

#include <cstdint>

namespace nebro::app {

enum class TypewriterSound { None, Key, NewLine };

// Only while key sounds are on: Enter (13) rings when new-line sounds are on too, printable
// ASCII clicks, anything else is silent. So the new-line sound is never heard with key sounds
// off.
TypewriterSound TypewriterSoundFor(bool soundOnKeyPress, bool soundOnNewLine, uint32_t character);

}  // namespace nebro::app
