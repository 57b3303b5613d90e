// The reader state as tests and fuzz targets reset, print and judge it.
#include "tests/support/reader_state.h"

#include <cmath>
#include <sstream>

#include "kesncd/kesncd.h"

namespace orsa::kesncd {

void ResetReaderState() {
  topMod.Clear();
  topModName = nullptr;
  isTopModNameEverMatched = isReadingTopMod = debug = isReal = isBinary = 0;
  recording = onlyOnce = 1;
  timeScale = cur_time = 0.0;
  startCycle = endCycle = -1.0;
  yyin = nullptr;
  yysptr = yysbuf;
  yylineno = 1;
  yychar = -1;
  yytchar = yystate = yyerrflag = yynerrs = 0;
  yyps = yys;
  yypv = yyv;
}

std::string TopModCounts() {
  std::string text;
  for (int i = 0; i < topMod.GetSignalSize(); ++i) {
    text += (i > 0 ? " " : "") + topMod.GetSignalName(i) + "=" +
            std::to_string(topMod.GetSignalChange(i));
  }
  return text;
}

TextStream::TextStream(const std::string& text)
    : text_(text),
      file_(text.empty() ? std::fopen("/dev/null", "r")
                         : fmemopen(text_.data(), text.size(), "r")) {}

TextStream::~TextStream() {
  std::fclose(file_);
}

}  // namespace orsa::kesncd

namespace support {

std::string StateText() {
  using namespace orsa::kesncd;
  std::ostringstream text;
  text.precision(17);
  text << "name '" << topMod.GetName() << "' signals";
  for (int i = 0; i < topMod.GetSignalSize(); ++i) {
    text << ' ' << topMod.GetSignalName(i) << '|' << topMod.GetSignalType(i) << '|'
         << topMod.GetSignalSymb(i) << '|' << topMod.GetSignalNbit(i) << '='
         << topMod.GetSignalChange(i);
  }
  text << " matched " << isTopModNameEverMatched << " scale " << timeScale << " recording "
       << recording << " span " << startCycle << ".." << endCycle;
  return text.str();
}

double PlainFrequency(int changes) {
  using namespace orsa::kesncd;
  if (changes == 0) return 0.0;
  const double cycles = (changes - 1) * 0.5;
  if (cycles == 0.0) return 0.0;
  const double period = ((endCycle - startCycle) * timeScale) / cycles;
  return period == 0.0 ? 0.0 : 1000.0 / period;
}

bool Same(double a, double b) {
  return a == b || (std::isnan(a) && std::isnan(b));
}

}  // namespace support
