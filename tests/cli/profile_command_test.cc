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
    const auto by = [&](const std::string& jobs) {
      const std::string line =
          "kesncd profile d.vcd --format csv -q --jobs " + jobs + " " + options;
      return Shell(dir.Path("."), line + " | tr -d '\\r'").out;
    };
    const std::string out = by("1");
    EXPECT_EQ(by("3"), out) << options;
    return out;
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
  // A clock of 2^64 ns, beyond what --begin takes.
  dir.Write("long.vcd",
            "$timescale 1ns $end $var wire 1 ! a $end $enddefinitions $end #0 0! "
            "#18446744073709551615 1!\n");
  // A bus bit by bit; a name twice, one that is no net here, and one of a type without bits.
  dir.Write("bus.vcd",
            "$timescale 1ns $end $scope module top $end $var wire 2 ! d [1:0] $end\n"
            "$var real 64 r level $end $upscope $end $enddefinitions $end #0 b0 ! #1 b1 !\n");
  dir.Write("nets.txt", "# nets\nd_0\nd_1\nd_1\nd_2\nlevel\n");
  // Modules in one another, as only a corrupt dump has them: their paths grow with the square.
  dir.Write("deep.sh",
            "awk 'BEGIN { for (i = 0; i < 6000; ++i) print \"$scope module d\" i \" $end $var wire "
            "1 ! a $end\";\n"
            "for (i = 0; i < 6000; ++i) print \"$upscope $end\"; print \"$enddefinitions $end #0 "
            "0! #9 1! \" }'\n");
  ExpectRuns(
      dir,
      R"(kesncd profile d.vcd --windows 2 => 0 => begin +end +toggles .* bar\n0s +50ns +10 .* #+\n50ns +100ns +5 .*\n15 toggles in 2 windows\n
     => kesncd: d.vcd: dumping was off for 10 of 100 ticks, .*\n
kesncd profile - --windows 3 --format csv -q < d.vcd | cut -d, -f1,2,4 | tail -n +2 | tr -d '\r' => 0 => 0,3\d,\d+\n3\d,\d+,\d+\n\d+,100,\d+\n
kesncd profile - --windows 3 < d.vcd >/dev/null => 0 =>  => (.|\n)*standard input: its span was not known .*\n
kesncd profile - --windows 200 --format csv -q < d.vcd | wc -l => 0 => 101\n
gzip -k d.vcd && kesncd profile d.vcd.gz --windows 7 -o a.csv -q && kesncd profile d.vcd --windows 7 -o b.csv -q && cmp a.csv b.csv => 0 => 
kesncd profile d.vcd --windows 7 --jobs 3 -o c.csv -q && cmp b.csv c.csv => 0 => 
kesncd profile d.vcd --peak 20ns --jobs 3 --format csv -q | head -2 | tail -1 | tr -d '\r' => 0 => all,/,5,1,10,30\n
kesncd report d.vcd --jobs 1 -q > 1.html && kesncd report d.vcd --jobs 3 -q | cmp - 1.html => 0 => 
kesncd profile d.vcd --windows 4 --clock clk => 2 =>  => kesncd: --windows, --window, .*\n.*\n
kesncd profile d.vcd --values 4 => 2 =>  => kesncd: --values is for --by\n.*\n
kesncd profile d.vcd --window 0 => 2 =>  => kesncd: --window and --peak: 0 is no length\n.*\n
kesncd profile d.vcd --window 1ps -q => 2 =>  => kesncd: d.vcd: a window of less than a tick .*\n
kesncd profile flat.vcd --window 1ns -q => 2 =>  => kesncd: flat.vcd: has no time scale, .*\n
kesncd profile flat.vcd -q --format csv --windows 1 | tr -d '\r' => 0 => begin,end,observed,toggles,toggles_per_us\n0,5,5,1,\n
kesncd profile d.vcd --by 'state[0]' -q => 1 =>  => kesncd: d.vcd: state\[0\] is one bit of .*: name all of it\n
kesncd profile d.vcd --clock state -q => 1 =>  => kesncd: d.vcd: state is no signal of one bit\n
kesncd profile d.vcd --clock '' => 2 =>  => kesncd: --clock: an empty text is no signal\n.*\n
kesncd profile long.vcd --peak 10ns >/dev/null => 0 =>  => kesncd: long.vcd: .* second reading, which no time of an option reaches.*\n
sh deep.sh > deep.vcd; kesncd profile deep.vcd --depth 9999 -q | tail -1 => 0 => 1 toggles in 9 windows; 5994 modules with fewer toggles .*\n
kesncd profile deep.vcd --depth 9999 -q --format csv => 2 =>  => kesncd: the paths of modules down to this depth have more than .*\n
kesncd profile d.vcd --by none -q => 1 =>  => kesncd: d.vcd: no signal none\n
kesncd profile d.vcd --by state --values 1 --format csv | tail -1 => 0 => others,.*\r\n => (.|\n)*d.vcd: state has more than 1 values: .*\n
kesncd profile d.vcd --scope none -q => 1 =>  => kesncd: d.vcd: no scope none; .*\n
kesncd profile d.vcd --begin 200ns -q => 1 =>  => kesncd: d.vcd: nothing lies in the window\n
kesncd report d.vcd -o r.html -q --sdc c.sdc && grep -c '"name":"core","mhz":50,"reported_mhz":40,"reported_by":"SDC"' r.html => 0 => 1\n
kesncd report odd.vcd -o odd.html -q && grep -c '"name":\["","\\u003c/script>\\u003cimg>"\]' odd.html => 0 => 1\n
grep -c '</script><img>' odd.html => 1 => 0\n
kesncd report - -q < d.vcd | grep -c '"findings"' => 1 => 0\n
kesncd report bus.vcd -q --nets nets.txt | grep -o '"reached":.{"what":[^]]*' => 0 => "reached":.\{"what":"nets","reached":2,"total":4,"source":"nets.txt"\}\n
kesncd report bus.vcd -o bus.html --nets nets.txt => 0 =>  => (.|\n)*kesncd: bus.vcd: nets are looked for in top; --top .*\n
kesncd report bus.vcd -q --nets nets.txt --top none => 1 =>  => kesncd: bus.vcd: no scope none; .*\n
kesncd report bus.vcd -q --top top => 2 =>  => kesncd: --top is for --nets\n.*\n
kesncd report d.vcd -o d.csv => 2 =>  => kesncd: d.csv: ends in .csv, but this command writes html\n.*\n
ln d.vcd d.html; kesncd report d.vcd -o d.html => 2 =>  => kesncd: d.html: is an input too\n)");
}

