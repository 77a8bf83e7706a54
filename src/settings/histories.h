// The search dialogs' history lists, kept in the settings record.
#pragma once

#include <string_view>

namespace nebro::settings {

// The search dialogs' history helper over ten entries of 256 units: an entry equal to the text
// (case-sensitive) moves to the top, otherwise the last entry falls out. Copies are truncated to
// 255 units. (The recent-files list, which ignores case, has its own in document/.)
void PushRecent(char16_t (&list)[10][256], std::u16string_view text);

}  // namespace nebro::settings
