// Module trees that a host takes part in: nodes that hang nowhere and are hung up, made the root or
// deleted by it, and the order in which a tree goes. Every node is freed once, which the count of
// allocations and the sanitizers see.
#include <algorithm>
#include <functional>
#include <utility>

#include "tests/support/allocations.h"
#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

using HostTree = FreshState;

// "root" with "a" in it, then the scopes "b" (with "in") and "c", which nothing leads to.
const std::string kDump = Dump(
    "$scope module root $end~$scope module a $end~$var wire 1 ! s $end~UP~UP~"
    "$scope module b $end~$var wire 1 # s $end~$scope module in $end~$var wire 1 & s $end~UP~UP~"
    "$scope module c $end~$var wire 1 % s $end~UP~END~1#~");

/// Reads the dump; `change` gets the analyser and its scopes "b" and "c".
void ReadAndChange(const std::function<void(KesNCD&, VmodHier*, VmodHier*)>& change) {
  KesNCD analyser;
  ASSERT_TRUE(analyser.ParseVcdFileHier(TextStream(kDump), {}));
  change(analyser, analyser.codeIndex["#"][0], analyser.codeIndex["%"][0]);
}

TEST_F(HostTree, NodesThatHungNowhereAreFreedOnce) {
  VmodHier* kept = nullptr;
  const std::function<void(KesNCD&, VmodHier*, VmodHier*)> changes[] = {
      [](KesNCD&, VmodHier*, VmodHier*) {},
      [](KesNCD& analyser, VmodHier* b, VmodHier* c) {
        analyser.hierRoot->AddSubMod(b);
        b->subMods[0]->AddSubMod(c);
        EXPECT_EQ(analyser.hierRoot->subMods.back()->signals["#"].changes, 1);
      },
      [](KesNCD& analyser, VmodHier* b, VmodHier* c) {  // past AddSubMod
        analyser.hierRoot->subMods.push_back(b);
        b->subMods[0]->subMods.push_back(c);
      },
      [](KesNCD&, VmodHier* b, VmodHier* c) { b->subMods.push_back(c); },
      [](KesNCD&, VmodHier* b, VmodHier* c) { c->subMods.push_back(b); },
      [](KesNCD& analyser, VmodHier* b, VmodHier*) {
        b->AddSubMod(analyser.hierRoot);
        analyser.hierRoot = b;
      },
      [](KesNCD& analyser, VmodHier*, VmodHier* c) {
        delete analyser.hierRoot;
        analyser.hierRoot = c;
        std::string message;  // the tree goes at the start of the next run
        const TempDir dir;
        EXPECT_TRUE(analyser.SetVCDFileHier(dir.Write("d.vcd", kDump), {}, message));
      },
      [](KesNCD&, VmodHier* b, VmodHier*) { delete b; },
      [](KesNCD&, VmodHier* b, VmodHier*) {
        VmodHier own("of the host");
        own.AddSubMod(b);
      },
      [&kept](KesNCD&, VmodHier* b, VmodHier*) {
        kept = new VmodHier("that outlives the analyser");
        kept->AddSubMod(b);
      }};
  int row = 0;
  for (const auto& change : changes) {
    ReadAndChange(change);  // once for what is allocated once
    delete std::exchange(kept, nullptr);
    const long before = allocations.held;
    ReadAndChange(change);
    if (kept != nullptr) {
      EXPECT_EQ(kept->subMods[0]->subMods[0]->signals["&"].name, "s");
    }
    delete std::exchange(kept, nullptr);
    EXPECT_EQ(allocations.held, before) << "row " << row++;
  }
}

TEST_F(HostTree, ChildrenGoInTheirOrderEachSubtreeBeforeTheNext) {
  VmodHier root("root");
  std::vector<const void*> expected;
  for (const char* name : {"a", "b", "c"}) {
    auto* const child = new VmodHier(name);
    auto* const first = new VmodHier("first");
    auto* const second = new VmodHier("second");
    child->AddSubMod(first);
    child->AddSubMod(nullptr);
    child->AddSubMod(second);
    root.AddSubMod(child);
    expected.insert(expected.end(), {first, second, child});
  }
  std::vector<const void*> freed;
  freed.reserve(1000);
  allocations.freed = &freed;
  root.Clear();
  allocations.freed = nullptr;
  std::erase_if(freed, [&](const void* memory) {
    return std::find(expected.begin(), expected.end(), memory) == expected.end();
  });
  EXPECT_EQ(freed, expected);
}

}  // namespace
}  // namespace orsa::kesncd
