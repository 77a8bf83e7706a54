// Colours are kept as 0x00BBGGRR numbers, the form Scintilla takes them in.
#pragma once

#include <cstdint>
#include <string>

namespace nebro {

using Colour = uint32_t;

constexpr Colour Rgb(unsigned r, unsigned g, unsigned b) {
  return (r & 0xFF) | ((g & 0xFF) << 8) | ((b & 0xFF) << 16);
}
constexpr unsigned RedOf(Colour c) { return c & 0xFF; }
constexpr unsigned GreenOf(Colour c) { return (c >> 8) & 0xFF; }
constexpr unsigned BlueOf(Colour c) { return (c >> 16) & 0xFF; }

// "#RRGGBB", upper-case hex: the colour text of every exported document.
std::string ColourText(Colour c);

}  // namespace nebro
