// The themed modal message box.
#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <optional>
#include <string>

#include "appearance/themes.h"
#include "gtk/message_box.h"

namespace nebro {

// Shows the box over `owner` (may be null) and returns a MessageBoxResult.
int ShowMessageBox(GtkWindow* owner, int kind, const std::string& text, const std::string& title);

// Tests answer boxes without a person: while a hook is set, ShowMessageBox calls it instead of
// showing anything and returns its result.
using MessageBoxHook = std::function<int(int kind, const std::string& text, const std::string& title)>;
void SetMessageBoxHook(MessageBoxHook hook);

// Boxes take `look`'s colours instead of the current theme's (nothing: the theme's again).
void SetMessageBoxLook(std::optional<appearance::ThemeColors> look);

// How many boxes are open right now (each runs its own loop, so one can open over another).
int OpenMessageBoxes();

// The theme the cached background colours were made for (-1 before the first box).
int MessageBoxBrushTheme();

}  // namespace nebro
