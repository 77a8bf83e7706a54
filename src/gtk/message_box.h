// The program's own message box: kinds, results and the layout arithmetic (dialog units).
#pragma once

#include <string_view>
#include <vector>

namespace nebro {

enum MessageBoxKind : int {
  kMbSaveDontSaveCancel = 0,
  kMbOkCancel = 1,
  kMbOk = 2,
  kMbYesNo = 3,
};

enum MessageBoxResult : int {
  kMbResultOk = 131,
  kMbResultCancel = 132,
  kMbResultSaveOrYes = 133,
  kMbResultDontSaveOrNo = 134,
};

inline constexpr int kMbTextId = 2500;
inline constexpr int kMbButton1 = 2501;
inline constexpr int kMbButton2 = 2502;
inline constexpr int kMbButton3 = 2503;
inline constexpr int kMbEscapeId = 2;

struct MessageBoxButton {
  int id;
  const char* label;
  int x;  // left edge, dialog units
};

struct MessageBoxLayout {
  int lines;
  int textHeight;    // lines x 10 + 4
  int buttonTop;     // text height + 11
  int dialogHeight;  // text height + 31 for three buttons, + 29 otherwise
  int dialogWidth;
  std::vector<MessageBoxButton> buttons;  // 50 x 14 each, 56 apart, centred as a group
};

inline constexpr int kMbButtonWidth = 50;
inline constexpr int kMbButtonHeight = 14;
inline constexpr int kMbMargin = 7;

// `dialogWidth` is ours to choose: callers pass the width that fits the text.
MessageBoxLayout ComputeMessageBoxLayout(int kind, std::string_view text, int dialogWidth);

// A width in dialog units that fits the longest line of the text (about 4 units per character)
// between 200 and 400.
int MessageBoxWidthFor(std::string_view text);

const char* MessageBoxLabel(int kind, int id);

// The result of pressing control `id` (Escape is id 2); -1 when the control does nothing.
int MessageBoxResultFor(int kind, int id);
// Closing the box from the title bar.
int MessageBoxCloseResult(int kind);

}  // namespace nebro
