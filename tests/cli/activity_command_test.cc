// kesncd activity from the outside: rows, files for estimators, what is refused, and the order and
// choice of rows that other commands have too.
#include <regex>

#include "tests/support/shell.h"
#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

// A clock of two names, a bus of which two bits toggle, a bit that comes back through x, one that
// toggles at the end, and a variable without bits.
const std::string kDump = Dump(
    "SCALE~$scope module tb $end~CLK~$var wire 4 # d [3:0] $end~$var real 64 % r $end~"
    "$scope module u1 $end~$var wire 1 \" q $end~$var wire 1 ! clk $end~UP~"
    "$scope module u2 $end~$var reg 1 $ q $end~UP~UP~END~"
    "#0~0!~b0 #~x\"~0$~#5~1!~b1010 #~1\"~#10~0!~x\"~#15~1!~1\"~#20~0!~b0 #~1$~r1 %~");

/// Runs a table in whose texts words in capitals stand for rows of the dump.
void ExpectActivity(std::string table) {
  const TempDir dir;
  dir.Write("d.vcd", kDump);
  dir.Write("flat.vcd", kDump.substr(19));
  dir.Write("none.vcd", "$scope module a $end $upscope $end $enddefinitions $end #0 #5 \n");
  dir.Write("c.sdc",
            "# clocks\nset_units -time ns\ncreate_clock -period 20.0 -name core \\\n"
            "  [get_ports {clk}]; create_clock -period $p tb/clk\n"
            "create_clock -name q -period \"9.95\" -waveform {0 5} [get_ports -quiet tb/clk]\n"
            "create_clock -period 3 [get_pins {lost d}]\n");
  for (const auto& [word, text] :
       {std::pair("BITS", R"(path,t0,t1,tx,tz,tc,ig,freq_mhz,toggle_rate,high\r\n)"),
        {"SUMS", R"(path,bits,toggles,ig,t0,t1,tx,tz,freq_mhz,toggle_rate,high\r\n)"},
        {"CLK", R"(tb/clk,10,10,0,0,4,0,100,200,0.5\r\n)"},
        {"D3", R"(tb/d\[3\],5,15,0,0,2,0,50,100,0.75\r\n)"},
        {"D2", R"(tb/d\[2\],20,0,0,0,0,0,0,0,0\r\n)"},
        {"D1", R"(tb/d\[1\],5,15,0,0,2,0,50,100,0.75\r\n)"},
        {"D0", R"(tb/d\[0\],20,0,0,0,0,0,0,0,0\r\n)"},
        {"U1Q", R"(tb/u1/q,0,10,10,0,0,1,0,0,0.5\r\n)"},
        {"U1C", R"(tb/u1/clk,10,10,0,0,4,0,100,200,0.5\r\n)"},
        {"U2Q", R"(tb/u2/q,20,0,0,0,1,0,25,50,0\r\n)"},
        {"REAL", R"(kesncd: d.vcd: variables of types without bits, left out: [^\n]*\n)"},
        {"AS_CSV", "--format csv -q"},
        {"BIT", "kesncd activity d.vcd --per bit --format csv -q"}}) {
    table = std::regex_replace(table, std::regex(word), text);
  }
  ExpectRuns(dir, table);
}

