// Name matching and lookup as one would write them down first: every index of a range is tried,
// every scope walked by recursion. What the library does faster must agree with it.
#ifndef KESNCD_TESTS_SUPPORT_PLAIN_NAMES_H_
#define KESNCD_TESTS_SUPPORT_PLAIN_NAMES_H_

#include <optional>
#include <string>

#include "kesncd/kesncd.h"

namespace support {

/// Whether the names match; nothing for a range too wide to walk.
std::optional<bool> PlainlyEqual(const std::string& vcdName, const std::string& designName,
                                 bool exact);

/// What a lookup from a node finds.
struct PlainFind {
  bool known = true;  // false where a range was too wide to walk
  const orsa::kesncd::VmodSignal* signal = nullptr;
};

PlainFind FindPlainly(const orsa::kesncd::VmodHier& node, const std::string& module,
                      const std::string& signal, bool exact);

/// Requires that FindSignalFreqHier finds what the plain walk finds.
void CheckLookup(const orsa::kesncd::VmodHier& node, const std::string& module,
                 const std::string& signal, bool exact);

}  // namespace support

#endif  // KESNCD_TESTS_SUPPORT_PLAIN_NAMES_H_
