// The help window's ten topics as plain data: titles and texts, with the keyboard-shortcut topic
// made from the command table so that it lists exactly the keys the window binds.
//
// Text markup, one line at a time: a line starting with "= " is a heading (shown bold, without
// the marker); a line holding a tab is a two-column row (keys, then what they do); every other
// line is shown as it stands. Blank lines separate paragraphs.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/command_table.h"

namespace nebro::help {

inline constexpr const char* kHelpWindowTitle = "Nebro - Help";
inline constexpr int kHelpTopicCount = 10;
inline constexpr int kShortcutsTopic = 1;  // "Keyboard shortcuts"

struct HelpTopic {
  std::string title;
  std::string text;
};

// The ten topics in the order of the topic list. Commands whose window is not built yet are
// listed with their keys and marked as not available.
std::vector<HelpTopic> HelpTopics(const CommandTable& commands);

// The topic to show for the stored index: anything outside 0..9 reads as 0.
int HelpTopicIndex(int32_t stored);

// The window's size for the stored one: 0 (not yet known) gives the default size, anything
// smaller than the minimum grows to it.
inline constexpr int kHelpMinWidth = 560;
inline constexpr int kHelpMinHeight = 380;
inline constexpr int kHelpDefaultWidth = 860;
inline constexpr int kHelpDefaultHeight = 620;
struct HelpSize {
  int width = 0;
  int height = 0;
};
HelpSize HelpWindowSize(int32_t storedWidth, int32_t storedHeight);

// The program's version, as the build knows it ("0.1").
const char* ProgramVersion();

}  // namespace nebro::help
