#include "document/file_load_gtk.h"

#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "app/main_window_gtk.h"
#include "app/message_box_gtk.h"
#include "app/gtk_util_gtk.h"
#include "app/trace_gtk.h"
#include "appearance/theme_gtk.h"
#include "document/document_questions.h"
#include "document/document_texts.h"
#include "document/file_stream.h"
#include "scintilla/scintilla_loader_gtk.h"

namespace nebro {
namespace {

using namespace sci;

bool loadInProgress = false;

constexpr size_t kLoaderChunk = 1 << 20;
constexpr long long kLargeDocument = 0x7FFFFFFFll;

void ClearSearchIndicators(GtkWidget* editor) {
  const sptr_t length = Send(editor, SCI_GETLENGTH);
  if (length == 0) return;
  for (int indicator : {8, 9, 10}) {
    Send(editor, SCI_SETINDICATORCURRENT, indicator);
    Send(editor, SCI_INDICATORCLEARRANGE, 0, length);
  }
}

// Builds a fresh document through Scintilla's loader: the text goes in piece by piece while no
// view shows it, and the view switches to it in one step.
class DocumentBuilder {
 public:
  explicit DocumentBuilder(GtkWidget* editor) : editor_(editor) {}
  ~DocumentBuilder() {
    if (loader_) loader_->Release();
  }

  bool Begin(size_t length) {
    int options = SC_DOCUMENTOPTION_DEFAULT;
    if (static_cast<long long>(length) >= kLargeDocument) options |= SC_DOCUMENTOPTION_TEXT_LARGE;
    if (gViewerMode) options |= SC_DOCUMENTOPTION_STYLES_NONE;  // the viewer draws one style only
    loader_ = reinterpret_cast<ILoader*>(Send(editor_, SCI_CREATELOADER, length, options));
    return loader_ != nullptr;
  }

  bool Add(const char* data, size_t length) {
    for (size_t done = 0; done < length; done += kLoaderChunk) {
      const auto n = static_cast<Sci_Position>(std::min(kLoaderChunk, length - done));
      if (loader_->AddData(data + done, n) != SC_STATUS_OK) return false;
    }
    return true;
  }

  // Shows the new document in the editor: empty undo history, caret at 0. The old document's
  // memory goes with it.
  bool Finish() {
    void* document = loader_->ConvertToDocument();
    loader_ = nullptr;
    if (!document) return false;
    Send(editor_, SCI_SETREADONLY, 0);
    // The view takes its own reference; ours goes, so the next replacement frees this one.
    SendPtr(editor_, SCI_SETDOCPOINTER, 0, document);
    SendPtr(editor_, SCI_RELEASEDOCUMENT, 0, document);
    Send(editor_, SCI_SETCODEPAGE, SC_CP_UTF8);
    Send(editor_, SCI_EMPTYUNDOBUFFER);
    Send(editor_, SCI_SETSAVEPOINT);
    Send(editor_, SCI_GOTOPOS, 0);
    return true;
  }

 private:
  GtkWidget* editor_;
  ILoader* loader_ = nullptr;
};

}  // namespace

void CloseDocumentLock(DocumentState& doc) { nebro::CloseDocumentLock(doc.lockFd); }

void LoadTextIntoEditor(GtkWidget* editor, const char* text, size_t length) {
  DocumentBuilder builder(editor);
  if (builder.Begin(length) && builder.Add(text, length) && builder.Finish()) return;
  // The loader refused (out of memory): empty the old document in place instead.
  Send(editor, SCI_SETREADONLY, 0);
  Send(editor, SCI_CLEARALL);
  Send(editor, SCI_APPENDTEXT, length, reinterpret_cast<sptr_t>(text));
  Send(editor, SCI_EMPTYUNDOBUFFER);
  Send(editor, SCI_GOTOPOS, 0);
}

namespace {

// Files from this size on are read on a worker while a small window shows the progress, so
// the editor keeps painting; smaller ones load before anyone would notice.
uint64_t backgroundThreshold = 32ull << 20;

struct BackgroundLoad {
  DocumentBuilder* builder = nullptr;
  std::mutex mutex;
  std::condition_variable beginAnswered;
  bool beginDone = false;
  bool beginOk = false;
  size_t total = 0;
  std::atomic<uint64_t> bytes{0};
  std::atomic<bool> finished{false};
  LoadResult result;
};

// The loader is made on the UI thread; the worker waits for it, then fills it on its own.
gboolean BeginOnUiThread(gpointer data) {
  auto* load = static_cast<BackgroundLoad*>(data);
  const bool ok = load->builder->Begin(load->total);
  {
    std::lock_guard<std::mutex> lock(load->mutex);
    load->beginOk = ok;
    load->beginDone = true;
  }
  load->beginAnswered.notify_one();
  return G_SOURCE_REMOVE;
}

LoadResult LoadWithProgress(OpenedDocument opened, uint64_t fileSize, DocumentBuilder& builder,
                            const std::string& path) {
  BackgroundLoad load;
  load.builder = &builder;
  TextSink sink{[&load](size_t total) {
                  load.total = total;
                  g_main_context_invoke(nullptr, BeginOnUiThread, &load);
                  std::unique_lock<std::mutex> lock(load.mutex);
                  load.beginAnswered.wait(lock, [&load] { return load.beginDone; });
                  return load.beginOk;
                },
                [&load, &builder](const char* data, size_t length) {
                  const bool ok = builder.Add(data, length);
                  load.bytes += length;
                  return ok;
                }};
  std::thread worker([&load, &sink, opened = std::move(opened)]() mutable {
    load.result = StreamDocumentFile(std::move(opened), DefaultMaxLoadBytes(), sink);
    load.finished = true;
    g_main_context_wakeup(nullptr);
  });

  GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_widget_set_name(window, "NebroLoadProgress");
  gtk_window_set_title(GTK_WINDOW(window), "Nebro - Loading");
  gtk_window_set_modal(GTK_WINDOW(window), TRUE);
  gtk_window_set_deletable(GTK_WINDOW(window), FALSE);
  gtk_window_set_resizable(GTK_WINDOW(window), FALSE);
  gtk_window_set_type_hint(GTK_WINDOW(window), GDK_WINDOW_TYPE_HINT_DIALOG);
  if (gMain.window) {
    gtk_window_set_transient_for(GTK_WINDOW(window), GTK_WINDOW(gMain.window));
    gtk_window_set_position(GTK_WINDOW(window), GTK_WIN_POS_CENTER_ON_PARENT);
  }
  g_signal_connect(window, "delete-event", G_CALLBACK(gtk_true), nullptr);  // it ends by itself
  const ThemeColors& theme = GetThemeColors();
  SetWidgetCss(window, "* { background-color: " + ColourText(theme.dialogBackground) + "; color: " +
                           ColourText(theme.dialogText) + "; }");
  GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 10);
  gtk_container_set_border_width(GTK_CONTAINER(box), 16);
  GtkWidget* label = gtk_label_new(("Loading " + DocumentDisplayName(path) + "...").c_str());
  GtkWidget* bar = gtk_progress_bar_new();
  gtk_widget_set_size_request(bar, 320, -1);
  gtk_box_pack_start(GTK_BOX(box), label, FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(box), bar, FALSE, FALSE, 0);
  gtk_container_add(GTK_CONTAINER(window), box);
  gtk_widget_show_all(window);