// What a database holds over time is what the dump says; what it does not hold is refused.
TEST(ProfileCommand, TakesDatabasesForTheWindowsThatTheyHold) {
  const TempDir dir;
  dir.Write("d.vcd", CaseIn(kCases, "shared port").dump);
  dir.Write("c.sdc", "create_clock -period 25 -name core [get_ports clk]\n");
  dir.Write("q.sdc", "create_clock -period 25 -name core [get_ports q]\n");
  dir.Write("flat.vcd", "$var wire 1 ! a $end $enddefinitions $end #0 0! #5 1! \n");
  // A forger makes the sums of empty tables that of another one.
  dir.Write("forge.sql",
            "delete from time_window; delete from module_toggles;\n"
            "update run set value = 1 where name = 'profile_folded';\n"
            "update run set value = (select value from run where name = 'checksum_dumping_gap')\n"
            "  where name in ('checksum_time_window', 'checksum_module_toggles');\n");
  dir.Write("same",
            "for more in '' '--depth 3' '--scope top/a' '--scope b --depth 1'; do\n"
            "  kesncd profile d.vcd $1 $more --format json -q > a.json\n"
            "  kesncd profile d.kact $more --format json -q | cmp - a.json || echo \"$1 $more\"\n"
            "done\n"
            "kesncd report d.kact -q | sed 's/\"notes\":.*\"modules\":/\"modules\":/' > a.html\n"
            "kesncd report d.vcd -q $1 | sed 's/\"findings\":.*\"reached\"/\"reached\"/; "
            "s/\"notes\":.*\"modules\":/\"modules\":/' | cmp - a.html || echo report $1\n");
  ExpectRuns(dir,
             R"(kesncd activity d.vcd -q -o d.kact && sh same => 0 => 
kesncd activity d.vcd -q --jobs 3 -o e.kact && cmp d.kact e.kact; kesncd activity d.kact -q -o e.kact; cmp d.kact e.kact => 0 => 
kesncd activity d.vcd -q --windows 7 -o d.kact && sh same '--windows 7' => 0 => 
kesncd profile d.kact --windows 7 -q --format csv | wc -l => 0 => 8\n
kesncd profile d.kact --windows 8 -q => 2 =>  => kesncd: d.kact: holds 7 equal parts of the span, not 8 .*\n
kesncd profile d.kact --clock clk -q => 2 =>  => kesncd: d.kact: a database does not hold when each .*\n
kesncd profile d.kact --begin 15ns -q => 2 =>  => kesncd: d.kact: holds the figures of all of the dump, .*\n
kesncd report d.kact --sdc c.sdc -q | grep -c '"name":"core","mhz":50,' => 0 => 1\n
kesncd report d.kact --sdc q.sdc -q => 2 =>  => kesncd: d.kact: holds when signals toggle that are .* with clocks on top/b/q needs the dump\n
kesncd report d.kact --windows 8 -q => 2 =>  => kesncd: d.kact: holds 7 .*\n
kesncd activity d.kact -q --windows 9 -o e.kact => 2 =>  => kesncd: d.kact: holds 7 .*\n
kesncd activity d.vcd -q --window 30ns --begin 15ns -o d.kact && kesncd profile d.kact -q --format csv --begin 15ns | cut -d, -f1,4 | tr -d '\r' => 0 => begin,toggles\n15,6\n45,.*\n75,.*\n
kesncd activity - -q --windows 3 -o p.kact < d.vcd && kesncd profile p.kact -q --format csv > a && kesncd profile - -q --windows 3 --format csv < d.vcd | cmp - a => 0 => 
kesncd activity d.vcd -q --no-profile -o n.kact && kesncd profile n.kact -q => 2 =>  => kesncd: n.kact: holds no figures over time: .*--no-profile.*\n
kesncd merge d.kact d.kact -q -o m.kact && kesncd profile m.kact -q => 2 =>  => kesncd: m.kact: holds no figures over time: it was merged from several runs, .*\n
kesncd activity flat.vcd -q -o z.kact && sqlite3 z.kact < forge.sql && kesncd profile z.kact -q => 2 =>  => kesncd: z.kact: is a corrupt database: .*\n
kesncd report z.kact -q -o z.html => 2 =>  => kesncd: z.kact: is a corrupt database: .*\n
kesncd activity d.vcd --windows 5 => 2 =>  => kesncd: --windows, --window and --no-profile are for a database; .*\n.*\n)");
}

}  // namespace
}  // namespace orsa::kesncd
