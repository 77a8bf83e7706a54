#include "common/colour.h"

#include <cstdio>

namespace nebro {

std::string ColourText(Colour c) {
  char buf[8];
  std::snprintf(buf, sizeof buf, "#%02X%02X%02X", RedOf(c), GreenOf(c), BlueOf(c));
  return buf;
}

}  // namespace nebro
