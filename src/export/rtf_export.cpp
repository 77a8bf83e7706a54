#include "export/rtf_export.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

#include "export/byte_writer.h"
#include "export/export_rules.h"

namespace nebro {
namespace {

enum ByteClass : uint8_t { kCopy, kBackslash, kBrace, kCr, kLf, kTab, kHigh };

constexpr std::array<uint8_t, 256> MakeClasses() {
  std::array<uint8_t, 256> table{};
  for (int c = 0x80; c < 256; ++c) table[c] = kHigh;
  table['\\'] = kBackslash;
  table['{'] = kBrace;
  table['}'] = kBrace;
  table['\r'] = kCr;
  table['\n'] = kLf;
  table['\t'] = kTab;
  return table;
}

constexpr std::array<uint8_t, 256> kClasses = MakeClasses();
// The longest text one input byte turns into: "\par\r\n".
constexpr size_t kLongestPerByte = 6;
constexpr size_t kBlock = 64 * 1024;

// What opens and closes the group of a run in one style.
struct RunFrame {
  std::string open;
  std::string close;
};

std::string FontNameForRtf(const std::string& name) {
  size_t cut = std::min<size_t>(name.size(), 127);
  while (cut > 0 && cut < name.size() && (static_cast<unsigned char>(name[cut]) & 0xC0) == 0x80)
    --cut;
  return name.substr(0, cut);
}

ExportResult Fail(ExportBytes& out, ExportResult result) {
  out.release();
  return result;
}

}  // namespace

Colour RtfPaperColour(Colour colour, bool darkTheme) {
  if (!darkTheme) return colour;
  const unsigned r = RedOf(colour), g = GreenOf(colour), b = BlueOf(colour);
  const float brightness = 0.299f * static_cast<float>(r) + 0.587f * static_cast<float>(g) +
                           0.114f * static_cast<float>(b);
  if (static_cast<int>(brightness) <= 180) return colour;
  return Rgb(r * 35 / 100, g * 35 / 100, b * 35 / 100);
}

ExportResult BuildRtf(const RtfExportInput& in, ExportBytes& out, const ExportMonitor& monitor) {
  out.clear();
  const std::string_view text = in.document.text;
  if (in.document.styles.size() != text.size()) return Fail(out, ExportResult::BadInput);
  const size_t len = text.size();
  if (len > (SIZE_MAX - 4096) / 2 || !out.Reserve(2 * len + 4096))
    return Fail(out, ExportResult::OutOfMemory);

  // The colour table lists each distinct paper colour once, in the order styles 0..127 first
  // use it; index 0 is RTF's automatic colour, so the list starts at 1.
  std::vector<Colour> colours;
  std::array<RunFrame, kExportStyleCount> frames;
  for (int n = 0; n < kExportStyleCount; ++n) {
    const ExportStyle& style = in.styles[n];
    const Colour paper = RtfPaperColour(style.fore, in.darkTheme);
    auto found = std::find(colours.begin(), colours.end(), paper);
    if (found == colours.end()) found = colours.insert(colours.end(), paper);
    const long index = found - colours.begin() + 1;
    RunFrame& frame = frames[n];
    frame.open = "{\\cf" + std::to_string(index) + " ";
    if (style.bold) frame.open += "\\b ";
    if (style.italic) frame.open += "\\i ";
    if (style.bold) frame.close += "\\b0 ";
    if (style.italic) frame.close += "\\i0 ";
    frame.close += "}";
  }

  std::string head = "{\\rtf1\\ansi\\ansicpg1252\\deff0\\nouicompat\r\n";
  head += "{\\fonttbl{\\f0\\fmodern\\fcharset0 " + FontNameForRtf(in.fontName) + ";}}\r\n";
  head += "{\\colortbl ;";
  for (Colour c : colours) {
    char entry[48];
    std::snprintf(entry, sizeof entry, "\\red%u\\green%u\\blue%u;", RedOf(c), GreenOf(c), BlueOf(c));
    head += entry;
  }
  head += "}\r\n\\viewkind4\\uc1\\pard\\sl0\\slmult0";
  head += "\\f0\\fs" + std::to_string(2 * static_cast<long long>(in.fontSize)) + " ";

  ByteWriter w(out);
  if (!w.Append(head)) return Fail(out, ExportResult::OutOfMemory);

  const char* t = text.data();
  const auto* styles = reinterpret_cast<const unsigned char*>(in.document.styles.data());
  const int32_t step = ProgressStep(in.lineCount);
  int32_t untilProgress = 0;
  int64_t line = 0;
  // Asked before each text line, the first one included.
  auto lineStarts = [&]() {
    if (monitor.isCancelled && monitor.isCancelled()) return false;
    if (untilProgress == 0) {
      if (monitor.onProgress) monitor.onProgress(static_cast<uint32_t>(line + 1));
      untilProgress = step;
    }
    --untilProgress;
    return true;
  };
  if (!lineStarts()) return Fail(out, ExportResult::Cancelled);

  auto styleAt = [styles](size_t i) -> unsigned { return styles[i] < 128 ? styles[i] : 0; };
  size_t i = 0;
  while (i < len) {
    const unsigned style = styleAt(i);
    size_t runEnd = i + 1;
    while (runEnd < len && styleAt(runEnd) == style) ++runEnd;

    const RunFrame& frame = frames[style];
    if (!w.Append(frame.open)) return Fail(out, ExportResult::OutOfMemory);
    while (i < runEnd) {
      const size_t blockEnd = std::min(runEnd, i + kBlock);
      // A UTF-8 sequence may reach past the block's end by three bytes and write nine.
      if (!w.Room((blockEnd - i) * kLongestPerByte + 16)) return Fail(out, ExportResult::OutOfMemory);
      char* p = w.cursor();
      while (i < blockEnd) {
        const unsigned char c = static_cast<unsigned char>(t[i]);
        switch (kClasses[c]) {
          case kCopy:
            *p++ = static_cast<char>(c);
            break;
          case kBackslash:
          case kBrace:
            *p++ = '\\';
            *p++ = static_cast<char>(c);
            break;
          case kCr:
            break;
          case kTab:
            std::memcpy(p, "\\tab ", 5);
            p += 5;
            break;
          case kLf:
            std::memcpy(p, "\\par\r\n", 6);
            p += 6;
            ++line;
            w.cursor() = p;
            if (!lineStarts()) return Fail(out, ExportResult::Cancelled);
            break;
          case kHigh: {
            int need;
            char32_t cp;
            if ((c & 0xE0) == 0xC0) {
              need = 1;
              cp = c & 0x1F;
            } else if ((c & 0xF0) == 0xE0) {
              need = 2;
              cp = c & 0x0F;
            } else if ((c & 0xF8) == 0xF0) {
              need = 3;
              cp = c & 0x07;
            } else {
              *p++ = '?';  // a continuation byte or an impossible lead byte
              break;
            }
            // Only continuation bytes of the same run belong to the character; a sequence cut
            // short by the run's end or by another byte comes out as one "?".
            int got = 0;
            while (got < need && i + 1 < runEnd &&
                   (static_cast<unsigned char>(t[i + 1]) & 0xC0) == 0x80) {
              cp = (cp << 6) | (static_cast<unsigned char>(t[i + 1]) & 0x3F);
              ++i;
              ++got;
            }
            if (got < need || cp >= 0x10000) {
              *p++ = '?';
            } else {
              // RTF reads \u's number as a signed 16-bit value; "?" is the fallback character.
              std::memcpy(p, "\\u", 2);
              p = std::to_chars(p + 2, p + 10, static_cast<int16_t>(cp)).ptr;
              *p++ = '?';
            }
            break;
          }
        }
        ++i;
      }
      w.cursor() = p;
    }
    if (!w.Append(frame.close)) return Fail(out, ExportResult::OutOfMemory);
  }

  if (!w.Append("\r\n}\r\n")) return Fail(out, ExportResult::OutOfMemory);
  w.Commit();
  return ExportResult::Ok;
}

ExportResult ExportRtfToFile(const RtfExportInput& input, const std::string& path,
                             const ExportMonitor& monitor) {
  ExportBytes rtf;
  const ExportResult built = BuildRtf(input, rtf, monitor);
  if (built != ExportResult::Ok) return built;
  return WriteExportFile(path, rtf.view());
}

std::string RtfDoneText(std::string_view path) {
  return "RTF exported successfully.\n\n" + std::string(path);
}

std::string RtfDoneTimedText(uint64_t milliseconds, std::string_view path) {
  char time[64];
  std::snprintf(time, sizeof time, "Export time: %llu.%03llu sec",
                static_cast<unsigned long long>(milliseconds / 1000),
                static_cast<unsigned long long>(milliseconds % 1000));
  return "RTF exported successfully.\n\n" + std::string(time) + "\n\n" + std::string(path);
}

}  // namespace nebro
