// Plays the typewriter sounds, asynchronously; each cuts off the one before. Silent when there
// is no sound device.
#pragma once

#include "app/typewriter.h"

namespace nebro::app {

void PlayTypewriterSound(TypewriterSound sound);

}  // namespace nebro::app
