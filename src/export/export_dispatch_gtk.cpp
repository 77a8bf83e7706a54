#include "export/export_dispatch_gtk.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>

#include "appearance/current_theme.h"
#include "common/utf.h"
#include "export/export_rules.h"
#include "export/html_export.h"
#include "export/plain_text_export.h"
#include "export/rtf_export.h"
#include "export/styled_text.h"
#include "gtk/file_chooser_gtk.h"
#include "gtk/message_box.h"
#include "gtk/message_box_gtk.h"
#include "gtk/object_ptr_gtk.h"
#include "gtk/progress_gtk.h"
#include "gtk/viewer_launch_gtk.h"
#include "markdown/markdown_pdf_gtk.h"
#include "markdown/markdown_preview_gtk.h"
#include "print/pdf_export_gtk.h"
#include "print/print_job_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "settings/data_folder.h"

namespace nebro::exports {
namespace {

using namespace sci;

const std::string kExportTitle(kExportMessageTitle);

// A widget that may be destroyed while an export runs (the program ending): reads as null
// once it is gone.
using Watch = std::shared_ptr<WidgetWatch>;

uint64_t NowMs() { return static_cast<uint64_t>(g_get_monotonic_time() / 1000); }

bool Asked(GtkWindow* owner, const std::string& question, const std::string& title = kExportTitle) {
  return ShowMessageBox(owner, kMbYesNo, question, title) == kMbResultSaveOrYes;
}

void Tell(GtkWindow* owner, std::string_view text, std::string_view title = kExportMessageTitle) {
  ShowMessageBox(owner, kMbOk, std::string(text), std::string(title));
}

std::string JoinPatterns(const ExportFormat& row) {
  std::string patterns;
  for (const char* p : row.filterPatterns) {
    if (!patterns.empty()) patterns += ';';
    patterns += p;
  }
  return patterns;
}

// The Save dialog: the format's filter and "All Files", the document's name with the format's
// extension in the document's folder, and a question before replacing a file.
std::string AskExportPath(GtkWindow* owner, const ExportFormat& row, const std::string& documentPath) {
  GtkFileChooserNative* dialog = gtk_file_chooser_native_new(
      std::string(kExportSaveTitle).c_str(), owner, GTK_FILE_CHOOSER_ACTION_SAVE, "_Save", "_Cancel");
  GtkFileChooser* chooser = GTK_FILE_CHOOSER(dialog);
  gtk_file_chooser_set_do_overwrite_confirmation(chooser, TRUE);
  AddChooserFilters(chooser, {{row.filterName, JoinPatterns(row)}, {std::string(kAllFilesFilter), "*.*"}});
  const std::string name = ExportInitialFileName(documentPath, row.extension);
  if (!documentPath.empty()) {
    gchar* folder = g_path_get_dirname(documentPath.c_str());
    gtk_file_chooser_set_current_folder(chooser, folder);
    g_free(folder);
  }
  if (!name.empty()) gtk_file_chooser_set_current_name(chooser, name.c_str());
  return RunFileChooser(dialog);
}

ExportStyleTable ReadStyleTable(GtkWidget* editor) {
  ExportStyleTable table{};
  for (int s = 0; s < kExportStyleCount; ++s) {
    table[s] = {static_cast<Colour>(Send(editor, SCI_STYLEGETFORE, s)),
                static_cast<Colour>(Send(editor, SCI_STYLEGETBACK, s)),
                Send(editor, SCI_STYLEGETBOLD, s) != 0, Send(editor, SCI_STYLEGETITALIC, s) != 0};
  }
  return table;
}

std::string EditorFontName(const settings::AppSettings& s) { return Utf16ToUtf8(settings::FieldText(s.fontName)); }

int32_t LineCount(GtkWidget* editor) {
  return static_cast<int32_t>(std::min<sptr_t>(Send(editor, SCI_GETLINECOUNT), INT32_MAX));
}

// The document's text and styles, read by the worker a piece at a time on the UI thread so
// that the window keeps drawing in between. Each piece is coloured first: the editor colours
// only what has been shown, and the export is coloured throughout. The progress window is
// modal: the text cannot change meanwhile. False when cancelled or the editor is gone.
struct Captured {
  std::string text, styles;
};

bool CaptureStyledText(ProgressReporter& reporter, const Watch& editor, size_t length, Captured& out) {
  constexpr size_t kPiece = size_t{1} << 20;
  out.text.resize(length);
  out.styles.resize(length);
  std::string interleaved;
  for (size_t start = 0; start < length; start += kPiece) {
    if (reporter.Cancelled()) return false;
    const size_t end = std::min(length, start + kPiece);
    bool read = false;
    interleaved.resize(2 * (end - start) + 2);
    reporter.RunOnUi([&] {
      GtkWidget* e = editor->get();
      if (!e) return;
      // Colouring restarts where the editor's colouring stopped, as scrolling there would.
      const auto styledTo = static_cast<size_t>(Send(e, SCI_GETENDSTYLED));
      if (styledTo < end) Send(e, SCI_COLOURISE, styledTo, static_cast<sptr_t>(end));
      Sci_TextRange range{{static_cast<long>(start), static_cast<long>(end)}, interleaved.data()};
      SendPtr(e, SCI_GETSTYLEDTEXT, 0, &range);
      read = true;
    });
    if (!read) return false;
    char* text = out.text.data() + start;
    char* styles = out.styles.data() + start;
    const char* in = interleaved.data();
    for (size_t i = 0, n = end - start; i < n; ++i) {
      text[i] = in[2 * i];
      styles[i] = in[2 * i + 1];
    }
  }
  return true;
}

ExportMonitor MonitorFor(ProgressReporter& reporter, int64_t lineCount) {
  ExportMonitor monitor;
  monitor.isCancelled = [&reporter] { return reporter.Cancelled(); };
  monitor.onProgress = [&reporter, lineCount](uint32_t line) {
    const int32_t total = static_cast<int32_t>(std::min<int64_t>(lineCount, INT32_MAX));
    reporter.SetText(ProgressStatusText(line, total));
    if (total > 0) reporter.SetFraction(static_cast<double>(line) / total);
  };
  return monitor;
}

ProgressOptions ExportProgress(GtkWindow* owner, std::string_view title, std::string_view text, const char* name) {
  ProgressOptions options;
  options.parent = owner;
  options.title = std::string(title);
  options.text = std::string(text);
  options.name = name;
  options.cancellable = true;
  options.cancellingText = std::string(kStatusCancelling);
  return options;
}

// A styled export on the progress worker: the editor's text and styles are read in pieces,
// `write` makes the file from them, and `done` reports on the UI thread while the owner exists.
template <typename Input>
struct StyledJob {
  Input input;
  Captured captured;
  size_t length = 0;
  std::string path;
  ExportResult result = ExportResult::Cancelled;
  uint64_t started = 0;
};

template <typename Input>
void RunStyledExport(GtkWindow* owner, GtkWidget* editor, ProgressOptions progress, Input input, size_t length,
                     const std::string& path,
                     std::function<ExportResult(StyledJob<Input>&, ProgressReporter&)> write,
                     std::function<void(GtkWindow*, bool cancelled, const StyledJob<Input>&)> done) {
  auto job = std::make_shared<StyledJob<Input>>();
  job->input = std::move(input);
  job->length = length;
  job->path = path;
  job->started = NowMs();
  auto ownerWatch = std::make_shared<WidgetWatch>(GTK_WIDGET(owner));
  auto editorWatch = std::make_shared<WidgetWatch>(editor);
  RunWithProgress(
      std::move(progress),
      [job, editorWatch, write](ProgressReporter& reporter) {
        if (!CaptureStyledText(reporter, editorWatch, job->length, job->captured)) return;
        job->input.document = {job->captured.text, job->captured.styles};
        job->result = write(*job, reporter);
        job->captured = {};
      },
      [job, ownerWatch, done](bool cancelled) {
        if (GtkWindow* owner = ownerWatch->window()) done(owner, cancelled, *job);
      });
}

// --- plain text ---------------------------------------------------------------------------

bool ExportPlainTextTo(GtkWindow* owner, GtkWidget* editor, const std::string& path) {
  const std::string text = sci::DocumentCopy(editor);
  if (WritePlainTextExport(text, path) == ExportResult::CannotCreate) {
    Tell(owner, kPlainTextCannotCreate);
    return false;
  }
  Tell(owner, kPlainTextDone);
  return true;
}

// --- HTML ---------------------------------------------------------------------------------

bool ExportHtmlTo(GtkWindow* owner, GtkWidget* editor, const std::string& documentPath,
                  const settings::AppSettings& s, const std::string& path) {
  const int32_t lines = LineCount(editor);
  const auto length = static_cast<int64_t>(Send(editor, SCI_GETLENGTH));
  if (const auto question = HtmlSizeQuestion(length, lines); question && !Asked(owner, *question)) return false;

  HtmlExportInput input;
  input.styles = ReadStyleTable(editor);
  input.pageBackground = appearance::GetThemeColors().editorBackground;
  input.title = ExportTitle(documentPath);
  input.fontName = EditorFontName(s);
  input.lineCount = lines;
  RunStyledExport<HtmlExportInput>(
      owner, editor, ExportProgress(owner, kExportMessageTitle, kStatusPreparing, "NebroExportProgress"),
      std::move(input), static_cast<size_t>(length), path,
      [](StyledJob<HtmlExportInput>& job, ProgressReporter& reporter) {
        return ExportHtmlToFile(job.input, job.path, MonitorFor(reporter, job.input.lineCount));
      },
      [](GtkWindow* owner, bool cancelled, const StyledJob<HtmlExportInput>& job) {
        if (cancelled || job.result != ExportResult::Ok) return;
        if (Asked(owner, HtmlDoneQuestion(NowMs() - job.started), std::string(kHtmlExportTitle))) {
          OpenWithDefaultApplication(owner, job.path);
        }
      });
  return true;
}

// --- RTF ----------------------------------------------------------------------------------

// Documents below this size are converted and written at once on the UI thread (a few
// milliseconds); larger ones on a worker under their own progress window.
constexpr size_t kRtfOnUiTextLimit = 64 * 1024;

RtfExportInput RtfInput(GtkWidget* editor, const settings::AppSettings& s, int32_t lines) {
  RtfExportInput input;
  input.styles = ReadStyleTable(editor);
  input.darkTheme = appearance::GetThemeColors().isDark;
  input.fontName = EditorFontName(s);
  input.fontSize = s.fontSize;
  input.lineCount = lines;
  return input;
}

uint64_t FileSize(const std::string& path) {
  struct stat st {};
  return stat(path.c_str(), &st) == 0 ? static_cast<uint64_t>(st.st_size) : 0;
}

void TellRtfWriteResult(GtkWindow* owner, ExportResult result, const std::string& path) {
  if (result == ExportResult::CannotCreate) return Tell(owner, kRtfCannotCreate);
  if (result != ExportResult::Ok) return Tell(owner, kRtfWriteError);
  Tell(owner, RtfDoneText(path));
}

bool ExportRtfTo(GtkWindow* owner, GtkWidget* editor, const settings::AppSettings& s, const std::string& path) {
  const auto length = static_cast<size_t>(Send(editor, SCI_GETLENGTH));
  if (length == 0) {
    Tell(owner, kRtfNothingToExport);
    return false;
  }
  const int32_t lines = LineCount(editor);
  if (const auto offer = ViewerOfferQuestion(kExportRtf, false, lines)) {
    if (Asked(owner, *offer)) OpenAsPlainTextInViewer(owner, editor);
    return false;
  }
  if (length < kRtfOnUiTextLimit) {
    std::string interleaved(2 * length + 2, '\0');
    Send(editor, SCI_COLOURISE, Send(editor, SCI_GETENDSTYLED), -1);
    Sci_TextRange range{{0, static_cast<long>(length)}, interleaved.data()};
    SendPtr(editor, SCI_GETSTYLEDTEXT, 0, &range);
    interleaved.resize(2 * length);
    std::string text, styles;
    SplitStyledText(interleaved, text, styles);
    RtfExportInput input = RtfInput(editor, s, lines);
    input.document = {text, styles};
    ExportBytes rtf;
    const ExportResult built = BuildRtf(input, rtf);
    if (built == ExportResult::Ok && rtf.size() < kRtfWorkerThreshold) {
      TellRtfWriteResult(owner, WriteExportFile(path, rtf.view()), path);
      return true;
    }
    if (built != ExportResult::Ok) {
      Tell(owner, kRtfFailedOrCancelled);
      return false;
    }
  }
  RunStyledExport<RtfExportInput>(
      owner, editor, ExportProgress(owner, kRtfExportTitle, kRtfStatusPreparing, "NebroRtfExportProgress"),
      RtfInput(editor, s, lines), length, path,
      [](StyledJob<RtfExportInput>& job, ProgressReporter& reporter) {
        ExportMonitor monitor = MonitorFor(reporter, job.input.lineCount);
        const int64_t last = job.input.lineCount - 1;
        int64_t line = 0;
        monitor.isCancelled = [&reporter, &line, last] {
          if (line++ == last) reporter.SetText(std::string(kRtfStatusFinalizing));
          return reporter.Cancelled();
        };
        return ExportRtfToFile(job.input, job.path, monitor);
      },
      [](GtkWindow* owner, bool cancelled, const StyledJob<RtfExportInput>& job) {
        if (cancelled || job.result == ExportResult::Cancelled) return Tell(owner, kRtfFailedOrCancelled);
        if (job.result != ExportResult::Ok) return TellRtfWriteResult(owner, job.result, job.path);
        // A small RTF is reported as the quick write reports it.
        if (FileSize(job.path) < kRtfWorkerThreshold) return Tell(owner, RtfDoneText(job.path));
        Tell(owner, RtfDoneTimedText(NowMs() - job.started, job.path));
      });
  return true;
}

// --- PDF ----------------------------------------------------------------------------------

struct PdfJob {
  std::string text;
  print::PageStyle style;
  print::PagedDocument paged;
  std::string path;
  uint64_t started = 0;
  int32_t lines = 0;
};

bool ExportPdfOf(GtkWindow* owner, GtkWidget* editor, const std::string& documentPath,
                 const settings::AppSettings& s) {
  const int32_t lines = LineCount(editor);
  const bool markdown = IsMarkdownPath(documentPath);
  if (const auto offer = ViewerOfferQuestion(kExportPdf, markdown, lines)) {
    if (Asked(owner, *offer)) OpenAsPlainTextInViewer(owner, editor);
    return false;
  }
  const ExportFormat* row = FindExportFormat(kExportPdf);
  WidgetWatch editorDuringDialog(editor), ownerDuringDialog(GTK_WIDGET(owner));
  const std::string path = AskExportPath(owner, *row, documentPath);
  // The program may have ended while the dialog was open.
  if (path.empty() || !editorDuringDialog.get() || (owner && !ownerDuringDialog.get())) return false;
  // Markdown is printed as the rendered page the HTML export writes.
  if (markdown) return markdown::ExportMarkdownPdf(owner, editor, documentPath, s, path);
  auto job = std::make_shared<PdfJob>();
  job->text = sci::DocumentCopy(editor);
  job->style = print::PageStyleFromSettings(s);
  job->path = path;
  job->lines = lines;
  job->started = NowMs();
  auto ownerWatch = std::make_shared<WidgetWatch>(GTK_WIDGET(owner));
  RunWithProgress(
      ExportProgress(owner, kPdfExportTitle, kStatusPreparing, "NebroPdfExportProgress"),
      [job](ProgressReporter& reporter) {
        print::PaginationHooks hooks;
        hooks.cancelRequested = [&reporter] { return reporter.Cancelled(); };
        hooks.pageAdded = [&reporter, job](int, int64_t done) {
          reporter.SetText(ProgressStatusText(static_cast<uint32_t>(done), job->lines));
          if (job->lines > 0) reporter.SetFraction(static_cast<double>(done) / job->lines);
        };
        job->paged = print::PaginateDocument(std::move(job->text), job->style, hooks);
        if (!reporter.Cancelled()) reporter.SetText(std::string(kStatusFinalizing));
      },
      [job, ownerWatch](bool cancelled) {
        GtkWindow* owner = ownerWatch->window();
        if (cancelled || job->paged.cancelled || !owner) return;
        const print::PdfExportResult pdf = print::ExportPagedPdf(owner, job->paged, job->path);
        if (!pdf.ok) return Tell(owner, pdf.error, kPdfExportTitle);
        if (Asked(owner, PdfDoneQuestion(NowMs() - job->started), std::string(kPdfExportTitle))) {
          OpenWithDefaultApplication(owner, job->path);
        }
      });
  return true;
}

}  // namespace

std::string PdfDoneQuestion(uint64_t milliseconds) {
  return "PDF exported successfully.\n\nExport time:  " + ElapsedTimeText(milliseconds) + "\n\nOpen PDF?";
}

void OpenAsPlainTextInViewer(GtkWindow* owner, GtkWidget* editor) {
  const std::string path = settings::MakeTempPath(settings::GetSettingsFolder(), ".txt");
  if (path.empty() || WriteExportFile(path, sci::DocumentCopy(editor)) != ExportResult::Ok) return;
  LaunchViewer(owner, path);
}

bool ExportDocument(GtkWindow* owner, GtkWidget* editor, const std::string& documentPath,
                    const settings::AppSettings& s, int32_t formatId) {
  const ExportFormat* row = FindExportFormat(formatId);
  if (!row) return false;
  if (!editor) {
    Tell(owner, "Scintilla handle is invalid.");
    return false;
  }
  if (formatId == kExportPdf) return ExportPdfOf(owner, editor, documentPath, s);

  WidgetWatch editorWatch(editor), ownerWatch(GTK_WIDGET(owner));
  const std::string path = AskExportPath(owner, *row, documentPath);
  // The program may have ended while the dialog was open.
  if (path.empty() || !editorWatch.get() || (owner && !ownerWatch.get())) return false;
  return ExportDocumentTo(owner, editor, documentPath, s, formatId, path);
}

bool ExportDocumentTo(GtkWindow* owner, GtkWidget* editor, const std::string& documentPath,
                      const settings::AppSettings& s, int32_t formatId, const std::string& path) {
  switch (formatId) {
    case kExportRtf: return ExportRtfTo(owner, editor, s, path);
    case kExportPlainText: return ExportPlainTextTo(owner, editor, path);
    case kExportHtml: break;
    default: return false;
  }
  const int32_t lines = LineCount(editor);
  const bool markdown = IsMarkdownPath(documentPath);
  if (const auto offer = ViewerOfferQuestion(kExportHtml, markdown, lines)) {
    if (Asked(owner, *offer)) OpenAsPlainTextInViewer(owner, editor);
    return false;
  }
  if (markdown) return markdown::ExportMarkdown(owner, editor, documentPath, s, path);
  return ExportHtmlTo(owner, editor, documentPath, s, path);
}

}  // namespace nebro::exports