  struct Progress {
    BackgroundLoad* load;
    GtkWidget* bar;
    uint64_t size;
  } progress{&load, bar, fileSize};
  const guint timer = g_timeout_add(100, [](gpointer data) -> gboolean {
    auto* p = static_cast<Progress*>(data);
    if (p->size > 0) {
      gtk_progress_bar_set_fraction(GTK_PROGRESS_BAR(p->bar),
                                    std::min(1.0, static_cast<double>(p->load->bytes) / static_cast<double>(p->size)));
    }
    return G_SOURCE_CONTINUE;
  }, &progress);
  while (!load.finished) g_main_context_iteration(nullptr, TRUE);
  worker.join();
  g_source_remove(timer);
  gtk_widget_destroy(window);
  return std::move(load.result);
}

}  // namespace

bool FileLoadInProgress() { return loadInProgress; }

void SetBackgroundLoadThreshold(uint64_t bytes) { backgroundThreshold = bytes; }

bool FileLoad(const std::string& path) {
  if (loadInProgress) {
    Trace("Nebro: FileLoad already in progress, skipping");
    return false;
  }
  loadInProgress = true;
  struct Clear {
    ~Clear() { loadInProgress = false; }
  } clear;

  Trace("Nebro: FileLoad called for: %s", path.c_str());
  if (path != gMain.doc.path) CloseDocumentLock(gMain.doc);

  GtkWidget* editor = gMain.editor;
  DocumentBuilder builder(editor);
  TextSink sink{[&](size_t total) { return builder.Begin(total); },
                [&](const char* data, size_t length) { return builder.Add(data, length); }};
  OpenedDocument opened = OpenDocumentFile(path);
  struct stat st {};
  const uint64_t size = opened.fd.Valid() && fstat(opened.fd.Get(), &st) == 0 ? static_cast<uint64_t>(st.st_size) : 0;
  LoadResult result = size >= backgroundThreshold && size <= DefaultMaxLoadBytes()
                          ? LoadWithProgress(std::move(opened), size, builder, path)
                          : StreamDocumentFile(std::move(opened), DefaultMaxLoadBytes(), sink);
  for (const std::string& line : result.trace) Trace("%s", line.c_str());
  if (result.decision == LoadDecision::Loaded && !builder.Finish()) {
    result.decision = LoadDecision::TooLarge;
    result.message = "Not enough memory to open this file.";
    result.title = kTitleErrorMangled;
    result.lock.Reset();
  }
  if (result.decision != LoadDecision::Loaded) {
    ShowMessageBox(GTK_WINDOW(gMain.window), kMbOk, result.message, result.title);
    return false;
  }

  if (result.eolMode) Send(editor, SCI_SETEOLMODE, static_cast<int>(*result.eolMode));
  CloseDocumentLock(gMain.doc);
  gMain.doc.lockFd = result.lock.Release();
  gMain.doc.encoding = result.encoding;

  if (gViewerMode) {
    ApplyReadingLook(editor);
    Send(editor, SCI_SETREADONLY, 1);
  } else {
    SetupLexer(editor, path);
    RepaintChrome();
    ClearSearchIndicators(editor);
  }
  Trace("Nebro: FileLoad completed successfully");
  return true;
}

}  // namespace nebro
