// The context menu on a real main window with the real Scintilla: how it opens, what it shows
// for the editor's state, what choosing its items does, and its colours.
#include <gtest/gtest.h>
#include <gdk/gdkkeysyms.h>

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "app/context_menu_gtk.h"
#include "appearance/current_theme.h"
#include "appearance/theme_gtk.h"
#include "common/command_ids.h"
#include "common/utf.h"
#include "document/recent_files.h"
#include "gtk/object_ptr_gtk.h"
#include "support/main_window_fixture.h"

using namespace nebro;
using namespace nebro::app;
using namespace nebro::sci;
using namespace nebro::appearance;
using namespace nebro::document;
using namespace nebro::settings;
using namespace nebro::testing;

namespace {

// The menus of ours attached to the editor (the context menu and nothing else).
std::vector<GtkWidget*> OpenMenus() {
  std::vector<GtkWidget*> found;
  if (!gMain.editor) return found;
  for (GList* l = gtk_menu_get_for_attach_widget(gMain.editor); l; l = l->next) {
    GtkWidget* menu = GTK_WIDGET(l->data);
    if (std::string(gtk_widget_get_name(menu)) == "NebroContextMenu") found.push_back(menu);
  }
  return found;
}

std::vector<GtkWidget*> Children(GtkWidget* container) {
  std::vector<GtkWidget*> out;
  GList* list = gtk_container_get_children(GTK_CONTAINER(container));
  for (GList* l = list; l; l = l->next) out.push_back(GTK_WIDGET(l->data));
  g_list_free(list);
  return out;
}

// The labels of an item's row in order: mark, label and, where it has one, shortcut.
std::vector<GtkWidget*> RowLabels(GtkWidget* item) {
  GtkWidget* row = gtk_bin_get_child(GTK_BIN(item));
  return row && GTK_IS_BOX(row) ? Children(row) : std::vector<GtkWidget*>{};
}

std::string RowText(GtkWidget* item, size_t column) {
  const std::vector<GtkWidget*> row = RowLabels(item);
  return column < row.size() ? gtk_label_get_text(GTK_LABEL(row[column])) : "";
}

// Follows labels down through the submenus: Item(menu, {"Theme", "Sepia"}).
GtkWidget* Item(GtkWidget* menu, std::initializer_list<const char*> path) {
  GtkWidget* item = nullptr;
  for (const char* label : path) {
    if (item) menu = gtk_menu_item_get_submenu(GTK_MENU_ITEM(item));
    item = nullptr;
    for (GtkWidget* child : menu ? Children(menu) : std::vector<GtkWidget*>{}) {
      if (RowText(child, 1) == label) item = child;
    }
    if (!item) break;
  }
  EXPECT_NE(item, nullptr) << "missing item " << *(path.end() - 1);
  return item;
}

bool Sensitive(GtkWidget* menu, std::initializer_list<const char*> path) {
  GtkWidget* item = Item(menu, path);
  return item && gtk_widget_is_sensitive(item);
}

// Chooses an entry the way a user does: each submenu on the way opened as the Right key opens
// it, then a click on the entry, which closes the menus and activates it.
void Choose(GtkWidget* menu, std::initializer_list<const char*> path) {
  ASSERT_NE(menu, nullptr);
  for (auto it = path.begin(); it + 1 != path.end(); ++it) {
    GtkWidget* item = Item(menu, {*it});
    ASSERT_NE(item, nullptr);
    gtk_menu_shell_select_item(GTK_MENU_SHELL(menu), item);
    g_signal_emit_by_name(menu, "move-current", GTK_MENU_DIR_CHILD);
    Pump();
    menu = gtk_menu_item_get_submenu(GTK_MENU_ITEM(item));
    ASSERT_TRUE(menu && gtk_widget_get_mapped(menu)) << *it;
  }
  GtkWidget* item = Item(menu, {*(path.end() - 1)});
  ASSERT_TRUE(item && gtk_widget_is_sensitive(item));
  gtk_menu_shell_activate_item(GTK_MENU_SHELL(menu), item, TRUE);
  Pump();
}

// A button event delivered to the editor as the window system would, with the pointer moved
// there first (GTK places a menu where the pointer is).
void Button(GdkEventType type, guint button, int x, int y) {
  GdkWindow* window = gtk_widget_get_window(gMain.editor);
  int ox = 0, oy = 0;
  gdk_window_get_origin(window, &ox, &oy);
  gdk_device_warp(gdk_seat_get_pointer(gdk_display_get_default_seat(gdk_display_get_default())),
                  gdk_window_get_screen(window), ox + x, oy + y);
  gdk_display_sync(gdk_display_get_default());
  GdkEvent* ev = PointerEvent(gMain.editor, type);
  ev->button.send_event = TRUE;
  ev->button.time = GDK_CURRENT_TIME;
  ev->button.x = x;
  ev->button.y = y;
  ev->button.x_root = ox + x;
  ev->button.y_root = oy + y;
  ev->button.button = button;
  Deliver(ev);
  Pump();
}

void Key(guint keyval, unsigned state = 0) {
  SendKey(gMain.window, keyval, state);
  Pump();
}

// Where the menu's window is on the screen.
std::pair<int, int> MenuOrigin(GtkWidget* menu) {
  int x = 0, y = 0;
  gdk_window_get_origin(gtk_widget_get_window(gtk_widget_get_toplevel(menu)), &x, &y);
  return {x, y};
}

void CloseMenus() {
  for (GtkWidget* menu : OpenMenus()) gtk_menu_shell_deactivate(GTK_MENU_SHELL(menu));
  Pump();
}

class ContextMenuGui : public MainWindowTest {
 protected:
  void Configure() override {
    width = 700;
    height = 500;
    answer = kMbResultSaveOrYes;
    boxesExpected = true;
    gtk_clipboard_clear(gtk_clipboard_get(GDK_SELECTION_CLIPBOARD));
  }
  void SetUp() override {
    MainWindowTest::SetUp();
    gtk_window_present(GTK_WINDOW(gMain.window));
    Pump(gMain.window);
  }
  void TearDown() override {
    CloseMenus();
    MainWindowTest::TearDown();
  }
  // Opens the menu for the current state with the Menu key and checks it is on screen.
  GtkWidget* Open() {
    Key(GDK_KEY_Menu);
    const std::vector<GtkWidget*> menus = OpenMenus();
    EXPECT_EQ(menus.size(), 1u);
    EXPECT_TRUE(menus.size() == 1 && gtk_widget_get_mapped(menus[0]));
    return menus.size() == 1 ? menus[0] : nullptr;
  }
};

class ViewerContextMenuGui : public MainWindowTest {
 protected:
  void Configure() override { gViewerMode = true; }
};

}  // namespace