TEST(ActivityCommand, CountsBitsSignalsAndModules) {
  ExpectActivity(R"(BIT => 0 => BITSCLKD3D2D1D0U1QU1CU2Q
kesncd activity d.vcd --per bit --format csv => 0 => BITS(.|\r|\n)* => REAL
kesncd activity d.vcd AS_CSV => 0 => SUMStb/clk,1,4,0,10,10,0,0,100,200,0.5\r\n
    tb/d\[3:0\],4,4,0,50,30,0,0,25,50,0.375\r\ntb/u1/q,1,0,1,0,10,10,0,0,0,0.5\r\n(.|\r|\n)*
kesncd activity d.vcd --per module AS_CSV => 0 => SUMStb,7,9,1,80,50,10,0,32\.14\d*,64\.28\d*,0.357\d*\r\n
    tb/u1,2,4,1,10,20,10,0,50,100,0.5\r\ntb/u2,1,1,0,20,0,0,0,25,50,0\r\n
kesncd activity d.vcd --scope u1 --per bit AS_CSV --jobs 4 => 0 => BITSU1QU1C
kesncd activity d.vcd --scope tb/u1 --per module AS_CSV => 0 => SUMStb/u1,2,4,(.|\r|\n)*
BIT --begin 5ns --end 10ns --scope u1 => 0 => BITStb/u1/q,0,5,0,0,0,0,0,0,1\r\ntb/u1/clk,0,5,0,0,1,0,100,200,1\r\n
BIT --begin 15ns --end 90ns --match clk => 0 => BITStb/clk,0,5,0,0,1,(.|\r|\n)*
BIT --begin 20ns --match tb/clk => 0 => BITStb/clk,0,0,0,0,0,0,,,\r\n
kesncd activity flat.vcd --per bit AS_CSV --match tb/clk => 0 => BITStb/clk,10,10,0,0,4,0,,,0.5\r\n
kesncd activity flat.vcd -o o => 0 =>  => (.|\n)*kesncd: flat.vcd: it has no time scale, so no rate is known; .*\n
kesncd activity d.vcd --begin 5ns --end 5ns -o o => 0 =>  => REALkesncd: d.vcd: no time was observed, so no rate is known\n
sed '/module tb/d' d.vcd | kesncd activity - --per module --format csv | cut -d, -f1 => 0 => path\nu1\nu2\n => 
    (.|\n)*kesncd: standard input: variables outside every scope, which are in no module's row: 3\n
kesncd activity d.vcd -q --match tb/clk => 0 => path +bits .*\ntb/clk +1 +4 +0 +10 +10 +0 +0 +100 +200 +0\.5\n
kesncd activity d.vcd -q --per bit --format json --match tb/clk => 0 => \{\n  "dump": "d.vcd",\n  "figures": "exact",\n
      "per": "bit",\n  "scope": null,\n  "tick_fs": 1000000,\n  "begin": 0,\n  "end": 20,\n  "observed": 20,\n
      "variables_of_types_without_bits": 1,\n(.|\n)*"bits": \[\n    \{"path":"tb/clk","t0":10,"t1":10,"tx":0,"tz":0,"tc":4,
    "ig":0,"freq_mhz":100.0,"toggle_rate":200.0,"high":0.5\}\n  \]\n\}\n)");
}

TEST(ActivityCommand, SortsAndChoosesRows) {
  ExpectActivity(R"(BIT --sort name => 0 => BITSCLKD0D1D2D3U1CU1QU2Q
BIT --sort toggles --limit 4 => 0 => BITSCLKU1CD3D1
BIT --limit 2 => 0 => BITSCLKD3
BIT --match 'tb/*' --match '**/u2/*' => 0 => BITSCLKD3D2D1D0U2Q
BIT --match 'd[2]' --match 'd\[[01]*' => 0 => BITSD2D1D0
BIT --match none => 1 => BITS => kesncd: d.vcd: no bit was selected\n
kesncd tree d.vcd AS_CSV --sort rate --signals --match '**/u?/*' | cut -d, -f1,4 => 0 => path,changes\ntb/u1/clk,5\n
    tb/u1/q,2\ntb/u2/q,2\n
kesncd tree d.vcd AS_CSV --match 'u*' --sort name --limit 1 | cut -d, -f1 => 0 => path\ntb/u1\n
kesncd flat d.vcd AS_CSV --match 'd_*' --limit 2 --sort name => 0 => signal,freq_mhz\r\nd_0,\d+\r\nd_1,\d+\r\n
kesncd flat d.vcd AS_CSV --as-is --top tb --match '[cd]l*' => 0 => signal,freq_mhz\r\nclk,100\r\n
kesncd flat d.vcd AS_CSV --reader grammar --top tb --match 'tb/d*' => 0 => signal,freq_mhz\r\nd\[3:0\],50\r\n
kesncd find d.vcd clk q d_1_ --sort toggles --limit 2 AS_CSV => 0 => name,.*\r\nclk,tb,clk,.*\r\nd_1_,tb,.*\r\n)");
}

TEST(ActivityCommand, RefusesAndSaysWhy) {
  ExpectActivity(
      R"(sed s/u2/u1/ d.vcd | sed s/tb/u1/ > u.vcd; kesncd activity u.vcd --scope u1 -q AS_CSV | tail -1 => 0 => u1/u1/q,.*\r\n
sed 's/.*u2.*/$scope module a $end $scope module u1 $end/' d.vcd > u.vcd; kesncd activity u.vcd --scope u1 -q => 1 =>  => 
    kesncd: u.vcd: u1 means 2 scopes: tb/u1, tb/a/u1\n
kesncd activity d.vcd --begin 10ns --end 5ns -q => 1 =>  => kesncd: d.vcd: nothing lies in the window\n
kesncd activity d.vcd --begin 21ns -q => 1 =>  => kesncd: d.vcd: nothing lies in the window\n
kesncd activity flat.vcd --begin 1ns -q => 2 =>  => kesncd: flat.vcd: has no time scale, .*\n
kesncd activity none.vcd -q => 2 =>  => kesncd: none.vcd: declares no variable; .*\n
kesncd activity flat.vcd --format saif -q => 2 =>  => kesncd: .*\n
kesncd activity d.vcd --netlist . -q => 2 =>  => kesncd: .: is a directory\n
kesncd activity d.vcd --netlist /dev/null -q => 2 =>  => kesncd: /dev/null: is a netlist without a module\n
echo '{"modules":{"u1":{"netnames":{"q":{"bits":[2]}}}}}' | kesncd activity d.vcd --scope u1 --netlist - --require 95 -q => 1
     =>  => kesncd: -: u1 has no pin of a cell\n
kesncd activity d.vcd --clock q=1ns -q => 1 =>  => kesncd: d.vcd: q means several signals: tb/u1/q, tb/u2/q\n
kesncd activity d.vcd --clock "d[3:0]=1ns" -q => 1 =>  => kesncd: d.vcd: d\[3:0\] is no signal of one bit\n
kesncd activity d.vcd --clock u2/q=1ns -q => 1 =>  => kesncd: d.vcd: u2/q has no period: .*\n
kesncd activity d.vcd --format saif -o /dev/full -q => 3 =>  => kesncd: /dev/full: .*\n
ls => 0 => c.sdc\nd.vcd\nerrors\nflat.vcd\nnone.vcd\nu.vcd\n)");
}

