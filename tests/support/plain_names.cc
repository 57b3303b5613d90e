// The plain walk over names and scopes that the fast searches must agree with.
#include "tests/support/plain_names.h"

#include <strings.h>

#include <algorithm>
#include <sstream>

#include "tests/support/reader_state.h"
#include "tests/support/require.h"

namespace support {

namespace {

using orsa::kesncd::VmodHier;

constexpr long kMostWalked = 40;

bool Equal(const std::string& a, const std::string& b, bool exact) {
  return exact ? a == b : strcasecmp(a.c_str(), b.c_str()) == 0;
}

long Bound(const std::string& text) {
  int value = 0;
  std::istringstream(text) >> value;  // 0 where there is no number, clamped where it is too large
  return value;
}

std::optional<bool> RangeEqual(const std::string& vcdName, const std::string& designName,
                               bool exact) {
  std::string cut = vcdName.substr(0, vcdName.rfind(']'));
  const std::size_t bracket = cut.rfind('[');
  if (bracket == std::string::npos) return false;
  const std::size_t colon = cut.find(':');
  if (colon == std::string::npos) return PlainlyEqual(cut, designName, exact);
  if (colon < bracket) return false;
  const long first = Bound(cut.substr(bracket + 1, colon - bracket - 1));
  const long second = Bound(cut.substr(colon + 1));
  const long low = std::min(first, second);
  const long high = std::max(first, second);
  if (high - low > kMostWalked) return std::nullopt;
  for (long bit = low; bit <= high; ++bit) {
    const std::string name = cut.substr(0, bracket + 1) + std::to_string(bit) + "]";
    const auto equal = PlainlyEqual(name, designName, exact);
    if (!equal || *equal) return equal;
  }
  return false;
}

}  // namespace

std::optional<bool> PlainlyEqual(const std::string& vcdName, const std::string& designName,
                                 bool exact) {
  if (vcdName.find(':') != std::string::npos) return RangeEqual(vcdName, designName, exact);
  std::string flat = designName;
  std::replace(flat.begin(), flat.end(), '/', '_');
  for (const std::string& form : {designName, designName + "I", flat, flat + "I"}) {
    if (Equal(vcdName, form, exact)) return true;
  }
  if (vcdName.empty() || vcdName.back() != ']') return false;
  std::string rewritten = vcdName.substr(0, vcdName.size() - 1);
  const std::size_t bracket = rewritten.rfind('[');
  if (bracket == std::string::npos) return false;
  rewritten[bracket] = '_';
  return PlainlyEqual(rewritten + "_", designName, exact);
}

PlainFind FindPlainly(const VmodHier& node, const std::string& module, const std::string& signal,
                      bool exact) {
  const auto here = PlainlyEqual(node.name, module, exact);
  if (!here) return {false, nullptr};
  if (*here) {
    for (const auto& [code, candidate] : node.signals) {
      const auto equal = PlainlyEqual(candidate.name, signal, exact);
      if (!equal) return {false, nullptr};
      if (*equal) return {true, &candidate};
    }
  }
  for (const VmodHier* child : node.subMods) {
    const PlainFind found = FindPlainly(*child, child->name, signal, exact);
    if (!found.known || found.signal != nullptr) return found;
  }
  return {true, nullptr};
}

void CheckLookup(const VmodHier& node, const std::string& module, const std::string& signal,
                 bool exact) {
  constexpr double kUntouched = -7.25;
  const PlainFind plain = FindPlainly(node, module, signal, exact);
  double frequency = kUntouched;
  const bool found = node.FindSignalFreqHier(module, signal, frequency, exact);
  if (!plain.known) return;
  Require(found == (plain.signal != nullptr),
          [&] { return "the lookup of " + module + " " + signal; });
  const double expected = found ? PlainFrequency(plain.signal->changes) : kUntouched;
  Require(Same(frequency, expected), [&] { return "the frequency of " + module + " " + signal; });
}

}  // namespace support
