// What the strict readers hand on, put into the exported module and trees.
#include "kesncd/readings.h"

#include "kesncd/shared_state.h"
#include "line_readers/flat_reader.h"
#include "line_readers/hierarchy_reader.h"

namespace orsa::kesncd {

namespace {

/// Takes the top module's variables into `topMod`.
class TopModuleFiller : public DeclarationSink {
 public:
  explicit TopModuleFiller(CodeCounts& counts) : counts_(counts) {}

  void OpenScope(const char* name) override { topMod.SetName(name); }
  void CloseScope() override {}
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
  SharedState shared;
  CodeCounts counts(options.longestDirectCode);
  TopModuleFiller filler(counts);
  const FlatRules rules = selection == nullptr ? UnfilteredRules() : FilteredRules(*selection);
  const FlatTarget target{.topModule = topModName,
                          .isNamed = !topMod.GetName().empty(),
                          .hasSignals = topMod.GetSignalSize() > 0};
  FlatReader reader(dump, rules, target, filler, counts, shared.state, options);
  if (selection == nullptr) topMod.AddCodesTo(counts);
  const bool complete = reader.Read();
  topMod.TakeChangesOf(counts);
  return complete;
}

bool ReadTree(std::FILE* dump, ModuleTree tree, const ReadingOptions& options) {
  SharedState shared;
  CodeCounts counts(options.longestDirectCode);
  TreeBuilder builder(tree, counts);
  HierarchyReader reader(dump, builder, counts, shared.state, options);
  const bool complete = reader.Read();
  builder.Finish();
  return complete;
}

}  // namespace orsa::kesncd
