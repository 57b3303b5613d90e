// The fast path against the plain one, in each of the three line readers: counts, reader state,
// tree and stream position. The first option pads the body by that many bytes, so that lines meet
// the ends of blocks.
#include <cstdlib>
#include <sstream>

#include "fuzz/support.h"
#include "kesncd/kesncd.h"
#include "kesncd/readings.h"
#include "tests/reader_state.h"

namespace {

using namespace orsa::kesncd;

std::string Padded(const fuzz::Input& input) {
  constexpr std::size_t kMostPadding = 10000;
  constexpr std::size_t kLine = 1000;
  const std::string end = "$enddefinitions $end\n";
  std::size_t padding = std::strtoul(input.Option(0).c_str(), nullptr, 10);
  const std::size_t at = input.text.find(end);
  if (padding > kMostPadding || at == std::string::npos) padding = 0;
  std::string filler;
  for (; padding > 0; padding -= std::min(padding, kLine)) {
    filler += std::string(std::min(padding, kLine) - 1, 'x') + '\n';
  }
  std::string dump = input.text;
  if (!filler.empty()) dump.insert(at + end.size(), filler);
  return dump;
}

void AppendTree(const KesNCD& analyser, std::ostringstream& text) {
  for (const auto& [code, scopes] : analyser.codeIndex) {
    text << '\n' << code;
    for (const VmodHier* scope : scopes) {
      const auto signal = scope->signals.find(code);
      fuzz::Require(signal != scope->signals.end(), "the index names a scope that has the code");
      text << ' ' << scope->name << '.' << signal->second.name << '=' << signal->second.changes;
    }
  }
}

std::string ReadDump(int reader, const ReadingOptions& options, const std::string& dump) {
  ResetReaderState();
  KesNCD analyser;
  analyser.SetTopModule("top");
  const TextStream stream(dump);
  bool complete = true;
  const std::set<std::string> selection{"clk"};
  VmodHier* unlinked = nullptr;
  const ModuleTree tree{analyser.codeIndex, analyser.hierRoot, unlinked};
  if (reader < 2) complete = ReadFlat(stream, reader == 0 ? nullptr : &selection, options);
  if (reader == 2) complete = ReadTree(stream, tree, options);
  std::ostringstream text;
  text << fuzz::StateText() << " complete " << complete << " at " << std::ftell(stream);
  AppendTree(analyser, text);
  while (unlinked != nullptr) delete unlinked;
  return text.str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string dump = Padded(fuzz::Input(data, size));
  for (const int reader : {0, 1, 2}) {
    const std::string fast = ReadDump(reader, {.blockBytes = 4200, .longestDirectCode = 2}, dump);
    const std::string plain = ReadDump(reader, {.scansPlainLines = false}, dump);
    fuzz::Require(fast == plain, "fast: " + fast + "\nplain: " + plain);
  }
  return 0;
}
