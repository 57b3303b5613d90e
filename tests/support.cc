#include "tests/support.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

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

FreshState::FreshState() {
  ResetReaderState();
}
FreshState::~FreshState() {
  ResetReaderState();
}

TempDir::TempDir() {
  std::string pattern = (std::filesystem::temp_directory_path() / "kesncd-XXXXXX").string();
  path_ = mkdtemp(pattern.data());
}

TempDir::~TempDir() {
  std::filesystem::remove_all(path_);
}

std::string TempDir::Write(const std::string& name, const std::string& text) const {
  std::ofstream(Path(name), std::ios::binary) << text;
  return Path(name);
}

TextStream::TextStream(const std::string& text)
    : text_(text),
      file_(text.empty() ? std::tmpfile() : fmemopen(text_.data(), text.size(), "r")) {}

TextStream::~TextStream() {
  std::fclose(file_);
}

std::string ReadAll(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> Cut(const std::string& text, const std::string& separator) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  for (std::size_t end = 0; end != std::string::npos; start = end + separator.size()) {
    end = text.find(separator, start);
    parts.push_back(text.substr(start, end - start));
  }
  return parts;
}

std::string TopModCounts() {
  std::string text;
  for (int i = 0; i < topMod.GetSignalSize(); ++i) {
    text += (i > 0 ? " " : "") + topMod.GetSignalName(i) + "=" +
            std::to_string(topMod.GetSignalChange(i));
  }
  return text;
}

}  // namespace orsa::kesncd
