// Fuzzes the way every file comes in: the binary refusals, the byte-order marks and the UTF-16
// decoding, through the real loader on a real file. Beyond "no crash, no sanitizer report" it
// checks that a loaded UTF-8 file is its own bytes (less the mark), that a loaded UTF-16 file
// becomes valid UTF-8 of the size the loader promised, and that a refused file holds no text.
#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "common/utf.h"
#include "document/file_load.h"

namespace {

void Check(bool ok, const char* what) {
  if (!ok) {
    std::fprintf(stderr, "document_load_fuzz: %s\n", what);
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::string path = "/tmp/nebro-load-fuzz-" + std::to_string(getpid());
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  if (fd < 0 || write(fd, data, size) != static_cast<ssize_t>(size)) std::abort();
  close(fd);
  using namespace nebro::document;
  const LoadResult r = LoadDocumentFile(path, 1u << 30);
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  if (r.decision != LoadDecision::Loaded) {
    Check(r.text.size == 0 && !r.message.empty(), "a refused file has text or no message");
    return 0;
  }
  const std::string_view text = r.text.view();
  switch (r.encoding) {
    case TextEncoding::Utf8: Check(text == bytes, "UTF-8 text differs from the file"); break;
    case TextEncoding::Utf8Bom: Check(text == bytes.substr(3), "UTF-8 text differs from the file after the mark"); break;
    case TextEncoding::Utf16Le:
    case TextEncoding::Utf16Be:
      Check(nebro::Utf8ToUtf16(text).size() <= (size - 2) / 2 + 1, "UTF-16 text grew");
      Check(nebro::Utf16ToUtf8(nebro::Utf8ToUtf16(text)) == text, "UTF-16 text is not valid UTF-8");
      break;
    default: Check(false, "an encoding the loader never reports");
  }
  return 0;
}
