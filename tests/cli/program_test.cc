// The program from the outside: exit statuses, what goes to which stream, formats, and that every
// console block of the pages shows what really happens.
#include <regex>
#include <sstream>

#include "tests/support/shell.h"
#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

const std::string kDump = Dump(
    "SCALE~$scope module tb $end~CLK~$var wire 2 # d [1:0] $end~$scope module u1 $end~"
    "$var wire 1 \" a,\"b $end~UP~UP~END~#0~1!~0!~b1 #~1\"~1!~#30~");

TEST(Program, EndsAsItSays) {
  const TempDir dir;
  dir.Write("d.vcd", kDump);
  dir.Write("flat.vcd", kDump.substr(19));
  dir.Write("odd.vcd", std::string(kDump).replace(11, 3, "1sec"));
  dir.Write("late.vcd", "1!\n$scope module tb $end\n");
  dir.Write("nets", "d_1\nclk\n\nnone\n");
  dir.Write("rows.csv", "SIGNAL,clk\nINPUT,d_1_,PIO\nOUTPORT,clk,pin\nOUTPUT,gone,SLICE\n");
  dir.Write("twr", "Preference | Constraint | Actual | Levels\n" + std::string(60, '-') +
                       "\nFREQUENCY NET \"clk\" 50.0 MHz ; | 50.0 MHz | 112.5 MHz | 3\n | | |\n");
  dir.Write("names", "# nets\n\n  clk \r\nnone\n");
  ExpectRuns(dir, R"(kesncd top d.vcd => 0 => tb\n
kesncd flat d.vcd => 0 => signal +freq_mhz\nclk +33\.3+\d*\nd_0 +0\nd_1 +0\n => kesncd: d.vcd: top module is tb; .*\n
kesncd flat d.vcd --top tb --signal none --format csv => 1 => signal,freq_mhz\r\n => (.|\n)*tb has no signal none\n.*\n
kesncd flat d.vcd --top tb --signal d --signal d[0] --format csv => 0 => signal,freq_mhz\r\nd_0,0\r\nd_1,0\r\n
kesncd flat d.vcd --top tb --signal d[1] --signal tb/none --format csv => 0 => signal,freq_mhz\r\nd_1,0\r\n => .*no signal tb/none\n
kesncd flat d.vcd --as-is --top tb --signal none --format csv => 0 => signal,freq_mhz\r\nd_0,0\r\nd_1,0\r\n
kesncd flat d.vcd --top tb --signals-from names --format json => 0 => \{\n  "dump": "d.vcd",\n  "top": "tb",\n
      "timescale_ns": 1.0,\n  "start_tick": 0.0,\n  "end_tick": 30.0,\n  "figures": "host",\n  "signals": \[\n
        \{"signal":"clk","freq_mhz":33.3+\d*\}\n  \]\n\}\n => .*no signal none\n
kesncd flat flat.vcd --top tb => 0 => (.|\n)*clk +-\n(.|\n)* => .*it has no time scale, so no frequency is known.*\n
kesncd flat flat.vcd --top tb --as-is => 0 => (.|\n)*clk +0\n(.|\n)* => .*no time scale was read.*\n
kesncd flat d.vcd --top u1 --signal none => 1 => signal +freq_mhz\n => (.|\n)*no signal of tb/u1 .*\n
kesncd flat d.vcd --top no => 1 =>  => kesncd: d.vcd: no scope no; its modules are tb, tb/u1\n
kesncd flat d.vcd --top bt/u1 => 1 =>  => kesncd: d.vcd: no scope bt/u1; did you mean tb/u1\?\n
kesncd flat d.vcd --as-is --top no => 1 =>  => kesncd: d.vcd: ERROR : Not match top module name.\n
    kesncd: d.vcd: its modules are tb, tb/u1; .*\n
kesncd flat no.vcd --top tb => 2 =>  => kesncd: no.vcd: No such file.*\n
kesncd flat . --top tb => 2 =>  => kesncd: .: is a directory\n
kesncd flat d.vcd --top tb --signals-from no => 2 =>  => kesncd: no: No such file.*\n
kesncd flat => 2 =>  => kesncd: DUMP is required\nkesncd: kesncd flat --help .*\n
kesncd flatt d.vcd => 2 =>  => kesncd: flatt is no command; did you mean flat\?\nkesncd: kesncd --help .*\n
kesncd tree d.vcd --dept 1 => 2 =>  => kesncd: --dept is no option; did you mean --depth\?\n.*\n
kesncd tree d.vcd --depth -1 => 2 =>  => kesncd: --depth: -1 is no whole number from 0\n.*\n
kesncd tree d.vcd --depth 99999999999 => 2 =>  => kesncd: --depth: 99999999999 is no whole .*\n.*\n
kesncd tree d.vcd --depth=1x => 2 =>  => kesncd: --depth: 1x is no whole .*\n.*\n
kesncd tree d.vcd --depth 1 --depth 1 => 2 =>  => kesncd: --depth is given twice\n.*\n
kesncd tree d.vcd --depth => 2 =>  => kesncd: --depth needs N\n.*\n
kesncd tree d.vcd --signals=no => 2 =>  => kesncd: --signals takes no value\n.*\n
kesncd tree d.vcd d.vcd => 2 =>  => kesncd: d.vcd: one operand too many\n.*\n
kesncd tree -qqoo d.vcd --depth=0 && cat o && rm o => 0 => path .*\ntb .*\n
kesncd tree --depth 0 -- d.vcd => 0 => path .*\ntb .*\n
kesncd tree d.vcd -o "" => 2 =>  => kesncd: --output: an empty text is no path of a file\n.*\n
for n in nan inf 1e999 -1 x 1e 0x1 ""; do kesncd power d.vcd rows.csv --default-freq "$n"; done 2>&1 |
     grep -c "is no number from 0" => 0 => 8\n
kesncd => 2 =>  => kesncd: .*\n.*\n
kesncd flat d.vcd --format xml => 2 =>  => kesncd: --format: xml is none of table, csv, json\n.*\n
kesncd flat d.vcd --top tb > /dev/full => 3 =>  => kesncd: standard output: .*No space.*\n
kesncd flat d.vcd --top tb -o no/such/file => 3 =>  => kesncd: no/such/file: .*\n
kesncd tree d.vcd --format csv => 0 => path,kind,signals,changes,mean_freq_mhz,max_freq_mhz,tree_signals,tree_changes,
    tree_mean_freq_mhz,tree_max_freq_mhz\r\ntb,module,2,4,16\.6+\d*,33\.3+\d*,3,5,11\.1+\d*,33\.3+\d*\r\n
    tb/u1,module,1,1,0,0,1,1,0,0\r\n
kesncd tree d.vcd --top tb/u1 --signals --format csv => 0 => .*\r\ntb/u1,module,1,1,.*\r\n
    "tb/u1/a,""b",signal,,1,0,0,,,,\r\n
kesncd tree d.vcd --depth 0 => 0 => path .*\ntb .*\n
kesncd tree d.vcd --match none => 1 => path .*\n => kesncd: d.vcd: no module was selected\n
kesncd tree d.vcd --top none => 1 =>  => .*no scope none; its modules .*\n
kesncd find d.vcd --names-from names d_1_ CLK => 0 => name +scope +signal +freq_mhz +status\nd_1_ +tb +d\[1:0\] +0 +found\n
    CLK +- +- +- +not found\nclk +tb +clk +33\.3+\d* +found\nnone +- +- +- +not found\n2 of 4 found\n
kesncd find d.vcd CLK --ignore-case --module tb --format csv => 0 => .*\r\nCLK,tb,clk,.*\r\n
kesncd find d.vcd clk --module u1 => 1 => (.|\n)*0 of 1 found\n
kesncd find d.vcd => 2 =>  => kesncd: no names to find\n
kesncd flat d.vcd --top tb --reader grammar --format csv => 0 => signal,freq_mhz\r\nclk,33\.3+\d*\r\n
    d\[1:0\],0\r\n
kesncd flat odd.vcd --top tb --reader grammar --as-is => 2 =>  => kesncd: odd.vcd: its time scale is .*\n
kesncd flat d.vcd --top no --reader grammar --as-is => 1 =>  => (.|\n)*no is not in it\n(.|\n)*
kesncd flat late.vcd --top tb => 2 =>  => kesncd: late.vcd: declares no variable; .*\n
kesncd flat late.vcd --top tb --reader grammar --as-is => 2 =>  => ERROR: syntax error at (.|\n)*
    kesncd: late.vcd: the grammar reader does not accept it\n
kesncd clocks twr --format csv => 0 => clock,freq_mhz\r\nclk,50\r\n
kesncd clocks twr --mode 2 --earlier-reader => 0 => clock +freq_mhz\nclk +112.5\n
kesncd clocks twr --dump d.vcd => 0 => clock +freq_mhz +dump_freq_mhz\n
    clk +50 +33.3+\d*\n => kesncd: d.vcd: clock clk runs at 33.3333 MHz here, .*\n
kesncd clocks d.vcd => 1 => clock +freq_mhz\n => .*no clock frequencies.*\n
kesncd clocks no => 2 =>  => kesncd: no: No such file.*\n
kesncd clocks twr --mode 3 => 2 =>  => (.|\n)*
kesncd power d.vcd rows.csv --top tb --default-freq 10 --format csv => 0 => kind,signal,component,type,port,net,
    freq_mhz,status\r\nsignal,clk,,,,,33\.3+\d*,found\r\ninput,clk,d_1_,PIO,,,0,found\r\n
    port,clk,d_1_,PIO,pin,clk,33\.3+\d*,found\r\noutput,clk,gone,SLICE,,,,not found\r\n
kesncd power d.vcd rows.csv --top tb => 0 => (.|\n)*output .* unknown +not found\n
kesncd power d.vcd names --top tb => 2 =>  => kesncd: names:\d+: .*\n
kesncd extract d.vcd --top tb --nets nets --timing twr --format csv => 0 => net,freq_mhz,source\r\nd_1,0,dump\r\n
    clk,33\.3+\d*,dump\r\nnone,,\r\n
     => kesncd: d.vcd: clock clk runs at 33.3333 MHz here, but at 50 MHz in .*\n
    kesncd: nets: 1 of 3 nets have no frequency: .*; --unmatched FILE lists them\n
kesncd extract d.vcd --nets nets --unmatched /dev/stdout => 0 => none\nnet (.|\n)*\n
    2 of 3 nets reached, 2 from .*\n => .*: top module is tb; .*\n.* nothing reached them\n
kesncd extract d.vcd --top tb --nets no => 2 =>  => kesncd: no: .*\n
kesncd prepare d.vcd => 0 => \$timescale\n1ns\n\$end\n\$scope module tb \$end\n(.|\n)*
kesncd prepare flat.vcd --timescale 1ns -o p.vcd && kesncd check p.vcd && rm p.vcd => 0 => finding .*\n
    (.|\n)*0 findings.*; 3 signals with 5 changes in 30 ns; a good top module is tb\nmodules with signals: tb, tb/u1\n
kesncd prepare flat.vcd -o /dev/null => 0 =>  => kesncd: flat.vcd: it has no time scale, .*\n
kesncd prepare d.vcd --begin 1us => 1 =>  => kesncd: d.vcd: nothing lies in the window\n
kesncd prepare d.vcd --begin 1.5 => 2 =>  => kesncd: .*1.5 is no time such as 1.5us or 10ps\n.*\n
kesncd prepare d.vcd --begin 2ns --end 1ns => 2 =>  => kesncd: .*lies before --begin\n.*\n
kesncd prepare flat.vcd --begin 1ns => 2 =>  => kesncd: flat.vcd: has no time scale, which a window needs; .*\n
kesncd prepare d.vcd --top none => 1 =>  => kesncd: d.vcd: no scope none; its modules are tb, tb/u1\n
kesncd prepare d.vcd --top bt/u1 => 1 =>  => kesncd: d.vcd: no scope bt/u1; did you mean tb/u1\?\n
sed 's/.*u1.*/$scope module a $end $scope module u1 $end $upscope $end $upscope $end &/' d.vcd | kesncd prepare - --top u1 => 0
     => (.|\n)* => .*: u1 means 2 scopes; taken is tb/u1, not tb/a/u1\n
kesncd prepare names => 2 =>  => kesncd: names: declares no variable; is it a VCD file\?\n
kesncd prepare d.vcd > /dev/full => 3 =>  => kesncd: standard output: .*No space.*\n
kesncd check flat.vcd --format csv => 1 => finding,count,of,line,example,severity,concerns,remedy\r\nno time scale: all (.|\r|\n)*
kesncd check d.vcd --format json => 0 => \{\n  "dump": "d.vcd",\n  "timescale_ns": 1.0,(.|\n)*"span_ns": 30.0,(.|\n)*
    "modules": \["tb","tb/u1"\],(.|\n)*
kesncd --help > /dev/full => 3 =>  => kesncd: standard output: cannot write: No space.*\n
kesncd tree d.vcd >&- => 3 =>  => kesncd: standard output: .*\n
kesncd flat d.vcd --top tb --reader grammar --as-is <&- >&- => 3 =>  => kesncd: standard output: .*\n
kesncd flat d.vcd --top tb --format csv -o o.csv <&- >&- && cat o.csv && rm o.csv => 0 => signal,freq_mhz\r\n(.|\r|\n)*
kesncd clocks /proc/self/mem => 2 =>  => kesncd: /proc/self/mem: Input/output error\n
kesncd check /proc/self/mem => 2 =>  => kesncd: /proc/self/mem: .*\n
kesncd prepare /proc/self/mem => 2 =>  => kesncd: /proc/self/mem: .*\n
kesncd --version => 0 => kesncd \d+\.\d+\.\d+\n
kesncd tree --help => 0 => [^\n]*\n\nExamples:\n(.|\n)*)");
}

TEST(Program, ReplacesAFileOnlyByACompleteOne) {
  const TempDir dir;
  dir.Write("d.vcd", kDump);
  dir.Write("out", "earlier");
  ExpectRuns(dir, R"(kesncd flat d.vcd --top no -o out => 1 =>  => (.|\n)*
kesncd prepare d.vcd --begin 1s -o out => 1 =>  => .*\n
cat out; kesncd find d.vcd d[0] -o out => 0 => earlier
cat out => 0 => name  scope  signal  freq_mhz  status\nd\[0\]  tb     d\[1:0\]         0  found\n1 of 1 found\n
(ulimit -f 0; kesncd prepare d.vcd -o out 2>/dev/null) => 3
head -c 5 out; ls => 0 => name d.vcd\nerrors\nout\n
(sleep 0.2; kesncd tree d.vcd 2>said; echo $? >status) | true; sleep 0.5; cat status said => 0 => 141\n
(sleep 0.2; kesncd tree --help 2>said; echo $? >status) | true; sleep 0.5; cat status said => 0 => 141\n)");
}

/// The commands of a page's console blocks with what the page shows for each.
std::vector<std::pair<std::string, std::string>> ConsoleBlocks(const std::string& page) {
  std::vector<std::string> blocks = Cut(ReadAll(page), "```console\n$ ");
  blocks.erase(blocks.begin());
  std::vector<std::pair<std::string, std::string>> shown;
  for (const std::string& block : blocks) {
    for (std::string command : Cut(Cut(block, "\n```")[0], "\n$ ")) {
      const std::size_t end = (command += '\n').find('\n');
      shown.emplace_back(command.substr(0, end), command.substr(end + 1));
    }
  }
  return shown;
}

/// Whether a text is what a page shows, where a line "..." stands for any lines.
bool IsShown(const std::string& text, const std::string& shown) {
  const std::vector<std::string> parts = Cut(shown, "...\n");
  std::size_t at = 0;
  for (const std::string& part : parts) {
    at = text.find(part, at);
    if (at == std::string::npos) return false;
    at += part.size();
  }
  return text.starts_with(parts.front()) && text.ends_with(parts.back()) &&
         (parts.size() > 1 || text == shown);
}

TEST(Pages, ShowTrueOutput) {
  const std::filesystem::path root = KESNCD_TEST_SOURCE;
  std::vector<std::filesystem::path> pages{root / "README.md"};
  for (const auto& file : std::filesystem::directory_iterator(root / "docs")) {
    if (file.path().extension() == ".md") pages.push_back(file.path());
  }
  std::size_t commands = 0;
  for (const std::filesystem::path& page : pages) {
    const TempDir dir;
    std::filesystem::copy(root / "examples", dir.Path("examples"),
                          std::filesystem::copy_options::recursive);
    for (const auto& [command, shown] : ConsoleBlocks(page.string())) {
      const Outcome run = Shell(dir.Path("."), "(" + command + ") 2>&1 | tr -d '\\r'");
      EXPECT_TRUE(IsShown(run.out, shown)) << page << ": " << command << "\n" << run.out;
      ++commands;
    }
  }
  EXPECT_GE(commands, 10U);
}

}  // namespace
}  // namespace orsa::kesncd
