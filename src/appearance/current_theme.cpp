#include "appearance/current_theme.h"

#include "settings/settings.h"

namespace nebro::appearance {

LanguageId gLanguage = kLangPlainText;
PlainReason gPlainReason = PlainReason::None;
bool gThemeChosenByUser = false;

ThemeId CurrentThemeId() { return settings::gSettings.theme; }

const ThemeColors& GetThemeColors() { return ThemeColorsFor(settings::gSettings.theme); }

}  // namespace nebro::appearance
