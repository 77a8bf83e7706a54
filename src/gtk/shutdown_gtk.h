// Ending the program from inside any window. A signal may arrive while a message box, a
// question, a file chooser or a dialog runs a loop of its own: each of them is answered as
// cancelled, none opens afterwards, and the main window goes only once they have all returned,
// so nothing ever acts on (or saves from) an editor that is already gone.
#pragma once

namespace nebro {

// From now on every box and chooser answers Cancel at once, without showing.
void BeginShutdown();
bool ShuttingDown();

// Answers every open box, chooser and modal dialog as cancelled (their loops end).
void CloseModalWindowsAsCancelled();

// True while a box or chooser opened by the program has not returned yet.
bool ModalLoopsRunning();

// Counting of the loops the program's own boxes and choosers run (message_box_gtk and
// file_chooser_gtk), and how to end each one.
struct ModalLoop {
  void (*cancel)(void* data);
  void* data;
};
void ModalLoopStarted(const ModalLoop& loop);
void ModalLoopEnded(void* data);

// Forgets the shutdown (tests start each case afresh).
void ResetShutdown();

}  // namespace nebro
