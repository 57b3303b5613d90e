// The parts by themselves: splitting, finding counters, matching and looking up names, building
// power tables.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "host/standalone/standalone_host.h"
#include "kesncd/kesncd.h"
#include "line_readers/code_counts.h"

namespace orsa::kesncd {
namespace {

void SplitWords(benchmark::State& state) {
  Mem splitter;
  int count = 0;
  for (auto _ : state) {
    splitter.GetArrayOfTokens("$var wire 32 \"!# data_out [31:0] $end\n", " \n\r\t", &count);
    benchmark::DoNotOptimize(count);
  }
}
BENCHMARK(SplitWords);

void CountCodes(benchmark::State& state) {
  CodeCounts counts;
  std::vector<std::string> codes;
  for (int i = 0; i < 20000; ++i) {
    std::string code;
    for (int n = i + 1; n > 0; n /= 94) code += static_cast<char>('!' + --n % 94);
    code.resize(static_cast<std::size_t>(state.range(0)), '~');
    counts.Add(code);
    codes.push_back(code + std::string(CodeCounts::kReadAhead, ' '));
  }
  std::size_t next = 0;
  for (auto _ : state) {
    counts.CountPlain(codes[next].data(), static_cast<std::size_t>(state.range(0)));
    next = (next + 7919) % codes.size();
  }
}
BENCHMARK(CountCodes)->Arg(3)->Arg(5)->Arg(12);

void MatchRange(benchmark::State& state) {
  const std::string vcd = "data[2147483647:0]";
  const std::string design = "data_2147483000_";
  for (auto _ : state) benchmark::DoNotOptimize(VmodHier::IsNameEqual(vcd, design, true));
}
BENCHMARK(MatchRange);

/// `signals` signals of different names in scopes of 200.
std::unique_ptr<VmodHier> Tree(int signals) {
  auto root = std::make_unique<VmodHier>("top");
  for (int i = 0; i < signals; ++i) {
    const std::string number = std::to_string(i);
    if (i % 200 == 0) root->AddSubMod(new VmodHier('u' + number));
    root->subMods.back()->AddSignal('n' + number + "[0]", "wire", number, 1);
  }
  return root;
}

void SearchInVain(benchmark::State& state) {
  const auto root = Tree(static_cast<int>(state.range(0)));
  double frequency = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        root->FindSignalFreqHier("top", "no_such_name_5_", frequency, state.range(1) != 0));
  }
}
BENCHMARK(SearchInVain)
    ->ArgNames({"signals", "exact"})
    ->Args({1000000, 1})
    ->Args({1000000, 0})
    ->Unit(benchmark::kMillisecond);

void BuildPowerTable(benchmark::State& state) {
  KesNCD analyser;
  analyser.SetTopModule("top");
  const int signals = static_cast<int>(state.range(0));
  analyser.hierRoot = Tree(signals).release();
  std::vector<std::vector<std::string>> rows;
  for (int i = 0; i < state.range(1); i += 2) {
    rows.push_back(
        {"SIGNAL", std::string("n").append(std::to_string(7919LL * i % signals)) + "_0_", ""});
    rows.push_back({"INPUT", "absent" + std::to_string(i), "PIO"});
  }
  standalone::PowerDocument document;
  document.AddTable("Hierarchical Connections", std::move(rows));
  for (auto _ : state) {
    benchmark::DoNotOptimize(analyser.CreateKesSigFreq(&document, 0.0, state.range(2) != 0));
  }
}
BENCHMARK(BuildPowerTable)
    ->ArgNames({"signals", "rows", "exact"})
    ->Args({1000000, 100000, 1})
    ->Args({1000000, 100000, 0})
    ->Args({1000000, 200000, 1})
    ->Args({500000, 100000, 1})
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace orsa::kesncd
