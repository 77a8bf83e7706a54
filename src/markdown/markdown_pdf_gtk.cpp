#include "markdown/markdown_pdf_gtk.h"

#include <fcntl.h>
#include <gio/gio.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <vector>

#include "common/install_paths.h"
#include "common/utf.h"
#include "export/export_dispatch_gtk.h"
#include "export/export_output.h"
#include "export/export_rules.h"
#include "gtk/message_box.h"
#include "gtk/message_box_gtk.h"
#include "gtk/object_ptr_gtk.h"
#include "gtk/progress_gtk.h"
#include "gtk/viewer_launch_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "settings/data_folder.h"

namespace nebro::markdown {
namespace {

using namespace std::chrono_literals;

constexpr const char* kToolName = "nebro-markdown-pdf";
// How often a worker waiting for the helper looks at the Cancel button.
constexpr auto kCancelCheck = 50ms;

uint64_t NowMs() { return static_cast<uint64_t>(g_get_monotonic_time() / 1000); }

std::string CannotCreate(int errnoValue) { return std::string("Cannot create PDF file.\n") + std::strerror(errnoValue); }

// The files of one export: the rendered page in the data folder, and the PDF the helper prints
// beside the target, moved onto the target only when it is complete.
struct PdfFiles {
  std::string page, partial;
  PdfFiles() = default;
  PdfFiles(const PdfFiles&) = delete;
  PdfFiles& operator=(const PdfFiles&) = delete;
  ~PdfFiles() {
    if (!page.empty()) unlink(page.c_str());
    if (!partial.empty()) unlink(partial.c_str());
  }
};

bool PrepareFiles(const std::string& page, const std::string& outputPath, PdfFiles& files, std::string& error) {
  files.page = settings::MakeTempPath(settings::GetSettingsFolder(), ".html");
  if (files.page.empty() || exports::WriteExportFile(files.page, page) != exports::ExportResult::Ok) {
    files.page.clear();
    error = "Cannot write the rendered page to the data folder.";
    return false;
  }
  // A new hidden name beside the target, created like any new file (its mode follows umask).
  gchar* folder = g_path_get_dirname(outputPath.c_str());
  gchar* name = g_path_get_basename(outputPath.c_str());
  const std::string stem = std::string(folder) + "/." + name + ".";
  g_free(folder);
  g_free(name);
  std::string pattern;
  int fd = -1;
  for (int attempt = 0; fd < 0 && attempt < 100; ++attempt) {
    char unique[16];
    std::snprintf(unique, sizeof unique, "%08x", g_random_int());
    pattern = stem + unique + ".pdf";
    fd = open(pattern.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0 && errno != EEXIST) break;
  }
  if (fd < 0) {
    error = CannotCreate(errno);
    return false;
  }
  close(fd);
  files.partial = pattern;
  return true;
}

bool MoveInPlace(PdfFiles& files, const std::string& outputPath, std::string& error) {
  if (rename(files.partial.c_str(), outputPath.c_str()) != 0) {
    error = CannotCreate(errno);
    return false;
  }
  files.partial.clear();
  return true;
}

GSubprocess* StartTool(const PdfFiles& files, const print::PageStyle& sheet, std::string& error) {
  const std::string tool = MarkdownPdfToolPath();
  if (!g_file_test(tool.c_str(), G_FILE_TEST_IS_EXECUTABLE)) {
    error = std::string(kToolName) + " not found.\nPlace " + kToolName + " next to nebro.";
    return nullptr;
  }
  // The sheet and margins Page Setup chose, as the ordinary PDF uses them.
  std::string sizes[6];
  int i = 0;
  for (int v : {sheet.paper.width, sheet.paper.height, sheet.margins.left, sheet.margins.top, sheet.margins.right,
                sheet.margins.bottom}) {
    sizes[i++] = std::to_string(v);
  }
  const char* argv[] = {tool.c_str(), files.page.c_str(), files.partial.c_str(), sizes[0].c_str(), sizes[1].c_str(),
                        sizes[2].c_str(), sizes[3].c_str(), sizes[4].c_str(), sizes[5].c_str(), nullptr};
  GError* e = nullptr;
  GSubprocess* process = g_subprocess_newv(argv, static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDOUT_SILENCE | G_SUBPROCESS_FLAGS_STDERR_PIPE), &e);
  if (!process) {
    error = std::string("Cannot start ") + kToolName + ": " + (e ? e->message : "unknown error");
    g_clear_error(&e);
  }
  return process;
}

// The helper's verdict once it has ended. Its reason is its own line on stderr (the engine may
// write warnings there too), without the program's name.
bool ToolSucceeded(GSubprocess* process, const char* errors, std::string& error) {
  if (g_subprocess_get_if_exited(process) && g_subprocess_get_exit_status(process) == 0) return true;
  const std::string prefix = std::string(kToolName) + ": ";
  std::string reason;
  gchar** lines = g_strsplit(errors ? errors : "", "\n", -1);
  for (gchar** line = lines; *line; ++line) {
    if (g_str_has_prefix(*line, prefix.c_str())) reason = *line + prefix.size();
  }
  g_strfreev(lines);
  if (reason.empty() && g_subprocess_get_if_signaled(process)) reason = std::string(kToolName) + " was stopped.";
  error = "Cannot create PDF file.\n" + (reason.empty() ? std::string(kToolName) + " failed." : reason);
  return false;
}

// What the worker and the helper's completion (on the UI thread) share.
struct ToolRun {
  std::mutex mutex;
  std::condition_variable ended;
  bool done = false;
  bool ok = false;
  std::string error;
};

void OnToolEnded(GObject* source, GAsyncResult* result, gpointer data) {
  std::unique_ptr<std::shared_ptr<ToolRun>> run(static_cast<std::shared_ptr<ToolRun>*>(data));
  GSubprocess* process = G_SUBPROCESS(source);
  gchar* errors = nullptr;
  GError* e = nullptr;
  g_subprocess_communicate_utf8_finish(process, result, nullptr, &errors, &e);
  std::string error;
  const bool ok = !e && ToolSucceeded(process, errors, error);
  if (e) error = std::string("Cannot create PDF file.\n") + e->message;
  g_clear_error(&e);
  g_free(errors);
  std::lock_guard<std::mutex> lock((*run)->mutex);
  (*run)->ok = ok;
  (*run)->error = error;
  (*run)->done = true;
  (*run)->ended.notify_all();
}

struct MarkdownPdfJob {
  std::string text;
  MarkdownPageOptions options;
  print::PageStyle sheet;
  std::string outputPath;
  bool ok = false;
  std::string error;
  uint64_t started = 0;
};

// On the progress window's thread: renders the page, runs the helper and waits for it, ending
// it when Cancel is pressed. Leaves no file behind unless the PDF is complete.
void RunMarkdownPdfWorker(MarkdownPdfJob& job, ProgressReporter& reporter) {
  if (job.text.empty()) {
    job.error = "Nothing to export.";
    return;
  }
  std::string page;
  if (!RenderMarkdownPage(job.text, job.options, page, [&reporter](uint32_t, uint32_t) { return !reporter.Cancelled(); })) {
    if (!reporter.Cancelled()) job.error = "Cannot render the Markdown page.";
    return;
  }
  job.text = {};
  PdfFiles files;
  if (!PrepareFiles(page, job.outputPath, files, job.error) || reporter.Cancelled()) return;
  page = {};
  GSubprocess* process = StartTool(files, job.sheet, job.error);
  if (!process) return;
  reporter.SetText(std::string(kStatusExporting));
  reporter.SetFraction(0.2);

  // The helper's end is reported through the main loop, which the UI thread runs.
  auto run = std::make_shared<ToolRun>();
  g_subprocess_communicate_utf8_async(process, nullptr, nullptr, OnToolEnded, new std::shared_ptr<ToolRun>(run));
  bool killed = false;
  {
    std::unique_lock<std::mutex> lock(run->mutex);
    while (!run->ended.wait_for(lock, kCancelCheck, [&run] { return run->done; })) {
      if (!killed && reporter.Cancelled()) {
        g_subprocess_force_exit(process);
        killed = true;
      }
    }
  }
  g_object_unref(process);
  if (killed || reporter.Cancelled()) return;
  if (!run->ok) {
    job.error = run->error;
    return;
  }
  reporter.SetText(std::string(exports::kStatusFinalizing));
  job.ok = MoveInPlace(files, job.outputPath, job.error);
  if (job.ok) reporter.SetFraction(1.0);
}

}  // namespace

