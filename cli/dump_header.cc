#include "cli/dump_header.h"

#include <cstdio>
#include <memory>
#include <string_view>

#include "kesncd/kesncd.h"

namespace kesncd_cli {

namespace {

// The flat run's own cut of long lines, so that both see the same declarations.
constexpr int kLineBytes = 4096;

struct Closer {
  void operator()(std::FILE* file) const { (void)std::fclose(file); }
};

class HeaderScan {
 public:
  /// Takes one line; false at the end of the definitions.
  bool Take(char** words, int count) {
    if (count == 0) return true;
    const std::string_view first = words[0];
    if (first == "$enddefinitions") return false;
    if (first == "$scope" && count >= 3) {
      Open(words[1], words[2]);
    } else if (first == "$upscope") {
      path_.resize(starts_.empty() ? 0 : starts_.back());
      if (!starts_.empty()) starts_.pop_back();
    } else if (first == "$var" && count >= 5) {
      header.names.insert(words[4]);
    }
    return true;
  }

  DumpHeader header;

 private:
  void Open(std::string_view kind, const std::string& name) {
    starts_.push_back(path_.size());
    // A hostile header nests as deep as it likes; paths longer than anybody reads are cut.
    if (path_.size() > 1000) return;
    path_ += (path_.empty() ? "" : "/") + name;
    if (kind == "module") header.modules.push_back(path_);
  }

  std::string path_;
  std::vector<std::size_t> starts_;  // length of path_ before each open scope
};

}  // namespace

DumpHeader ReadDumpHeader(const std::string& path) {
  HeaderScan scan;
  const std::unique_ptr<std::FILE, Closer> file(std::fopen(path.c_str(), "r"));
  if (file == nullptr) return scan.header;
  orsa::kesncd::Mem splitter;
  std::string line(kLineBytes, '\0');
  int count = 0;
  while (std::fgets(line.data(), kLineBytes, file.get()) != nullptr) {
    char** words = splitter.GetArrayOfTokens(line.c_str(), " \n\r\t", &count);
    if (!scan.Take(words, count)) break;
  }
  return scan.header;
}

}  // namespace kesncd_cli
