// kesncd check from the outside: what ends it with 1, which modules it proposes for --top, and
// files that change under a reader's hands.
#include <filesystem>

#include "cli/input/dump_input.h"
#include "tests/support/shell.h"
#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

TEST(CheckCommand, EndsWithOneForWrongFiguresOnly) {
  const TempDir dir;
  const std::string body = "~#0~0!~1!~#10~";
  dir.Write("clean.vcd", Dump("SCALE~$scope module tb $end~CLK~UP~END" + body));
  dir.Write("grammar.vcd",
            Dump("SCALE~$scope module tb $end~CLK~$var wire 2 b d $end~UP~END" + body + "b01 b~"));
  dir.Write("x.vcd", Dump("SCALE~$scope module tb $end~CLK~UP~END" + body + "x!~"));
  dir.Write("host.vcd", Dump("$timescale 1ns $end~$scope module tb $end~CLK~UP~END" + body));
  dir.Write("outside.vcd", Dump("SCALE~CLK~END" + body));
  dir.Write("off.vcd", Dump("SCALE~$scope module tb $end~CLK~UP~END~#0~0!~1!~$dumpoff~$end~#5~"
                            "$dumpon~1!~$end~#20~"));
  ExpectRuns(dir, R"(kesncd check clean.vcd => 0 => finding .*\n0 findings; (.|\n)*
kesncd check grammar.vcd => 0 => finding .*\ncodes .* grammar reader .*\n
    (note|signals) .*\n0 findings, 1 worth knowing, 1 of the grammar reader alone; (.|\n)*
kesncd check x.vcd --format csv => 0 => finding,count,of,line,example,severity,concerns,remedy\r\n
    (.*,worth knowing,all runs,.*\r\n)+
kesncd check host.vcd --format csv => 1 => .*\r\n.*,wrong figures,hosts,kesncd prepare\r\n
kesncd check outside.vcd => 1 => (.|\n)*a good top module is /\nmodules with signals: /\n
kesncd check off.vcd --format csv => 1 => .*\r\ndumping was off .*,1,stretches,\d+,
    25.0 % of the span; 1 repeated values counted,.*\r\n
kesncd tree off.vcd -o /dev/null => 0 =>  => kesncd: off.vcd: dumping was off for 25.0 % of the span; 1 rep.*\n
for n in 3 4 5 6 7 8 9 10 11 12; do (ulimit -n $n; kesncd flat clean.vcd --as-is --top tb 2>&1 >/dev/null |
    grep -c "modules are"); done | sort -u => 0 => 0\n)");
}

TEST(CheckCommand, ListsWhatTopTakes) {
  const TempDir dir;
  std::string scopes = "SCALE~$scope module tb $end~CLK~";
  for (int i = 0; i < 24; ++i) {
    scopes += "$scope module u" + std::to_string(i) + " $end~$var wire 1 ! c $end~UP~";
  }
  const std::string end = "UP~END~#0~0!~1!~#10~";
  dir.Write("many.vcd", Dump(scopes + end));
  // A path of more characters than are given, of which the end is unique all the same.
  const std::string name(200, 'n');
  dir.Write("long.vcd", Dump("SCALE~$scope module " + name + " $end~$scope module " + name +
                             " $end~$scope module in $end~CLK~UP~UP~" + end));
  ExpectRuns(dir,
             R"(kesncd check many.vcd | tail -1 => 0 => modules with signals: tb, tb/u0, .*, tb/u18
     and 5 more, which --modules lists\n
kesncd check many.vcd --modules | tail -n +4 | grep -c "^  tb" => 0 => 24\n
kesncd check many.vcd --format json | grep -o "tb/u[0-9]*" | wc -l => 0 => 24\n
kesncd check long.vcd | tail -2 => 0 => modules with signals: n+/in\n1 of their paths .* takes too\n
kesncd flat long.vcd --format csv --top $(kesncd check long.vcd --modules | grep "^  ") =>
     0 => signal,freq_mhz\r\nclk,50\r\n)");
}

TEST(CheckCommand, TellsFilesThatChangeWhileTheyAreRead) {
  const TempDir dir;
  const std::string path = dir.Path("d.vcd");
  const std::size_t size = 100000;
  for (const auto& [after, change] : {std::pair(size, FileChange::None),
                                      {size / 2, FileChange::Shrank},
                                      {2 * size, FileChange::Changed}}) {
    dir.Write("d.vcd", std::string(size, ' '));
    cli::InputOptions options;
    options.dump = path;
    options.quiet = true;
    const cli::UnpackedSource dump = cli::OpenDump(options);
    char byte = 0;
    ASSERT_EQ(dump.bytes->Read(&byte, 1), 1U);
    if (after != size) std::filesystem::resize_file(path, after);
    std::string rest(3 * size, ' ');
    EXPECT_LE(ReadFully(*dump.bytes, rest.data(), rest.size()), 2 * size);
    EXPECT_EQ(*dump.change, change) << after;
  }
}

}  // namespace
}  // namespace orsa::kesncd
