#include "export/rtf_export.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "export/byte_writer.h"
#include "export/export_rules.h"

namespace nebro::exports {
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
constexpr size_t kBlock = 1024;

// What opens and closes the group of a run in one style, padded so it copies as a whole:
// "{\cf128 \b \i " and "\b0 \i0 }" are the longest.
struct RunFrame {
  char open[24];
  uint8_t openLength;
  char close[16];
  uint8_t closeLength;
};

std::string FontNameForRtf(const std::string& name) {
  size_t cut = std::min<size_t>(name.size(), 127);
  while (cut > 0 && cut < name.size() && (static_cast<unsigned char>(name[cut]) & 0xC0) == 0x80)
    --cut;
  // Braces and backslashes are escaped and the name's own end mark and control characters left
  // out, so no face name can break the document's groups.
  std::string out;
  for (const char c : name.substr(0, cut)) {
    if (c == '\\' || c == '{' || c == '}') out += '\\';
    if (c == ';' || static_cast<unsigned char>(c) < 0x20) continue;
    out += c;
  }
  return out;
}

// Writes one byte that is not plain ASCII text, with the bytes of its UTF-8 sequence that
// follow it in the same run; returns the position of the sequence's last byte.
size_t PutHighByte(const char* t, size_t i, size_t runEnd, char*& p) {
  const unsigned char c = static_cast<unsigned char>(t[i]);
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
    return i;
  }
  // Only continuation bytes of the same run belong to the character; a sequence cut short by
  // the run's end or by another byte comes out as one "?".
  int got = 0;
  while (got < need && i + 1 < runEnd && (static_cast<unsigned char>(t[i + 1]) & 0xC0) == 0x80) {
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
  return i;
}

ExportResult GenerateRtf(const RtfExportInput& in, ByteWriter& w, const ExportMonitor& monitor) {
  // The colour table lists each distinct paper colour once, in the order styles 0..127 first
  // use it; index 0 is RTF's automatic colour, so the list starts at 1.
  std::vector<Colour> colours;
  std::array<RunFrame, kExportStyleCount> frames{};
  for (int n = 0; n < kExportStyleCount; ++n) {
    const ExportStyle& style = in.styles[n];
    const Colour paper = RtfPaperColour(style.fore, in.darkTheme);
    auto found = std::find(colours.begin(), colours.end(), paper);
    if (found == colours.end()) found = colours.insert(colours.end(), paper);
    std::string open = "{\\cf" + std::to_string(found - colours.begin() + 1) + " ";
    std::string close;
    if (style.bold) open += "\\b ";
    if (style.italic) open += "\\i ";
    if (style.bold) close += "\\b0 ";
    if (style.italic) close += "\\i0 ";
    close += "}";
    RunFrame& frame = frames[n];
    std::memcpy(frame.open, open.data(), open.size());
    frame.openLength = static_cast<uint8_t>(open.size());
    std::memcpy(frame.close, close.data(), close.size());
    frame.closeLength = static_cast<uint8_t>(close.size());
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
  if (!w.Append(head)) return w.failure();

  const std::string_view text = in.document.text;
  const size_t len = text.size();
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
  if (!lineStarts()) return ExportResult::Cancelled;

  // Runs of equal style become groups; a style byte of 128 or more counts as style 0. The
  // text is taken in blocks, each with room promised for its worst case up front: a new group
  // at every byte, and a three-byte character's nine bytes for its lead byte.
  constexpr size_t kMostPerByte = sizeof(RunFrame::close) + sizeof(RunFrame::open) + 9;
  unsigned style = 0;
  size_t i = 0;
  if (len > 0) {
    style = styles[0] < 128 ? styles[0] : 0;
    if (!w.Room(sizeof(RunFrame::open))) return w.failure();
    std::memcpy(w.cursor(), frames[style].open, sizeof(RunFrame::open));
    w.cursor() += frames[style].openLength;
  }
  while (i < len) {
    const size_t blockEnd = std::min(len, i + kBlock);
    if (!w.Room((blockEnd - i) * kMostPerByte + sizeof(RunFrame::close))) return w.failure();
    char* p = w.cursor();
    for (; i < blockEnd; ++i) {
      const unsigned next = styles[i] < 128 ? styles[i] : 0;
      if (next != style) {
        std::memcpy(p, frames[style].close, sizeof(RunFrame::close));
        p += frames[style].closeLength;
        std::memcpy(p, frames[next].open, sizeof(RunFrame::open));
        p += frames[next].openLength;
        style = next;
      }
      const unsigned char c = static_cast<unsigned char>(t[i]);
      const uint8_t kind = kClasses[c];
      if (kind == kCopy) {
        *p++ = static_cast<char>(c);
        continue;
      }
      switch (kind) {
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
          if (!lineStarts()) return ExportResult::Cancelled;
          break;
        default: {
          // The character's bytes are those of the same run: up to the next style change.
          size_t runEnd = i + 1;
          while (runEnd < len && runEnd < i + 4 && (styles[runEnd] < 128 ? styles[runEnd] : 0) == style)
            ++runEnd;
          i = PutHighByte(t, i, runEnd, p);
          break;
        }
      }
    }
    w.cursor() = p;
  }
  if (len > 0) {
    std::memcpy(w.cursor(), frames[style].close, sizeof(RunFrame::close));
    w.cursor() += frames[style].closeLength;
  }

  if (!w.Append("\r\n}\r\n")) return w.failure();
  return ExportResult::Ok;
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
  const size_t len = in.document.text.size();
  ExportResult result = ExportResult::Ok;
  if (in.document.styles.size() != len)
    result = ExportResult::BadInput;
  else if (len > (SIZE_MAX - 4096) / 2 || !out.Reserve(2 * len + 4096))
    result = ExportResult::OutOfMemory;
  if (result == ExportResult::Ok) {
    ByteWriter w(out);
    result = GenerateRtf(in, w, monitor);
    if (result == ExportResult::Ok) w.Finish();
  }
  if (result != ExportResult::Ok) out.release();
  return result;
}

ExportResult ExportRtfToFile(const RtfExportInput& in, const std::string& path,
                             const ExportMonitor& monitor) {
  if (in.document.styles.size() != in.document.text.size()) return ExportResult::BadInput;
  return StreamToFile(path, [&](ExportBytes& buffer, FileSink* sink) {
    ByteWriter w(buffer, sink);
    ExportResult result = GenerateRtf(in, w, monitor);
    if (result == ExportResult::Ok && !w.Finish()) result = w.failure();
    return result;
  });
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

}  // namespace nebro::exports