TEST_F(ContextMenuGui, OpensOnRightClickMenuKeyAndShiftF10) {
  SetText("alpha beta gamma\r\nsecond line\r\n");
  Send(SCI_SETSEL, 6, 10);  // "beta"
  Button(GDK_BUTTON_PRESS, 1, 20, 30);  // a left click is Scintilla's: no menu
  Button(GDK_BUTTON_RELEASE, 1, 20, 30);
  EXPECT_TRUE(OpenMenus().empty());
  Send(SCI_SETSEL, 6, 10);

  // A right click far from the selection opens the menu on the press and leaves the selection
  // alone, so Cut and Copy still act on it.
  Button(GDK_BUTTON_PRESS, 3, 300, 40);
  ASSERT_EQ(OpenMenus().size(), 1u);
  GtkWidget* menu = OpenMenus()[0];
  EXPECT_TRUE(gtk_widget_get_mapped(menu));
  EXPECT_EQ(Send(SCI_GETSELECTIONSTART), 6);
  EXPECT_EQ(Send(SCI_GETSELECTIONEND), 10);
  EXPECT_TRUE(Sensitive(menu, {"Cut"}));
  // Its corner touches the pointer's pixel at the lower right.
  int ex = 0, ey = 0;
  gdk_window_get_origin(gtk_widget_get_window(gMain.editor), &ex, &ey);
  EXPECT_EQ(MenuOrigin(menu), std::make_pair(ex + 301, ey + 41));

  // Closed without a choice: the menu goes away and the editor has the focus again.
  gtk_window_set_focus(GTK_WINDOW(gMain.window), nullptr);
  CloseMenus();
  EXPECT_TRUE(OpenMenus().empty());
  EXPECT_TRUE(gtk_widget_is_focus(gMain.editor));

  // From the keyboard it opens below the caret.
  gtk_widget_grab_focus(gMain.editor);
  Send(SCI_GOTOPOS, 23);  // "second line", after "secon"
  menu = Open();
  ASSERT_NE(menu, nullptr);
  const int caretX = static_cast<int>(Send(SCI_POINTXFROMPOSITION, 0, 23));
  const int lineBottom = static_cast<int>(Send(SCI_POINTYFROMPOSITION, 0, 23) + Send(SCI_TEXTHEIGHT, 1));
  EXPECT_GT(caretX, 40);
  EXPECT_EQ(MenuOrigin(menu), std::make_pair(ex + caretX, ey + lineBottom));
  CloseMenus();

  Key(GDK_KEY_F10, GDK_SHIFT_MASK);
  ASSERT_EQ(OpenMenus().size(), 1u);
  CloseMenus();

  // Plain F10 and Ctrl+Menu are not the menu's keys, and typed text still reaches the editor.
  Key(GDK_KEY_F10);
  Key(GDK_KEY_Menu, GDK_CONTROL_MASK);
  EXPECT_TRUE(OpenMenus().empty());
  Send(SCI_GOTOPOS, 0);
  Key(GDK_KEY_x);
  EXPECT_EQ(Text().substr(0, 6), "xalpha");
}

