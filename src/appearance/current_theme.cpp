#include "appearance/current_theme.h"

#include "settings/settings.h"

namespace nebro {

LanguageId gLanguage = kLangPlainText;
bool gThemeChosenByUser = false;

ThemeId CurrentThemeId() { return gSettings.theme; }

const ThemeColors& GetThemeColors() { return ThemeColorsFor(gSettings.theme); }

}  // namespace nebro
