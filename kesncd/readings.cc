// What the line readers hand on, put into the exported module and trees.
#include "kesncd/readings.h"

#include "kesncd/shared_state.h"
#include "line_readers/flat_reader.h"
#include "line_readers/hierarchy_reader.h"

namespace orsa::kesncd {

namespace {

/// The sink of a flat reading: takes the top module's variables into `topMod`. Other scopes never
/// come here.
class TopModuleFiller : public DeclarationSink {
 public:
  explicit TopModuleFiller(CodeCounts& counts) : counts_(counts) {}

  void OpenScope(const char* name) override { topMod.SetName(name); }
  void CloseScope() override {}
  // A code counts from its first declaration on.
  void Declare(Declaration& declaration) override {
    topMod.AddSignal(declaration.name, declaration.type, declaration.code, declaration.width);
    counts_.Add(declaration.code);
  }
  void EndDefinitions() override {}

 private:
  CodeCounts& counts_;
};

}  // namespace

bool ReadFlat(std::FILE* dump, const std::set<std::string>* selection,
              const ReadingOptions& options) {
  // First, so that it is destroyed last and sees what the reading left.
  SharedState shared;
  CodeCounts counts(options.longestDirectCode);
  TopModuleFiller filler(counts);
  const FlatRules rules = selection == nullptr ? UnfilteredRules() : FilteredRules(*selection);
  // As the module is before the reading: a name or signals of an earlier one count as found.
  const FlatTarget target{.topModule = topModName,
                          .isNamed = !topMod.GetName().empty(),
                          .hasSignals = topMod.GetSignalSize() > 0};
  FlatReader reader(dump, rules, target, filler, counts, shared.state, options);
  // Only this reader counts for signals that were there before.
  if (selection == nullptr) topMod.AddCodesTo(counts);
  const bool complete = reader.Read();
  // Also after a reading that gave up: what was counted until then counts.
  topMod.TakeChangesOf(counts);
  return complete;
}

bool ReadTree(std::FILE* dump, HostTree tree, const ReadingOptions& options) {
  SharedState shared;
  CodeCounts counts(options.longestDirectCode);
  TreeBuilder builder(tree, counts);
  HierarchyReader reader(dump, builder, counts, shared.state, options);
  const bool complete = reader.Read();
  // Also after a reading that gave up, so that the tree has its index and counts.
  builder.Finish();
  return complete;
}

}  // namespace orsa::kesncd
