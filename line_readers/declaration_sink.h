// What a line reader hands the declarations of a dump to: a module's list, or a tree of scopes.
#ifndef KESNCD_LINE_READERS_DECLARATION_SINK_H_
#define KESNCD_LINE_READERS_DECLARATION_SINK_H_

#include "line_readers/dump_rules.h"

namespace orsa::kesncd {

/// The calls come in the order of the dump's lines. A reader counts changes by identifier code and
/// leaves it to the sink which codes have counters. The reader owns nothing of what it hands over.
/// A sink that throws ends the reading.
class DeclarationSink {
 public:
  DeclarationSink() = default;
  virtual ~DeclarationSink() = default;
  DeclarationSink(const DeclarationSink&) = delete;
  DeclarationSink& operator=(const DeclarationSink&) = delete;

  /// A scope that the reader takes part in.
  virtual void OpenScope(const char* name) = 0;
  /// The end of the innermost open scope; there may be none.
  virtual void CloseScope() = 0;
  /// A variable of the innermost open scope, if there is one. The declaration is the reader's and
  /// is used for the next line: a sink may move its texts away.
  virtual void Declare(Declaration& declaration) = 0;
  /// Changes may be counted from here on, until another scope opens.
  virtual void EndDefinitions() = 0;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_LINE_READERS_DECLARATION_SINK_H_