TEST(ActivityCommand, ScalesToTheDesignsClock) {
  ExpectActivity(
      R"(kesncd activity d.vcd --per bit --format csv --match tb/clk --clock clk=20ns => 0
     => BITStb/clk,10,10,0,0,4,0,50,100,0.5\r\n
     => REALkesncd: d.vcd: clk has a period of 10ns here: all times are multiplied by 2 to make it 20ns\n
kesncd activity d.vcd --format saif -q --clock clk=15ns | grep -e 'TIMESC|DURA|clk' -Em3 => 0
     => \s+\(TIMESCALE 100 ps\)\n\s+\(DURATION 300\)\n\s+\(clk \(T0 150\) .*\(TC 4\) \(IG 0\)\)\n
kesncd activity d.vcd --format tcl -q --clock clk=20ns --match clk | grep -v '^#' => 0
     => set_power_activity -pins \[get_pins \{\n  tb/clk\n  tb/u1/clk\n\}\] -activity 2 -duty 0.5\n
kesncd activity d.vcd --format tcl -q --match tb/clk --time-unit 10ns | tail -1 => 0 => .* -activity 2 -duty 0.5\n
kesncd activity d.vcd --sdc c.sdc -o o => 0 =>  => 
    kesncd: c.sdc: clocks without a period .*: 1\nkesncd: d.vcd: has no clock lost, .*\nkesncd: d.vcd: has no clock d, .*\nREAL
    kesncd: d.vcd: clock core has a period of 10ns here, but of 20ns in c.sdc, 2 times as long; --clock clk=20ns .*\n
kesncd activity d.vcd --sdc none.vcd -o o => 0 =>  => kesncd: none.vcd: no create_clock .*\nREAL)");
}

TEST(ActivityCommand, WritesWhatEstimatorsRead) {
  const std::string source = KESNCD_TEST_SOURCE;
  ExpectActivity(
      R"(kesncd activity d.vcd --format saif --strip u1 --root dut | grep -c 'INSTANCE dut\|clk\|(q ' => 0 => 3\n
     => REALkesncd: d.vcd: 2 nets written; 0 left out, .*\n
kesncd activity d.vcd --format tcl --strip tb --scope u2 -q | grep -A1 set_ => 0 => .*\n  u2/q\n
sed 's/[$] q /$ T1 /' d.vcd | kesncd activity - --format saif --unwritten un -o o && cat un => 0 => tb/u2/T1\n
     => (.|\n)* 1 left out, whose names no reader of SAIF takes\n
cp )" +
      source +
      R"(/examples/uart/gates/* . && kesncd activity uart_gates.vcd.gz --netlist uart_gates.json --format csv -o pins.csv => 0 =>  => 
    (.|\n)*: (\d+) of \2 pins of uart_echo reached, 100 %\n
kesncd activity uart_gates.vcd.gz --netlist uart_gates.json --format saif -o pins.saif -q && grep -c '(T0' pins.saif => 0 => 3847\n
gzip -c uart_gates.json | kesncd activity uart_gates.vcd.gz --netlist - --format csv -q | cmp - pins.csv => 0
! command -v yosys >/dev/null || kesncd activity uart_gates.vcd.gz --netlist - --format csv -q < uart_gates.v | cmp - pins.csv => 0
grep -c /_ pins.csv; tail -1 pins.csv | cut -d, -f1 => 0 => \d+\n.*/\w+\n
kesncd activity )" +
      source +
      R"(/examples/uart/uart.vcd -q --netlist uart_gates.json --format tcl --require 99 --unmatched un -o o => 1 =>  => 
    kesncd: .*: 21.55 % of the pins reached are less than the 99 % that --require asks for\n
wc -l < un => 0 => 3018\n)");
}

}  // namespace
}  // namespace orsa::kesncd