TEST_F(ContextMenuGui, GreyedItemsFollowTheEditorClipboardAndDocument) {
  // A new, empty document with nothing on the clipboard.
  GtkWidget* menu = Open();
  ASSERT_NE(menu, nullptr);
  for (const char* label : {"Undo", "Redo", "Cut", "Copy", "Paste", "Select All", "MD Preview (HTML)"}) {
    EXPECT_FALSE(Sensitive(menu, {label})) << label;
  }
  for (const char* label : {"Save", "Save As...", "New", "Open..."}) {
    EXPECT_TRUE(Sensitive(menu, {label})) << label;
  }
  // Commands whose windows are not built yet are greyed and say why.
  for (const auto& [label, id] : {std::pair{"Find & Replace", kCmdFindReplace}, {"Regex Search...", kCmdRegexSearch},
                                  {"Font...", kCmdFont}}) {
    EXPECT_EQ(Sensitive(menu, {label}), !CommandNotBuilt(gMain.commands, id)) << label;
    GCharPtr tip(gtk_widget_get_tooltip_text(Item(menu, {label})));
    EXPECT_EQ(tip && std::string(tip.get()) == kNotBuiltText, CommandNotBuilt(gMain.commands, id)) << label;
  }
  EXPECT_FALSE(Sensitive(menu, {"Recent Files", "(empty)"}));
  EXPECT_FALSE(Sensitive(menu, {"Recent Files", "Clear All"}));
  CloseMenus();

  // Typed text can be undone and selected; a selection can be cut; text on the clipboard can
  // be pasted.
  sci::SendPtr(gMain.editor, SCI_REPLACESEL, 0, "some text");
  Send(SCI_SETSEL, 0, 4);
  gtk_clipboard_set_text(gtk_clipboard_get(GDK_SELECTION_CLIPBOARD), "clip", -1);
  menu = Open();
  for (const char* label : {"Undo", "Cut", "Copy", "Paste", "Select All"}) {
    EXPECT_TRUE(Sensitive(menu, {label})) << label;
  }
  for (const char* label : {"Redo", "MD Preview (HTML)"}) EXPECT_FALSE(Sensitive(menu, {label})) << label;
  CloseMenus();

  // After an undo: redo is possible; an empty selection greys Cut and Copy again.
  Send(SCI_UNDO);
  Send(SCI_SETSEL, 0, 0);
  gtk_clipboard_clear(gtk_clipboard_get(GDK_SELECTION_CLIPBOARD));
  menu = Open();
  EXPECT_TRUE(Sensitive(menu, {"Redo"}));
  for (const char* label : {"Cut", "Copy", "Paste"}) EXPECT_FALSE(Sensitive(menu, {label})) << label;
  CloseMenus();

  // A Markdown file in upper case enables the preview; a missing recent file shows its mark and
  // a greyed Open, but can be removed.
  const std::string md = WriteFile("NOTES.MD", "# Title\r\n");
  ASSERT_TRUE(LoadDocument(md));
  AddRecentFile(gSettings.recentFiles, Utf8ToUtf16(folder + "/vanished.txt"));
  menu = Open();
  EXPECT_EQ(Sensitive(menu, {"MD Preview (HTML)"}), !CommandNotBuilt(gMain.commands, kCmdMarkdownPreview));
  EXPECT_TRUE(Sensitive(menu, {"Recent Files", "2.  NOTES.MD", "Open"}));
  EXPECT_FALSE(Sensitive(menu, {"Recent Files", "1.  vanished.txt  \xE2\x8A\x97", "Open"}));
  EXPECT_TRUE(Sensitive(menu, {"Recent Files", "1.  vanished.txt  \xE2\x8A\x97", "Remove from list"}));
  EXPECT_TRUE(Sensitive(menu, {"Recent Files", "Clear All"}));
}

