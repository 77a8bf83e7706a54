#include "help/help_topics.h"

#include "appearance/languages.h"
#include "appearance/style_maps.h"
#include "appearance/themes.h"

#ifndef NEBRO_VERSION
#define NEBRO_VERSION "unknown"
#endif

namespace nebro::help {
namespace {

const char* const kGettingStarted = R"(= The window
Nebro edits one document at a time. Across the top is the toolbar: New, Open, Save (active while there are unsaved changes), Export, Settings and Help. The line numbers run down the left. The status bar at the bottom shows the caret's line and column, the size of the selection in characters, the file's encoding, its line endings and the zoom (Ctrl+mouse wheel).

The title shows the file's name, followed by a * while there are unsaved changes.

= Opening and saving
Open a file with Open (Ctrl+O), by dropping it on the window, from Recent Files in the right-click menu, or by naming it on the command line (nebro FILE). Started without a file, Nebro reopens the file that was open when it was last closed.

Save (Ctrl+S) writes the open file; Save As (Ctrl+Shift+S) writes the text under a new name, which then becomes the open document. An untitled document is saved with Save As.

Whenever a document would be replaced or the window closed, Nebro asks before unsaved changes are lost (Save, Don't Save, Cancel). When the open file is deleted, moved or renamed by another program, Nebro notices the next time its window becomes active and offers to save the text back to its place.

= The right-click menu
A right click in the text (or the Menu key, or Shift+F10) opens a menu with Undo, Redo, Cut, Copy, Paste, Select All, Find & Replace, Regex Search, Font, View (line numbers and word wrap), Print (Page Setup, Print Preview, Print), MD Preview (HTML), the six themes, window transparency, Save, Save As, the ten most recent files, New and Open.

A recent file that no longer exists is marked with a crossed circle. Each entry can be opened or removed from the list; Clear All empties it.

= Settings
Settings (toolbar) chooses the theme, the window's transparency (0 to 50 per cent), line numbers, word wrap, auto-save and the typewriter sounds. Auto-save saves a named document at the chosen interval (1, 5, 10, 30 or 60 minutes); an untitled document is never auto-saved.

Everything Nebro remembers is kept in one file, ~/.config/Nebro/nebro.cfg (or $XDG_CONFIG_HOME/Nebro/nebro.cfg). To start afresh, delete that folder.

= Nebro Viewer
nebro --viewer FILE opens FILE read-only in a quiet reading look (a serif font on paper colour, word wrap, no highlighting). Nebro also offers the viewer when a document is too large to export or preview.

= This window
Choose a topic on the left. The text can be selected and copied with Ctrl+C. Escape closes the window; F1 or the Help button brings it back with the topic you last read.)";

const char* const kShortcutsIntro = R"(These keys work in the main window. The list is made from the editor's own command table, so it always matches the keys the editor binds.

= Commands
)";

const char* const kShortcutsMore = R"(
= Also
Ctrl+mouse wheel	zoom the text in or out
Ctrl+keypad + / -	zoom in / out
Ctrl+keypad /	zoom back to 100%
Menu, Shift+F10	the right-click menu
Escape	closes this window, the print preview and the tool windows
Page Up/Down, arrow keys	turn pages in the print preview

The editor also has the usual text keys: arrows, Home and End, Ctrl+Home and Ctrl+End for the start and end of the text, and Shift with any of them to select.)";

const char* const kThemesIntro = R"(Nebro has six colour themes. Choose one from Theme in the right-click menu or in Settings; the choice is saved at once and kept for the next start.

)";

const char* const kThemesMore = R"(
= What a theme colours
The theme colours the text and its background, the syntax colours (keywords, comments, strings, numbers, preprocessor lines, operators), the line numbers, the toolbar and status bar, the message boxes and Nebro's own windows, this one included. Open windows change with the theme at once.

Exports take the theme too: HTML pages and rendered Markdown use its colours; RTF keeps the syntax colours but darkens very light ones so that the text stays readable on white paper. Printed pages, and PDF files of documents other than Markdown, are black text on white paper.

Nebro Viewer keeps its own paper-coloured reading look whatever the theme.

= Transparency
Transparency (right-click menu or Settings) lets the desktop show through the main window: 10, 20, 30, 40 or 50 per cent. It needs a desktop that composites windows; without one the window stays opaque.)";

