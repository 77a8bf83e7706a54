#include "app/typewriter.h"

#include <gtest/gtest.h>

using namespace nebro;

TEST(Typewriter, SoundsDependOnBothFlags) {
  EXPECT_EQ(TypewriterSoundFor(true, true, 'a'), TypewriterSound::Key);
  EXPECT_EQ(TypewriterSoundFor(true, false, ' '), TypewriterSound::Key);
  EXPECT_EQ(TypewriterSoundFor(true, false, '~'), TypewriterSound::Key);
  EXPECT_EQ(TypewriterSoundFor(true, true, 13), TypewriterSound::NewLine);
  EXPECT_EQ(TypewriterSoundFor(true, false, 13), TypewriterSound::None);
  // The new-line sound needs the key sound switched on as well.
  EXPECT_EQ(TypewriterSoundFor(false, true, 13), TypewriterSound::None);
  EXPECT_EQ(TypewriterSoundFor(false, true, 'a'), TypewriterSound::None);
  // Tab, delete and non-ASCII characters are silent.
  EXPECT_EQ(TypewriterSoundFor(true, true, 9), TypewriterSound::None);
  EXPECT_EQ(TypewriterSoundFor(true, true, 127), TypewriterSound::None);
  EXPECT_EQ(TypewriterSoundFor(true, true, 0xE9), TypewriterSound::None);
}