std::string MarkdownPdfToolPath() {
  const std::string beside = ExecutableFolder() + "/" + kToolName;
  if (RunsInstalled() || g_file_test(beside.c_str(), G_FILE_TEST_IS_EXECUTABLE)) return beside;
  return NEBRO_BUILT_MARKDOWN_PDF_TOOL;
}

bool WriteMarkdownPdf(std::string_view markdownUtf8, const MarkdownPageOptions& options,
                      const print::PageStyle& sheet, const std::string& outputPath, std::string& error) {
  std::string page;
  if (!RenderMarkdownPage(markdownUtf8, options, page)) {
    error = "Cannot render the Markdown page.";
    return false;
  }
  PdfFiles files;
  if (!PrepareFiles(page, outputPath, files, error)) return false;
  GSubprocess* process = StartTool(files, sheet, error);
  if (!process) return false;
  gchar* errors = nullptr;
  GError* e = nullptr;
  bool ok = g_subprocess_communicate_utf8(process, nullptr, nullptr, nullptr, &errors, &e);
  if (!ok) error = std::string("Cannot create PDF file.\n") + (e ? e->message : "");
  ok = ok && ToolSucceeded(process, errors, error);
  g_clear_error(&e);
  g_free(errors);
  g_object_unref(process);
  return ok && MoveInPlace(files, outputPath, error);
}