const char* const kFileFormats = R"(= Reading
Nebro reads text files in UTF-8, with or without a byte-order mark, and in UTF-16 little- or big-endian with a byte-order mark (UTF-16 is turned into UTF-8 in the editor). The status bar shows which: UTF-8, UTF-8 BOM, UTF-16 LE or UTF-16 BE.

A file without a byte-order mark is taken as UTF-8 as it stands, without checking. A file in another encoding (Windows-1252, ISO-8859-1 and the like) opens, but its accented and other non-ASCII characters show wrongly. UTF-16 without a byte-order mark is not recognised.

= Binary files are refused
Nebro does not open files that look binary ("Cannot open binary file."):
• files that start like a PDF, program (MZ, ELF), ZIP archive or ZIP-based document, PNG, JPEG, GIF or BMP picture, old Office document or RIFF file (WAV, AVI, WebP);
• files with more than two NUL bytes, or more than five control characters other than tab and line breaks, in their first 1,024 bytes.
A plain-text file that happens to begin with MZ, PK or BM is refused too.

= Line endings
Each file keeps its own line endings: Nebro finds whether it uses CRLF (Windows), LF (Linux, macOS) or CR (old Mac), shows it in the status bar and uses it for new lines. If the file holds any CR and any LF, it counts as CRLF. Mixed endings are kept exactly as they are; nothing is converted. A new document uses LF.

= Saving
Nebro always saves UTF-8. A byte-order mark is written only when the file had one; a UTF-16 file becomes UTF-8 when it is saved, and the status bar then says so.

Saving never loses the old file: the text goes to a temporary file beside it, which is flushed and only then put in the file's place (keeping its permissions and following symbolic links). When a save fails (disk full, no permission), Nebro says "Cannot save file." with the reason, the document stays marked as modified, and the file on disk keeps its previous content.

= Large files
Large files load with a progress window while the editor stays responsive; Cancel (or Escape) stops the load and keeps the document you had. A file larger than about a third of the computer's memory is refused with a message instead of being read partly.

= Locking
While a file is open, Nebro holds a lock on it: a second Nebro opening the same file is told "File is already open by another program." A file you may not write opens read-only and is not locked.)";

const char* const kExportAndPrint = R"(= Export
Export (toolbar) writes the document in one of four formats:
PDF Document	the pages as they are printed; a Markdown file as its rendered page
HTML Document	a web page with the editor's colours and line numbers; a Markdown file as its rendered page
Rich Text Format	for word processors, in the editor font, with the syntax colours, bold and italic
Plain Text	the text exactly as the editor holds it: UTF-8, line endings unchanged

HTML, RTF and plain text first ask where to save. Exports that take a while run with a progress window that you can cancel. HTML export tells how long it took and offers to open the page in your browser.

Very long documents would be slow to export, so above these sizes Nebro offers to open the text in the read-only Nebro Viewer instead:
HTML	20,000 lines (a Markdown file: 30,000)
PDF	10,000 lines (a Markdown file: 30,000)
RTF	50,000 lines
Plain text	no limit

= Exporting from the command line
nebro --export html notes.cpp notes.html
nebro --export rtf notes.cpp notes.rtf
nebro --export txt notes.txt copy.txt
nebro --export pdf notes.cpp notes.pdf
The input is read as the editor reads files and coloured in the theme stored in the settings. The exit status is 0 on success, 1 when the export failed and 2 for wrong options; a failed export leaves no partial file behind.

= Print
Print (Ctrl+P, or Print in the right-click menu) prints through the system's print dialog: the text in the editor font, black on white, long lines wrapped at word breaks, and the page number centred at the foot of every page ("- 1 -"). An empty document is not printed.

Page Setup chooses the paper and the margins (A4 with 15 mm margins at first); they are kept in the settings. Print Preview shows the pages first: Prev, Next, Print and Close, Page Up/Down and the arrow keys turn pages, Escape closes it. The preview, printing and PDF export lay out the pages in exactly the same way.)";

const char* const kMarkdown = R"(= Preview
MD Preview (HTML) in the right-click menu renders the open Markdown document into a web page in the current theme's colours and opens it in your default browser. It is offered for files whose name ends in .md (in any case). The page is a temporary file in Nebro's settings folder, deleted a day later. When no browser can be started, Nebro Viewer shows the document instead. A document of more than 30,000 lines would be slow to render, so Nebro offers to open it as plain text in Nebro Viewer.

Export writes the same rendered page to a file you choose (HTML), or prints it to a PDF file.

