// The toolbar of the real main window: a press runs its command through the window's dispatch,
// Save is offered only while there is something to save, and the hover look.
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "appearance/current_theme.h"
#include "appearance/theme_gtk.h"
#include "appearance/toolbar_gtk.h"
#include "common/command_ids.h"
#include "document/document_ops_gtk.h"
#include "gtk/message_box_gtk.h"
#include "support/main_window_fixture.h"

using namespace nebro;
using namespace nebro::appearance;
using namespace nebro::testing;
using namespace nebro::app;
using namespace nebro::document;

namespace {

class ToolbarTest : public MainWindowTest {
 protected:
  const Toolbar& State() { return *ToolbarState(gMain.toolbar); }
  int Index(int commandId) {
    for (int i = 0; i < kToolbarButtonCount; ++i) {
      if (static_cast<int>(State().buttons[i].commandId) == commandId) return i;
    }
    ADD_FAILURE() << "no button for command " << commandId;
    return 0;
  }
  const ToolbarRect& Rect(int commandId) { return State().buttons[Index(commandId)].rect; }
  void Press(int commandId, GdkEventType type = GDK_BUTTON_PRESS, unsigned button = 1) {
    const ToolbarRect& r = Rect(commandId);
    SendButton(gMain.toolbar, type, (r.left + r.right) / 2, (r.top + r.bottom) / 2, button);
  }
  void Hover(int commandId) {
    const ToolbarRect& r = Rect(commandId);
    SendMotion(gMain.toolbar, (r.left + r.right) / 2, (r.top + r.bottom) / 2);
  }
  GdkCursorType Cursor() {
    GdkCursor* c = gdk_window_get_cursor(gtk_widget_get_window(gMain.toolbar));
    return c ? gdk_cursor_get_cursor_type(c) : GDK_ARROW;  // none set: the parent's arrow
  }
};

}  // namespace

TEST_F(ToolbarTest, PressRunsTheCommandThroughTheMainWindow) {
  std::vector<int> painted, paintedBeforeQuestion;  // per paint: the button painted pressed, or -1
  const gulong handler = g_signal_connect_after(
      gMain.toolbar, "draw", G_CALLBACK(+[](GtkWidget* w, cairo_t*, std::vector<int>* log) {
        int pressed = -1;
        for (int i = 0; i < kToolbarButtonCount; ++i) pressed = ToolbarState(w)->buttons[i].pressed ? i : pressed;
        log->push_back(pressed);
        return FALSE;
      }), &painted);
  std::vector<std::string> questions;
  int answer = kMbResultCancel;
  SetMessageBoxHook([&](int, const std::string& text, const std::string&) {
    questions.push_back(text);
    paintedBeforeQuestion = painted;
    return answer;
  });
  Type("draft");
  Pump(gMain.window);

  // The right button, the gap after a button and the strip around them do nothing.
  Press(kCmdNew, GDK_BUTTON_PRESS, 3);
  SendButton(gMain.toolbar, GDK_BUTTON_PRESS, Rect(kCmdNew).right + 3, 20);
  SendButton(gMain.toolbar, GDK_BUTTON_PRESS, Rect(kCmdNew).left + 10, 2);
  EXPECT_TRUE(questions.empty());

  // New asks about the typed text as the button goes down, the pressed look already on screen.
  painted.clear();
  Press(kCmdNew);
  ASSERT_EQ(questions, std::vector<std::string>{"Save changes to \"Untitled\"?"});
  EXPECT_EQ(paintedBeforeQuestion, std::vector<int>{Index(kCmdNew)});
  Press(kCmdNew, GDK_BUTTON_RELEASE);
  EXPECT_EQ(questions.size(), 1u);
  EXPECT_EQ(Text(), "draft");
  PaintAndWait(gMain.window);
  EXPECT_EQ(painted.back(), -1);
  // A double click is two presses: two questions, not three.
  Press(kCmdNew);
  Press(kCmdNew);
  Press(kCmdNew, GDK_2BUTTON_PRESS);
  EXPECT_EQ(questions.size(), 3u);

  answer = kMbResultDontSaveOrNo;
  Press(kCmdNew);
  EXPECT_EQ(questions.size(), 4u);
  EXPECT_EQ(Text(), "");
  EXPECT_FALSE(gMain.doc.modified);
  EXPECT_TRUE(gMain.doc.path.empty());
  g_signal_handler_disconnect(gMain.toolbar, handler);
}

TEST_F(ToolbarTest, SaveIsOfferedOnlyWhileTheDocumentIsModifiedAndLightsUnderThePointer) {
  const std::string path = WriteFile("notes.txt", "first");
  ASSERT_TRUE(LoadDocument(path));
  const ToolbarButton& save = State().buttons[Index(kCmdSave)];
  EXPECT_FALSE(save.enabled);
  // Grey: not hot, no hand, and a press writes nothing over the file changed elsewhere.
  Hover(kCmdSave);
  EXPECT_EQ(State().hot, -1);
  EXPECT_EQ(Cursor(), GDK_ARROW);
  WriteFile("notes.txt", "changed elsewhere");
  Press(kCmdSave);
  Pump(gMain.window);
  EXPECT_EQ(ReadFile(path), "changed elsewhere");

  // Typing offers it: under the pointer it lights up, in the theme's colours, with the hand.
  SetTheme(1, true);
  Type(" draft");
  EXPECT_TRUE(save.enabled);
  Hover(kCmdSave);
  EXPECT_EQ(State().hot, Index(kCmdSave));
  EXPECT_EQ(Cursor(), GDK_HAND2);
  const ThemeColors& c = GetThemeColors();
  Snapshot s(gMain.toolbar);
  EXPECT_EQ(s.At(2, 20), ToolbarChromeColours(c).background);
  auto fillOf = [&](int id) { return s.At(Rect(id).left + 6, Rect(id).bottom - 4); };  // low left, off the label
  EXPECT_EQ(fillOf(kCmdSave), ToolbarButtonLookFor(State(), Index(kCmdSave), c).fill);
  EXPECT_EQ(fillOf(kCmdNew), ToolbarButtonLookFor(State(), Index(kCmdNew), c).fill);
  EXPECT_NE(fillOf(kCmdSave), fillOf(kCmdNew));
  int ink = 1 << 30;  // the label, in its text colour
  const ToolbarRect& r = Rect(kCmdSave);
  const Colour text = ToolbarButtonLookFor(State(), Index(kCmdSave), c).text;
  for (int y = r.top + 6; y < r.bottom - 6; ++y) {
    for (int x = r.left + 8; x < r.right - 8; ++x) ink = std::min(ink, ColourDistance(s.At(x, y), text));
  }
  EXPECT_LT(ink, 60);
  SendLeave(gMain.toolbar);
  EXPECT_EQ(State().hot, -1);
  EXPECT_EQ(Cursor(), GDK_ARROW);

  // Pressed, it saves and goes grey under the pointer, the hand with it.
  Hover(kCmdSave);
  Press(kCmdSave);
  EXPECT_EQ(ReadFile(path), "first draft");
  EXPECT_FALSE(gMain.doc.modified);
  EXPECT_FALSE(save.enabled);
  EXPECT_EQ(State().hot, -1);
  EXPECT_EQ(Cursor(), GDK_ARROW);
}
