// The active theme and language, read by everything that draws.
#pragma once

#include "appearance/languages.h"
#include "appearance/plain_styling.h"
#include "appearance/themes.h"

namespace nebro::appearance {

// The theme number as stored in the settings (may be out of range).
ThemeId CurrentThemeId();
// The active theme's colours; an out-of-range number reads theme 0.
const ThemeColors& GetThemeColors();

// The language of the open document, chosen from its extension.
extern LanguageId gLanguage;
// Why the open document is shown without its language's colours (None: it is not).
extern PlainReason gPlainReason;

// Set at start-up; cleared only when a theme is chosen for the user rather than by the user.
// Lives in memory only.
extern bool gThemeChosenByUser;

}  // namespace nebro::appearance
