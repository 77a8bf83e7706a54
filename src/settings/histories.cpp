#include "settings/histories.h"

#include <algorithm>
#include <string>

#include "settings/settings.h"

namespace nebro::settings {

void PushRecent(char16_t (&list)[10][256], std::u16string_view text) {
  if (text.empty()) return;
  constexpr int kEntries = 10;
  int found = kEntries - 1;  // not present: the last entry falls out
  for (int i = 0; i < kEntries; ++i) {
    if (FieldText(list[i]) == text) {
      found = i;
      break;
    }
  }
  const std::u16string copy(text);  // the text may lie in the list itself
  for (int i = found; i > 0; --i) std::copy_n(list[i - 1], 256, list[i]);
  SetFieldText(list[0], copy);
}

}  // namespace nebro::settings
