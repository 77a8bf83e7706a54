// Command ids shared by the accelerators, the toolbar, the context menu and tests.
#pragma once

namespace nebro {

enum CommandId : int {
  kCmdNew = 1001,
  kCmdOpen = 1002,
  kCmdSave = 1003,
  kCmdSaveAs = 1004,
  kCmdExit = 1005,
  kCmdUndo = 2001,
  kCmdRedo = 2002,
  kCmdCut = 2003,
  kCmdCopy = 2004,
  kCmdPaste = 2005,
  kCmdSelectAll = 2006,
  kCmdFindReplace = 2007,
  kCmdFont = 210,
  kCmdPrintPreview = 601,
  kCmdPrint = 602,
  kCmdPageSetup = 603,
  kCmdRegexSearch = 817,
  kCmdLineNumbers = 3001,
  kCmdWordWrap = 3002,
  kCmdThemeFirst = 3101,  // 3101..3106: themes 0..5
  kCmdThemeLast = 3106,
  kCmdMarkdownPreview = 3201,
  kCmdExport = 3333,
  kCmdHelp = 4001,
  kCmdSettings = 6001,
  kCmdTransparencyFirst = 6100,  // 6100..6105: 0, 10, ... 50 per cent
  kCmdTransparencyLast = 6105,
  kCmdRecentOpenFirst = 7000,    // 7000..7009
  kCmdRecentRemoveFirst = 7010,  // 7010..7019
  kCmdRecentClear = 7020,
};

}  // namespace nebro