= What the renderer understands
Nebro's Markdown is small and reads line by line: every line is judged on its own.
# Title	heading, level 1 (## and ### for levels 2 and 3)
- item  or  * item	bullet list
1. item	numbered list (one or two digits; the page numbers the items from 1)
> text	quotation
---  ***  ___	horizontal rule (exactly three characters)
**bold**	bold
*italic*  or  _italic_	italic
`code`	code

= What it does not understand
Links, images, tables, fenced code blocks (```), nested lists (indentation is dropped, so every item is top-level), headings below level 3 (#### stays as text), a heading without a blank after its hashes (#Title), and bold italic (***x***). These come out as plain paragraphs.

Lines are not joined into paragraphs: each line is its own paragraph, and each blank line adds an empty one. An underscore inside a word starts italics (snake_case_name). Unclosed markers are closed at the end of their line.

= Fonts
The page uses the editor font when it is a proportional one. With a monospace editor font (Consolas, Courier New, Cascadia Code, Fira Code and the like) the page uses Segoe UI at 10 points, or the font your system puts in its place.)";

const char* const kRegex = R"(= Where
Regex Search (Ctrl+Alt+H; its menu entry names Ctrl+Shift+H) searches the document with regular expressions: Find / Next, Find Prev, Replace (the selection, when it matches the pattern), Find All, Replace All and Open Results. Find & Replace (Ctrl+F or Ctrl+H) searches for plain text only.

Find All runs in the background in batches ("Batch size", 3,000 matches at first) up to "Max matches" (10,000 at first; 0 = unlimited), with a progress bar and a list of results; Find More continues where it stopped, Cancel stops it. Every match also goes to a results file, which Open Results opens: regex_DATE_TIME.txt in Nebro's settings folder, deleted after seven days. Replace All is one step to undo.

= The syntax
Patterns are written as in JavaScript (ECMAScript) and run by the PCRE2 engine over the text.
.	any character except a line break
\d  \w  \s	a digit, a word character [A-Za-z0-9_], white space (ASCII only)
\D  \W  \S	anything else
\b  \B	a word boundary, and not one
^  $	the start and the end of the text (see below)
[abc]  [^abc]  [a-z]	a character class; [] matches nothing, [^] any character
*  +  ?  {n}  {n,}  {n,m}	repeat; add ? to take as little as possible (*?, +?)
( )	a group, captured and numbered from 1
(?: )	a group that is not captured
(?<name> )  \k<name>	a named group and a reference to it
\1 to \9	the text of a group again (empty when the group took no part)
a|b	either
(?= )  (?! )	followed by, not followed by
(?<= )  (?<! )	preceded by, not preceded by
\t  \n  \r  \v  \f	tab, line feed, carriage return, vertical tab, form feed
\xHH  \uHHHH  \u{H...}	a character by its code (\x takes exactly two hex digits)
\.  \*  \(  \\	a special character taken as it is

= Options and replacements
Match case off: letters match in either case, beyond ASCII too (É finds é).
Whole word: the pattern is searched as \b(?:pattern)\b.
Preserve case: a match in capitals gives the replacement in capitals, a match in small letters gives it in small letters, a match that starts with a capital gives it a capital first letter. A match without letters counts as capitals.
In the replacement, $1 to $9 insert a group (nothing when it took no part), $0 and $& the whole match; any other $ stays as it is. There is no $$.

= How it differs from what you may know
• \w, \d, \s and \b know only ASCII: "café" holds the word "caf", \s does not match the no-break space, and Whole word does not find a word that begins or ends with a non-ASCII letter. Unicode classes work: \p{L} is any letter, \p{Lu} a capital, \p{Greek} a Greek character. [[:alpha:]] and the other POSIX classes are ASCII only.
• . stops at LF, CR, U+2028 and U+2029, as in JavaScript, and also at vertical tab, form feed and U+0085, unlike JavaScript. [^] or [\s\S] take any character.
• ^ and $ mean the start and end of the whole text, not of a line; add (?m) at the start of the pattern to have them match at every line. Find All and Find / Next start each search at a place (the end of the last match, or the caret) that counts as the start of the text, so ^a over "aaa" finds three matches. Replace All and Find Prev go through the text in one pass, where ^ matches only at the very start.
• Lookbehind works, which the regular expressions of C++ do not offer; each of its alternatives must have a fixed length.
• Some PCRE2 additions work too: inline options (?i), (?m), (?s), (?x); atomic groups (?> ); possessive repeats (a++); \K. JavaScript's flags (/g, /i, /m, /u) are not written in the pattern: use Match case, or (?i).
• \C is not allowed.
• A pattern the engine cannot finish in reasonable time or memory (such as (a+)+$ over a long run of a's) stops the search with "Pattern too complex; search stopped." instead of hanging. A pattern that does not compile gives "Invalid regex pattern.".
• Positions count UTF-16 units, so a character outside the Basic Multilingual Plane (most emoji) counts as two. In the result list, "Col" is such a position from the start of the document, not the column in the line.
• Line numbers count LF characters: in a file with CR-only line endings every match is on line 1.
• The result list is filled only while "Color results" is on; the results file gets every match either way.)";

const char* const kSyntaxIntro = R"(Highlighting is applied automatically based on the file extension. The language is chosen again when a file is saved under a new name.

= Coloured
)";

const char* const kSyntaxMore = R"(
Keywords, comments, strings, numbers, preprocessor lines and operators take the syntax colours of the theme; keywords and tags are bold and comments italic in most languages. In Markdown, headings, bold, italic, code, lists, quotations and links have their own looks.

Languages not listed above open as plain text with no highlighting. Folding is not offered.)";

const char* const kLimitsIntro = R"(= Documents
• One document at a time: no tabs and no split view.
• Files in encodings other than UTF-8 and UTF-16 with a byte-order mark show their non-ASCII characters wrongly, and UTF-16 without a byte-order mark is not recognised. Nebro always saves UTF-8.
• Text files that begin with MZ, PK or BM, or that hold a few control characters near their start, are refused as binary.
• Line endings are never converted; a file with mixed endings keeps them all.
• With word wrap on, the line numbers and the status bar's "Ln" count screen rows: each wrapped row gets its own number.
• A stored auto-save interval takes effect only once the Settings window has been confirmed with OK since Nebro started.

= Search, Markdown and export
• Regular expressions know only ASCII for \w, \d, \s and \b, and "Col" in the regex result list is a position in the whole document (see Regular expressions).
• The regex result list is filled only while "Color results" is on.
• The Markdown renderer is deliberately small: no links, images, tables or code blocks (see Markdown preview). Only .md files are previewed and rendered; a .markdown file is highlighted but exported as ordinary text.
• Printing, and the PDF export of documents other than Markdown, are black and white, without syntax colours.
• Large documents are offered to Nebro Viewer instead of being exported (see Export and print).
)";

const char* const kAboutIntro = R"(A themed text editor for Linux desktops, built on GTK 3 and the Scintilla editing component with the Lexilla lexers.

= Components and their licences
Scintilla and Lexilla: Copyright 1998 and later, Neil Hodgson. Nebro loads them when it starts (libscintilla.so and liblexilla.so) from Debian's scite package. They are distributed under the License for Scintilla and SciTE:

Permission to use, copy, modify, and distribute this software and its documentation for any purpose and without fee is hereby granted, provided that the above copyright notice appear in all copies and that both that copyright notice and this permission notice appear in supporting documentation.

NEIL HODGSON DISCLAIMS ALL WARRANTIES WITH REGARD TO THIS SOFTWARE, INCLUDING ALL IMPLIED WARRANTIES OF MERCHANTABILITY AND FITNESS, IN NO EVENT SHALL NEIL HODGSON BE LIABLE FOR ANY SPECIAL, INDIRECT OR CONSEQUENTIAL DAMAGES OR ANY DAMAGES WHATSOEVER RESULTING FROM LOSS OF USE, DATA OR PROFITS, WHETHER IN AN ACTION OF CONTRACT, NEGLIGENCE OR OTHER TORTIOUS ACTION, ARISING OUT OF OR IN CONNECTION WITH THE USE OR PERFORMANCE OF THIS SOFTWARE.

GTK: the GTK toolkit, by the GTK Team, under the GNU Lesser General Public License, version 2.1 or (at your option) any later version.

PCRE2: regular expressions by Philip Hazel, Copyright University of Cambridge, under the BSD licence with the exception for binary library-like packages.

The full licence texts are installed with these packages, in /usr/share/doc/scite, /usr/share/doc/libgtk-3-0 and /usr/share/doc/libpcre2-16-0.)";

// One two-column row of the markup.
std::string Row(const std::string& keys, const std::string& what) { return keys + "\t" + what + "\n"; }

std::string ShortcutsText(const CommandTable& commands) {
  std::string text = kShortcutsIntro;
  std::string later;
  // The key list holds the rows that have keys, in table order: walk them side by side to know
  // which commands have their window.
  const std::vector<KeyListEntry> list = CommandKeyList(commands);
  size_t next = 0;
  for (const Command& c : commands.rows) {
    if (c.keys.empty() || next >= list.size()) continue;
    const KeyListEntry& entry = list[next++];
    if (c.run) text += Row(entry.keys, entry.label);
    else later += Row(entry.keys, entry.label + " (not available in this version)");
  }
  return text + later + kShortcutsMore;
}

std::string ThemesText() {
  // The words for each theme, in theme order. Azure and Green are light themes.
  static const char* const kWords[appearance::kThemeCount] = {
      "Dark background, light text. Easy on the eyes.", "Classic white background.",
      "Blue-tinted light theme.",                        "Green-tinted light theme.",
      "Deep dark with muted colours.",                   "Warm paper-like background."};
  std::string text = kThemesIntro;
  for (appearance::ThemeId id = 0; id < appearance::kThemeCount; ++id) text += Row(appearance::ThemeName(id), kWords[id]);
  return text + kThemesMore;
}

std::string SyntaxText() {
  struct Language {
    appearance::LanguageId id;
    const char* names;
  };
  static const Language kLanguages[] = {
      {appearance::kLangCpp, "C, C++, C#, JavaScript, TypeScript"},
      {appearance::kLangPython, "Python"},
      {appearance::kLangHtml, "HTML, PHP, ASP"},
      {appearance::kLangXml, "XML, XAML, SVG, XSLT, XML Schema"},
      {appearance::kLangCss, "CSS, SCSS, Less"},
      {appearance::kLangBatch, "Windows batch"},
      {appearance::kLangMarkdown, "Markdown"},
      {appearance::kLangJson, "JSON"},
      {appearance::kLangLua, "Lua"},
      {appearance::kLangSql, "SQL"},
  };
  auto line = [](const Language& l) {
    std::string extensions;
    for (const std::string& e : appearance::LanguageExtensions(l.id)) extensions += (extensions.empty() ? "." : "  .") + e;
    return std::string("• ") + l.names + ": " + extensions + "\n";
  };
  std::string coloured, plain;
  for (const Language& l : kLanguages) (appearance::StyleMapFor(l.id).empty() ? plain : coloured) += line(l);
  return kSyntaxIntro + coloured +
         "\n= Recognised, in the plain text colours\nThese files get their language's lexer, but Nebro has no colours "
         "for its parts yet, so they show in the text colour of the theme:\n" +
         plain + kSyntaxMore;
}

std::string LimitsText(const CommandTable& commands) {
  std::string text = kLimitsIntro;
  std::string missing;
  for (const Command& c : commands.rows) {
    if (!c.run) missing += (missing.empty() ? "" : ", ") + c.label;
  }
  if (!missing.empty()) {
    text += "\n= Not in this version\nThese commands are greyed in the menus and on the toolbar, with a tooltip saying so: " +
            missing + ".\n";
  }
  return text;
}

}  // namespace

std::vector<HelpTopic> HelpTopics(const CommandTable& commands) {
  return {
      {"Getting started", kGettingStarted},
      {"Keyboard shortcuts", ShortcutsText(commands)},
      {"Themes", ThemesText()},
      {"File formats and encodings", kFileFormats},
      {"Export and print", kExportAndPrint},
      {"Markdown preview", kMarkdown},
      {"Regular expressions", kRegex},
      {"Syntax highlighting", SyntaxText()},
      {"Known limitations", LimitsText(commands)},
      {"About Nebro", std::string("= Nebro ") + ProgramVersion() + "\n" + kAboutIntro},
  };
}

int HelpTopicIndex(int32_t stored) { return stored >= 0 && stored < kHelpTopicCount ? stored : 0; }

HelpSize HelpWindowSize(int32_t storedWidth, int32_t storedHeight) {
  if (storedWidth <= 0 || storedHeight <= 0) return {kHelpDefaultWidth, kHelpDefaultHeight};
  return {storedWidth < kHelpMinWidth ? kHelpMinWidth : storedWidth,
          storedHeight < kHelpMinHeight ? kHelpMinHeight : storedHeight};
}

const char* ProgramVersion() { return NEBRO_VERSION; }

}  // namespace nebro::help