// Choosing an item runs its command through the main window's dispatch.
TEST_F(ContextMenuGui, ChoosingItemsRunsTheirCommands) {
  SetText("one two three");
  Send(SCI_SETSEL, 0, 0);

  // Text, no selection and nothing on the clipboard: Cut, Copy and Paste are greyed, Select All
  // and Undo are not.
  GtkWidget* menu = Open();
  for (const char* label : {"Cut", "Copy", "Paste"}) EXPECT_FALSE(Sensitive(menu, {label})) << label;
  EXPECT_TRUE(Sensitive(menu, {"Undo"}));
  Choose(menu, {"Select All"});
  EXPECT_EQ(Send(SCI_GETSELECTIONSTART), 0);
  EXPECT_EQ(Send(SCI_GETSELECTIONEND), 13);
  // The menu is gone once the choice is made, and the editor has the focus.
  EXPECT_TRUE(OpenMenus().empty());
  EXPECT_TRUE(gtk_widget_is_focus(gMain.editor));

  menu = Open();  // a selection and nothing on the clipboard: Copy too
  EXPECT_TRUE(Sensitive(menu, {"Copy"}));
  Choose(menu, {"Cut"});
  EXPECT_EQ(Text(), "");
  // An empty document greys Select All but not Undo; the clipboard's text can be pasted into it.
  menu = Open();
  EXPECT_FALSE(Sensitive(menu, {"Select All"}));
  EXPECT_TRUE(Sensitive(menu, {"Undo"}));
  CloseMenus();
  Choose(Open(), {"Paste"});
  EXPECT_EQ(Text(), "one two three");
  Choose(Open(), {"Undo"});
  EXPECT_EQ(Text(), "");
  Choose(Open(), {"Redo"});
  EXPECT_EQ(Text(), "one two three");
  SetText("");

  Choose(Open(), {"Theme", "Sepia"});
  EXPECT_EQ(gSettings.theme, 5u);
  EXPECT_EQ(Send(SCI_STYLEGETBACK, STYLE_DEFAULT), static_cast<sptr_t>(ThemeColorsFor(5).editorBackground));
  EXPECT_TRUE(OpenMenus().empty());  // a choice in a submenu closes the whole menu
  // The next menu marks it, in a column of its own.
  GtkWidget* sepia = Item(Open(), {"Theme", "Sepia"});
  ASSERT_EQ(RowLabels(sepia).size(), 2u);  // no shortcut
  EXPECT_EQ(RowText(sepia, 0), "\xE2\x9C\x93");
  EXPECT_EQ(RowText(Item(OpenMenus()[0], {"Theme", "Azure"}), 0), "");
  CloseMenus();

  const bool wrap = gSettings.wordWrap;
  Choose(Open(), {"View", "Word Wrap"});
  EXPECT_EQ(gSettings.wordWrap, !wrap);
  EXPECT_EQ(Send(SCI_GETWRAPMODE), wrap ? SC_WRAP_NONE : SC_WRAP_WORD);
  Choose(Open(), {"View", "Word Wrap"});
  EXPECT_EQ(gSettings.wordWrap, wrap);
  EXPECT_EQ(Send(SCI_GETWRAPMODE), wrap ? SC_WRAP_WORD : SC_WRAP_NONE);

  const bool numbers = gSettings.lineNumbers;
  Choose(Open(), {"View", "Line Numbers"});
  EXPECT_EQ(gSettings.lineNumbers, !numbers);
  EXPECT_EQ(gtk_widget_get_visible(gMain.margin), !numbers);

  Choose(Open(), {"Transparency", "50%"});
  EXPECT_EQ(gSettings.transparency, 50);
  EXPECT_NEAR(gtk_widget_get_opacity(gMain.window), 128 / 255.0, 0.01);
  Choose(Open(), {"Transparency", "0%  (opaque)"});
  EXPECT_EQ(gSettings.transparency, 0);
  EXPECT_DOUBLE_EQ(gtk_widget_get_opacity(gMain.window), 1.0);

  // Recent files: remove one entry, then clear the rest after the question.
  for (const char16_t* path : {u"/nowhere/a.txt", u"/nowhere/b.txt", u"/nowhere/c.txt"}) {
    AddRecentFile(gSettings.recentFiles, path);
  }
  Choose(Open(), {"Recent Files", "2.  b.txt  \xE2\x8A\x97", "Remove from list"});
  EXPECT_EQ(RecentFileEntry(gSettings.recentFiles, 0), u"/nowhere/c.txt");
  EXPECT_EQ(RecentFileEntry(gSettings.recentFiles, 1), u"/nowhere/a.txt");
  EXPECT_TRUE(asked.empty());
  Choose(Open(), {"Recent Files", "Clear All"});
  ASSERT_EQ(asked.size(), 1u);
  EXPECT_EQ(asked[0].text, "Clear the entire Recent Files list?");
  EXPECT_EQ(asked[0].kind, kMbYesNo);
  EXPECT_EQ(RecentFileEntry(gSettings.recentFiles, 0), u"");

  // An unknown command is not bound.
  EXPECT_EQ(Text(), "");
  EXPECT_FALSE(DispatchCommand(12345));
}

