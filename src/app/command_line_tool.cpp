#include "app/command_line_tool.h"

namespace nebro::app {

ToolRequest ParseToolRequest(const std::vector<std::string>& args) {
  ToolRequest r;
  if (args.size() < 2) return r;
  const std::string& first = args[1];
  if (first == "--help" || first == "-h") {
    r.command = ToolCommand::Help;
    return r;
  }
  if (first == "--version") {
    r.command = ToolCommand::Version;
    return r;
  }
  if (first != "--export") return r;
  if (args.size() != 5) {
    r.command = ToolCommand::UsageError;
    r.error = "--export needs FORMAT INPUT OUTPUT";
    return r;
  }
  r.format = args[2];
  r.input = args[3];
  r.output = args[4];
  if (r.format != "html" && r.format != "pdf" && r.format != "rtf" && r.format != "txt") {
    r.command = ToolCommand::UsageError;
    r.error = "unknown export format \"" + r.format + "\" (use html, pdf, rtf or txt)";
    return r;
  }
  r.command = ToolCommand::Export;
  return r;
}

const char* UsageText() {
  return "Usage: nebro [FILE]\n"
         "       nebro --viewer FILE\n"
         "       nebro --export FORMAT INPUT OUTPUT\n"
         "       nebro --version\n"
         "       nebro --help\n"
         "\n"
         "Nebro is a themed text editor. Without options it edits FILE, or the file that was\n"
         "open when it was last closed.\n"
         "\n"
         "  --viewer FILE        show FILE in the read-only viewer\n"
         "  --export FORMAT INPUT OUTPUT\n"
         "                       write INPUT to OUTPUT as FORMAT and exit: html (syntax-coloured\n"
         "                       page; a Markdown INPUT is rendered as a page), pdf (the\n"
         "                       printed pages, with the page setup of the settings; a Markdown\n"
         "                       INPUT is its rendered page on that paper), rtf or txt.\n"
         "                       INPUT is read as the editor reads files (binary files are\n"
         "                       refused, UTF-16 is converted) and coloured with the theme of\n"
         "                       the settings. It needs a display; on a machine without one,\n"
         "                       run it as: xvfb-run -a nebro --export ...\n"
         "  --version            show the version of nebro and which Scintilla and Lexilla\n"
         "                       libraries it loads (and the packages they came from)\n"
         "  -h, --help           show this text\n"
         "\n"
         "Exit status: 0 on success, 1 when the export failed, 2 for wrong options.\n";
}

std::string OneLine(const std::string& text) {
  std::string out;
  for (char c : text) {
    if (c == '\n' || c == '\r') {
      if (!out.empty() && out.back() != ' ') out.push_back(' ');
    } else {
      out.push_back(c);
    }
  }
  while (!out.empty() && out.back() == ' ') out.pop_back();
  return out;
}

}  // namespace nebro::app
