// The light or dark title bar of the program's windows.
#pragma once

namespace nebro::appearance {

// The decorations of every window of the process follow one preference.
void SetDarkTitleBar(bool dark);

// When the user chose no theme: follows the desktop's light/dark preference (a theme switch when
// it differs from the stored theme). Otherwise the title bar follows the stored theme.
void ApplySystemThemePreference();

}  // namespace nebro::appearance