TEST_F(ContextMenuGui, TakesTheThemeColoursAndRightAlignsShortcuts) {
  for (ThemeId theme : {ThemeId{0}, ThemeId{1}, ThemeId{5}}) {
    SCOPED_TRACE(ThemeName(theme));
    SetTheme(theme, true);
    const ThemeColors& c = GetThemeColors();
    GtkWidget* menu = Open();
    ASSERT_NE(menu, nullptr);
    GtkWidget* undo = Item(menu, {"Undo"});   // greyed in a new document
    GtkWidget* find = Item(menu, {"Find & Replace"});
    // The shortcuts are the command table's: its menu text where it has one, else its first key.
    EXPECT_EQ(RowText(find, 2), "Ctrl+H");
    EXPECT_EQ(RowText(undo, 2), "Ctrl+Z");
    GtkWidget* saveAs = Item(menu, {"Save As..."});  // enabled in every document

    // Background, normal and greyed text. (x, y): a point of the item's row between its label
    // and its shortcut, in the menu's coordinates.
    int x = 0, y = 0;
    gtk_widget_translate_coordinates(saveAs, menu, gtk_widget_get_allocated_width(saveAs) / 2, 3, &x, &y);
    {
      Snapshot picture(menu);
      EXPECT_EQ(picture.At(x, y), c.dialogBackground);
      EXPECT_EQ(picture.At(2, picture.height / 2), c.dialogBackground);
    }
    for (int column : {1, 2}) {
      EXPECT_EQ(TextColour(RowLabels(saveAs)[column]), c.dialogText);
      EXPECT_EQ(TextColour(RowLabels(undo)[column]), c.disabledText);
    }
    EXPECT_EQ(TextColour(RowLabels(Item(menu, {"Theme"}))[1]), c.dialogText);

    // The item under the pointer takes the hover colour, its text stays readable.
    gtk_menu_shell_select_item(GTK_MENU_SHELL(menu), saveAs);
    Pump();
    EXPECT_EQ(TextColour(RowLabels(saveAs)[1]), c.dialogText);

    // The shortcut sits at the right end of its row, the label at the left.
    GtkAllocation label, shortcut, row;
    gtk_widget_get_allocation(RowLabels(saveAs)[1], &label);
    gtk_widget_get_allocation(RowLabels(saveAs)[2], &shortcut);
    gtk_widget_get_allocation(gtk_bin_get_child(GTK_BIN(saveAs)), &row);
    EXPECT_EQ(shortcut.x + shortcut.width, row.x + row.width);
    EXPECT_GT(shortcut.x, label.x + 30);
    CloseMenus();
  }
}

TEST_F(ViewerContextMenuGui, ViewerHasNoContextMenu) {
  SetText("read only text");
  EXPECT_EQ(ShowContextMenu(nullptr), nullptr);
  EXPECT_TRUE(OpenMenus().empty());
  Key(GDK_KEY_Menu);
  Key(GDK_KEY_F10, GDK_SHIFT_MASK);
  EXPECT_TRUE(OpenMenus().empty());
}