bool ExportMarkdownPdf(GtkWindow* owner, GtkWidget* editor, const std::string& documentPath,
                       const settings::AppSettings& s, const std::string& outputPath) {
  auto job = std::make_shared<MarkdownPdfJob>();
  job->text = sci::DocumentCopy(editor);
  job->options = {documentPath, Utf16ToUtf8(settings::FieldText(s.fontName)), s.fontSize, s.theme};
  job->sheet = print::PageStyleFromSettings(s);
  job->outputPath = outputPath;
  job->started = NowMs();

  ProgressOptions options;
  options.parent = owner;
  options.title = std::string(exports::kPdfExportTitle);
  options.text = std::string(exports::kStatusPreparing);
  options.name = "NebroPdfExportProgress";
  options.cancellable = true;
  options.cancellingText = std::string(exports::kStatusCancelling);
  const bool hadOwner = owner != nullptr;
  auto ownerWatch = std::make_shared<WidgetWatch>(owner ? GTK_WIDGET(owner) : nullptr);
  RunWithProgress(
      options, [job](ProgressReporter& reporter) { RunMarkdownPdfWorker(*job, reporter); },
      [job, ownerWatch, hadOwner](bool cancelled) {
        GtkWindow* owner = ownerWatch->window();
        if (cancelled || (hadOwner && !owner)) return;
        if (!job->ok) {
          if (!job->error.empty()) ShowMessageBox(owner, kMbOk, job->error, std::string(exports::kPdfExportTitle));
          return;
        }
        if (ShowMessageBox(owner, kMbYesNo, exports::PdfDoneQuestion(NowMs() - job->started),
                           std::string(exports::kPdfExportTitle)) == kMbResultSaveOrYes) {
          OpenWithDefaultApplication(owner, job->outputPath);
        }
      });
  return true;
}

}  // namespace nebro::markdown
