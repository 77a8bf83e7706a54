// The fixture of every GUI test that needs the editor: the real main window, built by
// CreateMainWindow with its real wiring, on settings at their defaults in a throw-away folder,
// with its message boxes answered by the test.
// Every global goes back to its start-of-process state between tests.
#pragma once

#include <gtest/gtest.h>
#include <gtk/gtk.h>
#include <stdlib.h>

#include <filesystem>
#include <string>
#include <vector>

#include "app/main_window_gtk.h"
#include "appearance/font_aliases_gtk.h"
#include "gtk/message_box_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "settings/data_folder.h"
#include "settings/settings.h"
#include "support/disk_fixtures.h"
#include "support/gui_helpers.h"

namespace nebro::testing {

class MainWindowTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    appearance::LoadFontAliases();
    if (!sci::ScintillaLoaded()) {
      ASSERT_EQ(sci::LoadScintilla(), sci::LibraryLoad::Ok);
    }
    if (!sci::CreateLexerFn()) {
      ASSERT_EQ(sci::LoadLexilla(), sci::LibraryLoad::Ok);
    }
  }

  void SetUp() override {
    char name[] = "/tmp/nebro-gui-XXXXXX";
    folder = mkdtemp(name);
    app::ResetMainWindowState();
    settings::SetConfigRoot(folder + "/config");
    SetMessageBoxHook([this](int kind, const std::string& text, const std::string& title) {
      asked.push_back({kind, text, title});
      if (answers.empty()) return answer;
      const int next = answers.front();
      answers.erase(answers.begin());
      return next;
    });
    Configure();
    ASSERT_TRUE(app::CreateMainWindow("Nebro", 0, 0, width, height, true));
    gtk_widget_show(app::gMain.window);
    Pump(app::gMain.window);
  }

  void TearDown() override {
    if (!boxesExpected && !asked.empty()) ADD_FAILURE() << "unexpected message box: " << asked[0].text;
    app::ResetMainWindowState();
    Pump();
    std::filesystem::remove_all(folder);
  }

  // Settings and sizes a test wants before the window exists.
  virtual void Configure() {}

  // A file in the test's folder, and a file's bytes.
  std::string WriteFile(const std::string& name, const std::string& bytes) {
    test::WriteBytes(folder + "/" + name, bytes);
    return folder + "/" + name;
  }
  static std::string ReadFile(const std::string& path) { return test::ReadBytes(path); }

  // Loads a file as the document through the main window's own path, waiting for a load that
  // runs in the background. True when it became the document.
  bool LoadDocument(const std::string& path) {
    bool done = false, loaded = false;
    document::LoadAsDocument(app::MainDocumentWindow(), path, [&](bool ok) {
      loaded = ok;
      done = true;
    });
    EXPECT_TRUE(WaitUntil([&] { return done; })) << "the load of " << path << " never ended";
    return loaded;
  }

  sci::sptr_t Send(long message, sci::uptr_t w = 0, sci::sptr_t l = 0) { return sci::Send(app::gMain.editor, message, w, l); }
  // Typed at the end of the document.
  void Type(const char* text) {
    Send(sci::SCI_GOTOPOS, Send(sci::SCI_GETLENGTH));
    sci::SendPtr(app::gMain.editor, sci::SCI_REPLACESEL, 0, text);
  }
  void SetText(const std::string& text) { sci::SendPtr(app::gMain.editor, sci::SCI_SETTEXT, 0, text.c_str()); }
  std::string Text() {
    std::string text(static_cast<size_t>(Send(sci::SCI_GETLENGTH)) + 1, '\0');
    sci::SendPtr(app::gMain.editor, sci::SCI_GETTEXT, text.size(), text.data());
    text.pop_back();
    return text;
  }

  std::string folder;
  int width = 900, height = 600;
  // Every message box the window shows, answered from `answers` in turn, then with `answer`; a
  // box in a test that does not expect any fails it.
  struct Asked {
    int kind;
    std::string text, title;
  };
  std::vector<Asked> asked;
  std::vector<int> answers;
  int answer = kMbResultCancel;
  bool boxesExpected = false;
};

}  // namespace nebro::testing
