#include "export/export_rules.h"

#include <cstdio>

namespace nebro::exports {
namespace {

constexpr const char* kPdfPatterns[] = {"*.pdf"};
constexpr const char* kHtmlPatterns[] = {"*.html", "*.htm"};
constexpr const char* kRtfPatterns[] = {"*.rtf"};
constexpr const char* kTextPatterns[] = {"*.txt"};

const ExportFormat kFormats[] = {
    {kExportPdf, "PDF Document (*.pdf)", "Portable Document Format - best for printing and sharing",
     ".pdf", "PDF Files", kPdfPatterns},
    {kExportHtml, "HTML Document (*.html)", "HyperText Markup Language - view in web browser",
     ".html", "HTML Files", kHtmlPatterns},
    {kExportRtf, "Rich Text Format (*.rtf)", "Rich Text Format - opens in Word, LibreOffice",
     ".rtf", "RTF Files", kRtfPatterns},
    {kExportPlainText, "Plain Text (*.txt)", "Simple UTF-8 text file", ".txt", "Text Files",
     kTextPatterns},
};

// Every question holds exactly one %d, the line count.
constexpr ExportThreshold kThresholds[] = {
    {kExportHtml, true, 30000,
     "This Markdown file has ~%d lines.\n\nRendered MD HTML would be very slow for this size.\n"
     "Open as plain text in Nebro Viewer instead?"},
    {kExportHtml, false, 20000,
     "This file has ~%d lines.\n\nHTML export would be slow for this size.\n"
     "Open as plain text in Nebro Viewer instead?"},
    {kExportPdf, true, 30000,
     "This Markdown file has ~%d lines.\n\nRendered MD PDF would be too slow for this size.\n"
     "Open as plain text in Nebro Viewer instead?"},
    {kExportPdf, false, 10000,
     "This file has ~%d lines.\n\nPDF export would be very slow for this size.\n"
     "Open as plain text in Nebro Viewer instead?"},
    {kExportRtf, true, 50000,
     "This file has ~%d lines.\n\nRTF export would be very slow for this size.\n"
     "Open as plain text in Nebro Viewer instead?"},
    {kExportRtf, false, 50000,
     "This file has ~%d lines.\n\nRTF export would be very slow for this size.\n"
     "Open as plain text in Nebro Viewer instead?"},
};

const ExportThreshold* FindThreshold(int32_t format, bool markdown) {
  for (const ExportThreshold& row : kThresholds)
    if (row.format == format && row.markdown == markdown) return &row;
  return nullptr;
}

char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::string_view FileNameOf(std::string_view path) {
  const size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

}  // namespace

std::span<const ExportFormat> ExportFormats() { return kFormats; }

const ExportFormat* FindExportFormat(int32_t id) {
  for (const ExportFormat& row : kFormats)
    if (row.id == id) return &row;
  return nullptr;
}

bool IsMarkdownPath(std::string_view path) {
  if (path.size() < 3) return false;
  const std::string_view tail = path.substr(path.size() - 3);
  return tail[0] == '.' && LowerAscii(tail[1]) == 'm' && LowerAscii(tail[2]) == 'd';
}

std::string ExportTitle(std::string_view documentPath) {
  if (documentPath.empty()) return "Untitled";
  return std::string(FileNameOf(documentPath));
}

std::string ExportInitialFileName(std::string_view documentPath, std::string_view extension) {
  if (documentPath.empty()) return {};
  std::string_view name = FileNameOf(documentPath);
  const size_t dot = name.rfind('.');
  if (dot != std::string_view::npos) name = name.substr(0, dot);
  std::string result(name);
  result += extension;
  return result;
}

std::span<const ExportThreshold> ExportThresholds() { return kThresholds; }

std::optional<std::string> ViewerOfferQuestion(int32_t format, bool markdown, int32_t lineCount) {
  const ExportThreshold* row = FindThreshold(format, markdown);
  if (!row || lineCount <= row->maxLines) return std::nullopt;
  char text[256];
  std::snprintf(text, sizeof text, row->question, lineCount);
  return std::string(text);
}

std::optional<std::string> HtmlSizeQuestion(int64_t textLength, int32_t lineCount) {
  char text[256];
  if (textLength > 10000000) {
    std::snprintf(text, sizeof text,
                  "This file is very large (~%d MB, ~%d lines).\nHTML export may take several "
                  "minutes.\n\nContinue?",
                  static_cast<int>(textLength / 1000000), lineCount);
    return std::string(text);
  }
  if (textLength > 1000000) {
    std::snprintf(text, sizeof text, "This file has ~%d lines. Export may take a while.\n\nContinue?",
                  lineCount);
    return std::string(text);
  }
  return std::nullopt;
}

int32_t ProgressStep(int64_t lineCount) {
  if (lineCount <= 1000) return 50;
  return static_cast<int32_t>(lineCount / 100);
}

std::string ProgressStatusText(uint32_t line, int32_t total) {
  if (line == kProgressFinalizing) return std::string(kStatusFinalizing);
  const unsigned long long percent =
      total > 0 ? static_cast<unsigned long long>(line) * 100 / static_cast<unsigned long long>(total) : 0;
  char text[96];
  std::snprintf(text, sizeof text, "Exporting line %u of %d  (%llu%%)", line, total, percent);
  return text;
}

std::string ElapsedTimeText(uint64_t milliseconds) {
  const unsigned long long ms = milliseconds;
  const unsigned long long seconds = ms / 1000;
  char text[64];
  if (seconds < 3600) {
    const unsigned long long minutes = (ms / 60000) % 60;
    if (minutes != 0)
      std::snprintf(text, sizeof text, "%llu:%02llu min", minutes, seconds % 60);
    else
      std::snprintf(text, sizeof text, "%llu.%03llu sec", seconds, ms % 1000);
  } else {
    std::snprintf(text, sizeof text, "%llu:%02llu:%02llu", seconds / 3600, (seconds / 60) % 60,
                  seconds % 60);
  }
  return text;
}

std::string HtmlDoneQuestion(uint64_t milliseconds) {
  return "HTML exported successfully.\n\nExport time:  " + ElapsedTimeText(milliseconds) +
         "\n\nOpen in browser?";
}

}  // namespace nebro::exports
