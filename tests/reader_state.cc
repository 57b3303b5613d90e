#include "tests/reader_state.h"

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
