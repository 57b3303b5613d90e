// The unfiltered flat reader: read at once and read in drips it must give the same. The options
// name the top module and the codes of signals that are there before.
#include "fuzz/support.h"
#include "kesncd/kesncd.h"
#include "tests/reader_state.h"

namespace {

using namespace orsa::kesncd;

std::string ReadDump(std::FILE* stream, const fuzz::Input& input) {
  ResetReaderState();
  KesNCD analyser;
  analyser.SetTopModule(input.Option(0, "top"));
  for (const std::string& code : input.OptionsFrom(1))
    topMod.AddSignal("s" + code, "wire", code, 1);
  const bool complete = analyser.ParseVcdFile(stream);
  for (int i = 0; i < topMod.GetSignalSize(); ++i) {
    fuzz::Require(topMod.GetSignalChange(i) >= 0, "a count is not negative");
    fuzz::Require(
        fuzz::Same(topMod.GetSignalFreq(i), fuzz::PlainFrequency(topMod.GetSignalChange(i))),
        "the frequency of " + topMod.GetSignalName(i));
  }
  return fuzz::StateText() + (complete ? " complete" : " given up");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::Input input(data, size);
  const std::string whole = ReadDump(TextStream(input.text), input);
  const std::string dripped = ReadDump(fuzz::DrippingStream(input.text), input);
  fuzz::Require(whole == dripped, "at once: " + whole + "\nin drips: " + dripped);
  return 0;
}
