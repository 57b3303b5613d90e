// Operations on one scope of the module tree that its public class does not show.
#ifndef KESNCD_MODEL_MODULE_NODE_H_
#define KESNCD_MODEL_MODULE_NODE_H_

#include <string>

#include "kesncd/kesncd.h"

namespace orsa::kesncd {

/// Declares a signal as VmodHier::AddSignal does; returns the one that the code has from now on,
/// which spares the caller a look-up.
VmodSignal& DeclareIn(VmodHier& scope, std::string name, std::string type, std::string symbol,
                      int width);

/// Adds a change to the signal that a scope has for a code, if it has one.
void AddChangeIn(VmodHier& scope, const std::string& symbol);

}  // namespace orsa::kesncd

#endif  // KESNCD_MODEL_MODULE_NODE_H_
