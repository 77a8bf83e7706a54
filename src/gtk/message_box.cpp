#include "gtk/message_box.h"

#include <algorithm>

namespace nebro {

MessageBoxLayout ComputeMessageBoxLayout(int kind, std::string_view text, int dialogWidth) {
  MessageBoxLayout layout{};
  layout.lines = 1 + static_cast<int>(std::count(text.begin(), text.end(), '\n'));
  layout.textHeight = layout.lines * 10 + 4;
  layout.buttonTop = layout.textHeight + 11;
  layout.dialogHeight = layout.textHeight + (kind == kMbSaveDontSaveCancel ? 31 : 29);
  layout.dialogWidth = dialogWidth;
  const int count = kind == kMbSaveDontSaveCancel ? 3 : kind == kMbOk ? 1 : 2;
  const int groupWidth = count == 3 ? 162 : count == 2 ? 106 : 50;
  const int first = (dialogWidth - groupWidth) / 2;
  for (int i = 0; i < count; ++i) {
    const int id = kMbButton1 + i;
    layout.buttons.push_back({id, MessageBoxLabel(kind, id), first + 56 * i});
  }
  return layout;
}

int MessageBoxWidthFor(std::string_view text) {
  size_t longest = 0, current = 0;
  for (size_t i = 0; i <= text.size(); ++i) {
    if (i == text.size() || text[i] == '\n') {
      longest = std::max(longest, current);
      current = 0;
    } else if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) {
      ++current;  // count characters, not UTF-8 bytes
    }
  }
  return std::clamp(static_cast<int>(longest) * 4 + 2 * kMbMargin, 200, 400);
}

const char* MessageBoxLabel(int kind, int id) {
  switch (kind) {
    case kMbSaveDontSaveCancel:
      return id == kMbButton1 ? "Save" : id == kMbButton2 ? "Don't Save" : id == kMbButton3 ? "Cancel" : "";
    case kMbYesNo:
      return id == kMbButton1 ? "Yes" : id == kMbButton2 ? "No" : "";
    case kMbOkCancel:
      return id == kMbButton1 ? "OK" : id == kMbButton2 ? "Cancel" : "";
    default:
      return id == kMbButton1 ? "OK" : "";
  }
}

int MessageBoxResultFor(int kind, int id) {
  const bool question = kind == kMbSaveDontSaveCancel || kind == kMbYesNo;
  switch (id) {
    case kMbEscapeId: return kind == kMbOk ? kMbResultOk : kMbResultCancel;
    case kMbButton1: return question ? kMbResultSaveOrYes : kMbResultOk;
    case kMbButton2:
      if (question) return kMbResultDontSaveOrNo;
      return kind == kMbOkCancel ? kMbResultCancel : -1;
    case kMbButton3: return kMbResultCancel;
    default: return -1;
  }
}

int MessageBoxCloseResult(int kind) { return kind == kMbOk ? kMbResultOk : kMbResultCancel; }

}  // namespace nebro
