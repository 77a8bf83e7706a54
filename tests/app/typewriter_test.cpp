#include "app/typewriter.h"

#include <gtest/gtest.h>

using namespace nebro;
using namespace nebro::app;

TEST(Typewriter, SoundsDependOnBothFlags) {
  using enum TypewriterSound;
  struct Case {
    bool keys, newLines;
    uint32_t c;
    TypewriterSound sound;
  } cases[] = {
      {true, true, 'a', Key},      {true, false, ' ', Key},   {true, false, '~', Key},
      {true, true, 13, NewLine},   {true, false, 13, None},
      {false, true, 13, None},     {false, true, 'a', None},  // new lines need key sounds too
      {true, true, 9, None},       {true, true, 127, None},   {true, true, 0xE9, None},
  };
  for (const Case& c : cases) EXPECT_EQ(TypewriterSoundFor(c.keys, c.newLines, c.c), c.sound) << c.c;
}
