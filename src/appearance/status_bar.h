// The status bar's rules without any drawing: the five part texts and where the parts end.
#pragma once

#include <array>
#include <string>

namespace nebro::appearance {

inline constexpr int kStatusPartCount = 5;
using StatusTexts = std::array<std::string, kStatusPartCount>;

// What the editor reports, in the editor's own units.
struct StatusInput {
  long firstVisibleLine = 0;  // a display line
  int caretY = 0;             // caret's y pixel in the text area
  int textHeight = 0;         // line height in pixels; below 1 counts as 16
  long column = 0;            // 0-based, as the editor counts columns
  long selectedCharacters = 0;
  int encoding = 1;  // TextEncoding value
  int eolMode = 0;   // the editor's EOL mode
  int zoom = 0;
  const char* notice = "";  // follows the caret's place (why the document has no colours)
};

// The line shown as "Ln": counted on screen, so with word wrap on it counts display lines.
// Never below 1.
long StatusLineNumber(long firstVisibleLine, int caretY, int textHeight);

// "UTF-8 BOM", "UTF-8", "UTF-16 LE", "UTF-16 BE", "ANSI"; any other value "UTF-8".
const char* EncodingLabel(int encoding);
// "CRLF", "CR", "LF"; any other value "?".
const char* LineEndingLabel(int eolMode);
// Zoom 0 is 100 %, each step 10 %.
int ZoomPercent(int zoom);

// Each text starts with two blanks: "  Ln 4, Col 7", "  Sel: 3" (empty without a selection),
// "  UTF-8", "  CRLF", "  100%".
StatusTexts MakeStatusTexts(const StatusInput& in);

// The parts' right edges in pixels for a client width; the last is -1 (up to the client's right
// edge). The first part takes what the four fixed-width parts on the right leave, but never less
// than 16 units; `unit` is the width of a digit in the bar's font (8 when below 1).
// The narrowest bar that still shows every part whole (the resize grip included), for a digit
// `unit` pixels wide.
int StatusBarMinimumWidth(int unit);

std::array<int, kStatusPartCount> StatusPartEdges(int clientWidth, int unit);

}  // namespace nebro::appearance
