// Operations on one scope of the module tree that its public class does not show.
#ifndef KESNCD_MODEL_MODULE_NODE_H_
#define KESNCD_MODEL_MODULE_NODE_H_

#include <cstdint>
#include <string>

#include "kesncd/kesncd.h"

namespace orsa::kesncd {

/// Declares a signal as VmodHier::AddSignal does; returns the one that the code has from now on. A
/// caller that needs the signal is spared a look-up.
VmodSignal& DeclareIn(VmodHier& scope, std::string name, std::string type, std::string symbol,
                      int width);

/// Adds changes to the signal that a scope has for a code, if it has one.
void AddChangesIn(VmodHier& scope, const std::string& symbol, std::uint32_t changes);

}  // namespace orsa::kesncd

#endif  // KESNCD_MODEL_MODULE_NODE_H_
