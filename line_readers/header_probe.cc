// The scan for the innermost module of the first run of scopes.
#include "line_readers/header_probe.h"

#include "line_readers/vcd_line.h"
#include "text/line_source.h"
#include "text/splitter.h"

namespace orsa::kesncd {

namespace {

// As the unfiltered reader cuts lines, for which the module is proposed.
constexpr std::size_t kProbeLineBytes = 1024;

}  // namespace

std::string ProbeTopModule(std::FILE* dump) {
  LineSource lines(dump, kProbeLineBytes);
  Splitter splitter;
  std::string candidate;
  // Reads no further than the first line that ends the run.
  for (const char* text = lines.Next(); text != nullptr; text = lines.Next()) {
    VcdLine line{};
    line.words = splitter.CutWords(text, kVcdBlanks, &line.count);
    // Short lines ("$upscope $end", stamps, comments) never end the run of scopes.
    if (line.count < 4) continue;
    if (line.Is(0, "$scope") && line.Is(1, "module")) {
      // Such as "$scope module tb $end", also where there are more words on the line.
      candidate = line.words[2];
    } else if (!candidate.empty()) {
      // A line of four words or more that is no module scope: in most dumps the first "$var".
      break;
    }
  }
  return candidate;
}

}  // namespace orsa::kesncd
