// kesncd profile and kesncd report from the outside: cases as files, pipes, what is refused, and
// the figures that go into a page.
#include <regex>

#include "tests/support/case_files.h"
#include "tests/support/shell.h"
#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

const std::string kCases = "tests/cases/profile.txt";

TEST(ProfileCommand, GivesWhatCasesSay) {
  const TempDir dir;
  ExpectCases(kCases, [&](const Case& of, const std::string& options) {
    dir.Write("d.vcd", of.dump);
    return Shell(dir.Path("."),
                 "kesncd profile d.vcd --format csv -q " + options + " | tr -d '\\r'")
        .out;
  });
}

TEST(ProfileCommand, TakesPipesAndSaysWhatItRefuses) {
  const TempDir dir;
  dir.Write("d.vcd", CaseIn(kCases, "shared port").dump);
  dir.Write("c.sdc", "create_clock -period 25 -name core [get_ports clk]\n");
  dir.Write("odd.vcd",
            "$timescale 1ns $end $scope module </script><img> $end $var wire 1 ! </script> $end\n"
            "$upscope $end $enddefinitions $end #0 0! #1 1! #3 0! \n");
  dir.Write("flat.vcd", "$var wire 1 ! a $end $enddefinitions $end #0 0! #5 1! \n");
  ExpectRuns(
      dir,
      R"(kesncd profile d.vcd --windows 2 => 0 => begin +end +toggles .* bar\n0s +50ns +10 .* #+\n50ns +100ns +5 .*\n15 toggles in 2 windows\n
     => kesncd: d.vcd: dumping was off for 10 of 100 ticks, .*\n
kesncd profile - --windows 3 --format csv -q < d.vcd | cut -d, -f1,2,4 | tail -n +2 | tr -d '\r' => 0 => 0,3\d,\d+\n3\d,\d+,\d+\n\d+,100,\d+\n
kesncd profile - --windows 3 < d.vcd >/dev/null => 0 =>  => (.|\n)*standard input: its span was not known .*\n
kesncd profile - --windows 200 --format csv -q < d.vcd | wc -l => 0 => 101\n
gzip -k d.vcd && kesncd profile d.vcd.gz --windows 7 -o a.csv -q && kesncd profile d.vcd --windows 7 -o b.csv -q && cmp a.csv b.csv => 0 => 
kesncd profile d.vcd --windows 4 --clock clk => 2 =>  => kesncd: --windows, --window, .*\n.*\n
kesncd profile d.vcd --values 4 => 2 =>  => kesncd: --values is for --by\n.*\n
kesncd profile d.vcd --window 0 => 2 =>  => kesncd: --window and --peak: 0 is no length\n.*\n
kesncd profile d.vcd --window 1ps -q => 2 =>  => kesncd: d.vcd: a window of less than a tick .*\n
kesncd profile flat.vcd --window 1ns -q => 2 =>  => kesncd: flat.vcd: has no time scale, .*\n
kesncd profile flat.vcd -q --format csv --windows 1 | tr -d '\r' => 0 => begin,end,observed,toggles,toggles_per_us\n0,5,5,1,\n
kesncd profile d.vcd --clock state -q => 1 =>  => kesncd: d.vcd: state is no signal of one bit\n
kesncd profile d.vcd --by none -q => 1 =>  => kesncd: d.vcd: no signal none\n
kesncd profile d.vcd --by state --values 1 --format csv | tail -1 => 0 => others,.*\r\n => (.|\n)*d.vcd: state has more than 1 values: .*\n
kesncd profile d.vcd --scope none -q => 1 =>  => kesncd: d.vcd: no scope none; .*\n
kesncd profile d.vcd --begin 200ns -q => 1 =>  => kesncd: d.vcd: nothing lies in the window\n
kesncd report d.vcd -o r.html -q --sdc c.sdc && grep -c '"name":"core","mhz":50,"reported_mhz":40,"reported_by":"SDC"' r.html => 0 => 1\n
kesncd report odd.vcd -o odd.html -q && grep -c '"name":\["","\\u003c/script>\\u003cimg>"\]' odd.html => 0 => 1\n
grep -c '</script><img>' odd.html => 1 => 0\n
kesncd report - -q < d.vcd | grep -c '"findings"' => 1 => 0\n
kesncd report d.vcd -o d.csv => 2 =>  => kesncd: d.csv: ends in .csv, but this command writes html; .*\n.*\n
ln d.vcd d.html; kesncd report d.vcd -o d.html => 2 =>  => kesncd: d.html: is an input too\n)");
}

}  // namespace
}  // namespace orsa::kesncd
