#include "app/command_line_export_gtk.h"

#include <gtk/gtk.h>

#include <cstdio>

#include "appearance/current_theme.h"
#include "appearance/font_aliases_gtk.h"
#include "appearance/lexer_setup_gtk.h"
#include "appearance/theme_gtk.h"
#include "common/utf.h"
#include "document/file_load.h"
#include "document/document_builder_gtk.h"
#include "export/export_output.h"
#include "export/export_rules.h"
#include "export/html_export.h"
#include "export/plain_text_export.h"
#include "export/rtf_export.h"
#include "export/styled_text.h"
#include "markdown/markdown_html.h"
#include "markdown/markdown_pdf_gtk.h"
#include "print/pdf_export_gtk.h"
#include "scintilla/scintilla_loader_gtk.h"
#include "settings/data_folder.h"
#include "settings/settings.h"

namespace nebro::app {
namespace {

using namespace sci;

int Fail(const std::string& message) {
  std::fprintf(stderr, "nebro: %s\n", OneLine(message).c_str());
  return 1;
}

std::string ResultMessage(exports::ExportResult result, const char* what) {
  switch (result) {
    case exports::ExportResult::CannotCreate: return std::string("Cannot create ") + what + " file.";
    case exports::ExportResult::OutOfMemory: return "Not enough memory for the export.";
    default: return std::string("Error writing ") + what + " file.";
  }
}

struct StyledDocument {
  std::string text, styles;
  exports::ExportStyleTable table{};
  int64_t lineCount = 0;
};

// Colours the text with the lexer of `path` in a hidden editor and reads back text and styles.
bool StyleInHiddenEditor(const std::string& path, std::string_view text, StyledDocument& out, std::string& error) {
  if (LoadScintilla() != LibraryLoad::Ok) {
    error = "libscintilla.so not found.";
    return false;
  }
  if (LoadLexilla() != LibraryLoad::Ok) {
    error = "liblexilla.so not found or without CreateLexer.";
    return false;
  }
  GtkWidget* editor = NewEditor();
  g_object_ref_sink(editor);
  Send(editor, SCI_SETCODEPAGE, SC_CP_UTF8);
  document::LoadTextIntoEditor(editor, text.data(), text.size());
  appearance::ApplyThemeToEditor(editor);
  appearance::SetupLexer(editor, path);
  Send(editor, SCI_COLOURISE, 0, -1);

  const auto length = static_cast<size_t>(Send(editor, SCI_GETLENGTH));
  out.text.reserve(length);
  out.styles.reserve(length);
  std::string interleaved;
  constexpr size_t kPiece = 1 << 20;
  for (size_t start = 0; start < length; start += kPiece) {
    const size_t end = std::min(length, start + kPiece);
    interleaved.assign(2 * (end - start) + 2, '\0');
    Sci_TextRange range{{static_cast<long>(start), static_cast<long>(end)}, interleaved.data()};
    SendPtr(editor, SCI_GETSTYLEDTEXT, 0, &range);
    interleaved.resize(2 * (end - start));
    std::string text, styles;
    exports::SplitStyledText(interleaved, text, styles);
    out.text += text;
    out.styles += styles;
  }
  for (int s = 0; s < exports::kExportStyleCount; ++s) {
    out.table[s] = {static_cast<Colour>(Send(editor, SCI_STYLEGETFORE, s)),
                    static_cast<Colour>(Send(editor, SCI_STYLEGETBACK, s)),
                    Send(editor, SCI_STYLEGETBOLD, s) != 0, Send(editor, SCI_STYLEGETITALIC, s) != 0};
  }
  out.lineCount = Send(editor, SCI_GETLINECOUNT);
  g_object_unref(editor);
  return true;
}

}  // namespace

int RunCommandLineExport(const ToolRequest& request, int argc, char** argv) {
  // The stored theme and font, read only: a batch run never writes the settings.
  if (const gchar* root = g_get_user_config_dir()) settings::SetConfigRoot(root);
  settings::LoadSettings(settings::gSettings);
  appearance::gThemeChosenByUser = true;

  document::LoadResult loaded = document::LoadDocumentFile(request.input, document::DefaultMaxLoadBytes());
  if (loaded.decision != document::LoadDecision::Loaded) return Fail(loaded.message);
  const std::string_view text = loaded.text.view();
  const std::string fontName = Utf16ToUtf8(settings::FieldText(settings::gSettings.fontName));

  exports::ExportResult result = exports::ExportResult::Ok;
  if (request.format == "txt") {
    result = exports::WritePlainTextExport(text, request.output);
    if (result != exports::ExportResult::Ok) return Fail(result == exports::ExportResult::CannotCreate ? std::string(exports::kPlainTextCannotCreate)
                                                                                     : ResultMessage(result, "text"));
    return 0;
  }
  // The RTF exporter and the Markdown renderer make nothing of an empty document (a file that
  // holds only a byte-order mark is empty too); the other formats write an empty document.
  if (text.empty() && (request.format == "rtf" || (request.format == "html" && exports::IsMarkdownPath(request.input)))) {
    return Fail(std::string(exports::kRtfNothingToExport));
  }
  if (request.format == "html" && exports::IsMarkdownPath(request.input)) {
    markdown::MarkdownPageOptions options{request.input, fontName, settings::gSettings.fontSize, settings::gSettings.theme};
    std::string page;
    if (!markdown::RenderMarkdownPage(text, options, page)) return Fail("Cannot render the Markdown page.");
    result = exports::WriteExportFile(request.output, page);
    return result == exports::ExportResult::Ok ? 0 : Fail(ResultMessage(result, "HTML"));
  }

  if (!gtk_init_check(&argc, &argv)) {
    return Fail("--export " + request.format +
                " needs a display for the editor's colours; on a machine without one run: xvfb-run -a nebro --export ...");
  }
  appearance::LoadFontAliases();
  if (request.format == "pdf" && exports::IsMarkdownPath(request.input)) {
    if (text.empty()) return Fail(std::string(exports::kRtfNothingToExport));
    markdown::MarkdownPageOptions options{request.input, fontName, settings::gSettings.fontSize, settings::gSettings.theme};
    std::string error;
    return markdown::WriteMarkdownPdf(text, options, print::PageStyleFromSettings(settings::gSettings), request.output,
                                      error)
               ? 0
               : Fail(error);
  }
  if (request.format == "pdf") {
    const print::PdfExportResult pdf =
        print::ExportPdf(nullptr, std::string(text), print::PageStyleFromSettings(settings::gSettings), request.output);
    return pdf.ok ? 0 : Fail(pdf.error);
  }
  StyledDocument doc;
  std::string error;
  if (!StyleInHiddenEditor(request.input, text, doc, error)) return Fail(error);
  loaded.text = document::TextBuffer();  // the styled copy is what the generators read
  const appearance::ThemeColors& theme = appearance::GetThemeColors();
  const exports::StyledText styled{doc.text, doc.styles};
  if (request.format == "html") {
    exports::HtmlExportInput input;
    input.document = styled;
    input.styles = doc.table;
    input.pageBackground = theme.editorBackground;
    input.title = exports::ExportTitle(request.input);
    input.fontName = fontName;
    input.lineCount = doc.lineCount;
    result = exports::ExportHtmlToFile(input, request.output);
    return result == exports::ExportResult::Ok ? 0 : Fail(ResultMessage(result, "HTML"));
  }
  exports::RtfExportInput input;
  input.document = styled;
  input.styles = doc.table;
  input.darkTheme = theme.isDark;
  input.fontName = fontName;
  input.fontSize = settings::gSettings.fontSize;
  input.lineCount = doc.lineCount;
  result = exports::ExportRtfToFile(input, request.output);
  return result == exports::ExportResult::Ok ? 0 : Fail(result == exports::ExportResult::CannotCreate ? std::string(exports::kRtfCannotCreate)
                                                                                    : std::string(exports::kRtfWriteError));
}

}  // namespace nebro::app
