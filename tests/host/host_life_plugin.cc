// What a host loads at run time: it uses the library, and both are unloaded again.
#include "kesncd/kesncd.h"

/// Runs everything that needs no host on a dump; the frequency of "clk" in the tree.
extern "C" __attribute__((visibility("default"))) double RunOnce(const char* dump) {
  using namespace orsa::kesncd;
  if (startCycle != -1.0 || timeScale != 0.0 || topModName != nullptr) return -2.0;  // not afresh
  KesNCD analyser;
  analyser.SetTopModule("t");
  std::string message;
  double frequency = -1.0;
  if (!analyser.SetVCDFile(dump, {"clk"}, message)) return -3.0;
  if (!analyser.SetVCDFileHier(dump, {}, message)) return -4.0;
  if (analyser.CreateKesSigFreq(nullptr, 0.0, true).size() != 0) return -5.0;
  analyser.SetTWRFile(dump, 0);
  analyser.hierRoot->FindSignalFreqHier("t", "clk", frequency, true);
  return frequency;
}
