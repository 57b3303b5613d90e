// The unfiltered flat reader: read at once and read in drips it must give the same. The options
// name the top module and the codes of signals that are there before.
#include "fuzz/target.h"
#include "kesncd/kesncd.h"
#include "kesncd/readings.h"
#include "tests/support/input.h"
#include "tests/support/reader_state.h"
#include "tests/support/require.h"
#include "tests/support/streams.h"

namespace {

using namespace orsa::kesncd;

std::string ReadDump(std::FILE* stream, const support::Input& input) {
  ResetReaderState();
  KesNCD analyser;
  analyser.SetTopModule(input.Option(0, "top"));
  for (const std::string& code : input.OptionsFrom(1))
    topMod.AddSignal("s" + code, "wire", code, 1);
  // Tables for codes of three characters are large, and would be made for every input.
  const bool complete = ReadFlat(stream, nullptr, {.blockBytes = 4200, .longestDirectCode = 2});
  for (int i = 0; i < topMod.GetSignalSize(); ++i) {
    support::Require(topMod.GetSignalChange(i) >= 0, "a count is not negative");
    support::Require(
        support::Same(topMod.GetSignalFreq(i), support::PlainFrequency(topMod.GetSignalChange(i))),
        [&] { return "the frequency of " + topMod.GetSignalName(i); });
  }
  return support::StateText() + (complete ? " complete" : " given up");
}

}  // namespace

void CheckInput(std::string_view bytes) {
  const support::Input input(bytes);
  const std::string whole = ReadDump(TextStream(input.text), input);
  const std::string dripped = ReadDump(support::DrippingStream(input.text), input);
  support::Require(whole == dripped,
                   [&] { return "at once: " + whole + "\nin drips: " + dripped; });
}
