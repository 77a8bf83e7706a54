#include "document/recovery_gtk.h"

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <ctime>
#include <mutex>
#include <optional>
#include <thread>

#include "appearance/lexer_setup_gtk.h"
#include "document/document_builder_gtk.h"
#include "document/document_questions.h"
#include "document/recovery.h"
#include "gtk/message_box_gtk.h"
#include "gtk/trace_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "settings/data_folder.h"

namespace nebro::document {
namespace {

using namespace sci;
using Clock = std::chrono::steady_clock;

constexpr int kFirstCopySeconds = 2;
constexpr int kCopyEverySeconds = 30;

guint pendingCopy = 0;
std::optional<DocumentWindow> window;
std::optional<Clock::time_point> lastCopy;
bool skipped = false;
// Writes and removals take turns; a removal makes every write still waiting a no-op, so no copy
// outlives the save that made it stale.
std::mutex diskTurn;
std::atomic<unsigned> generation{0};

std::string OwnCopyFile() { return RecoveryFileFor(settings::GetSettingsFolder(), getpid()); }

int64_t Now() { return static_cast<int64_t>(std::time(nullptr)); }

gboolean OnCopyDue(gpointer) {
  pendingCopy = 0;
  if (!window || !window->doc->modified || !window->editor) return G_SOURCE_REMOVE;
  const auto length = static_cast<size_t>(Send(window->editor, SCI_GETLENGTH));
  skipped = length > kRecoveryLimit;
  if (skipped) {
    Trace("Nebro: No recovery copy: the document is larger than 64 MB");
    if (window->changed) window->changed();
    return G_SOURCE_REMOVE;
  }
  lastCopy = Clock::now();
  std::thread([file = OwnCopyFile(), path = window->doc->path, text = DocumentCopy(window->editor),
               turn = generation.load()] {
    const std::lock_guard<std::mutex> lock(diskTurn);
    if (turn != generation.load()) return;
    if (!WriteRecoveryCopy(file, path, Now(), text)) Trace("Nebro: ERROR - Cannot write the recovery copy");
  }).detach();
  return G_SOURCE_REMOVE;
}

}  // namespace

void NoteChangeForRecovery(const DocumentWindow& w) {
  window = w;
  if (!w.doc->modified || pendingCopy) return;
  int delay = kFirstCopySeconds;
  if (lastCopy) {
    const auto since = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - *lastCopy).count();
    if (since < kCopyEverySeconds) delay = static_cast<int>(kCopyEverySeconds - since);
  }
  pendingCopy = g_timeout_add_seconds(static_cast<guint>(delay), OnCopyDue, nullptr);
}

void RemoveRecoveryCopy() {
  if (pendingCopy) g_source_remove(pendingCopy);
  pendingCopy = 0;
  lastCopy.reset();
  skipped = false;
  const std::lock_guard<std::mutex> lock(diskTurn);
  ++generation;
  unlink(OwnCopyFile().c_str());
}

void KeepRecoveryCopyNow(const DocumentWindow& w) {
  if (pendingCopy) g_source_remove(pendingCopy);
  pendingCopy = 0;
  const std::lock_guard<std::mutex> lock(diskTurn);
  ++generation;
  if (!w.doc->modified || static_cast<size_t>(Send(w.editor, SCI_GETLENGTH)) > kRecoveryLimit) return;
  if (WriteRecoveryCopy(OwnCopyFile(), w.doc->path, Now(), DocumentCopy(w.editor))) {
    Trace("Nebro: Unsaved text kept as a recovery copy");
  }
}

bool RecoveryCopySkipped() { return skipped; }

bool OfferRecoveryCopies(const DocumentWindow& w) {
  std::vector<RecoveryCopy> copies = FindOrphanedRecoveryCopies(settings::GetSettingsFolder());
  for (auto it = copies.rbegin(); it != copies.rend(); ++it) {
    char when[64] = "";
    const std::time_t t = static_cast<std::time_t>(it->writtenAt);
    std::tm local{};
    if (localtime_r(&t, &local)) std::strftime(when, sizeof when, "%Y-%m-%d %H:%M", &local);
    const std::string name = it->originalPath.empty() ? "Untitled" : DocumentDisplayName(it->originalPath);
    const std::string question =
        it->beforeSave ? "A save of " + name + " was interrupted (" + when +
                             ").\nNebro kept the file's previous content. Restore it?"
                       : "Nebro found unsaved text from " + name + " (" + when + ").\nRestore?";
    if (ShowMessageBox(w.owner, kMbYesNo, question, "Nebro - Recovery") != kMbResultSaveOrYes) {
      unlink(it->file.c_str());
      continue;
    }
    LoadTextIntoEditor(w.editor, it->text.data(), it->text.size());
    const bool crlf = it->text.find("\r\n") != std::string::npos;
    Send(w.editor, SCI_SETEOLMODE, crlf ? SC_EOL_CRLF : SC_EOL_LF);
    appearance::SetupLexer(w.editor, it->originalPath);
    w.doc->path = it->originalPath;
    w.doc->encoding = TextEncoding::Utf8;
    w.doc->modified = true;
    if (w.changed) w.changed();
    unlink(it->file.c_str());
    Trace("Nebro: Restored unsaved text of %s", name.c_str());
    NoteChangeForRecovery(w);  // the restored text gets this editor's own copy
    return true;
  }
  return false;
}

}  // namespace nebro::document
