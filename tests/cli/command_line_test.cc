// The command line word by word, what a dump's name alone does, and formats by the names of files.
#include "tests/support/shell.h"
#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

const std::string kDump = Dump(
    "$version tests $end~SCALE~$scope module tb $end~CLK~$var wire 1 # [0] $end~"
    "$var wire 1 $ -x $end~UP~END~#0~1!~1#~1$~0!~#15~1!~0#~#30~");

TEST(CommandLine, TakesWordsAsTheyStand) {
  const TempDir dir;
  dir.Write("d.vcd", kDump);
  ExpectRuns(
      dir,
      R"(kesncd find d.vcd [0] -- -x -- => 0 => (.|\n)*\n\[0\] +tb +.*found\n-x +tb .*\n-- +.*not found\n2 of 3 found\n
kesncd find -- d.vcd clk -q => 0 => (.|\n)*1 of 2 found\n
kesncd find d.vcd '[a,b]' '' => 1 => (.|\n)*\[a,b\] +-.*\n +-.*\n0 of 2 found\n
kesncd flat --format xml --help d.vcd => 0 => Toggle (.|\n)*
kesncd flat --top= d.vcd -q => 0 => (.|\n)*
kesncd tree --depth= 1 d.vcd => 2 =>  => kesncd: --depth: an empty text is no whole .*\n.*\n
kesncd tree d.vcd --output= => 2 =>  => kesncd: --output needs FILE\n.*\n
kesncd tree d.vcd -o => 2 =>  => kesncd: --output needs FILE\n.*\n
kesncd tree d.vcd -xq => 2 =>  => kesncd: -x is no option.*\n.*\n
kesncd tree d.vcd --depth 1 --nonsense=3 => 2 =>  => kesncd: --nonsense is no option\n.*\n
kesncd tree -q -q d.vcd --signals --signals => 0 => (.|\n)*
kesncd tree d.vcd --depth=1 --depth 2 => 2 =>  => kesncd: --depth is given twice\n.*\n
kesncd flat d.vcd --signal clk --signal [0] -q | wc -l => 0 => 3\n
kesncd flat d.vcd --activity -q && head -1 d.vcd.txt && rm d.vcd.txt => 0 => (.|\n)*module \| tb\n
kesncd tree -- -x => 2 =>  => kesncd: -x: No such file.*\n)");
}

TEST(CommandLine, LooksAtAFileThatIsNamedAlone) {
  const TempDir dir;
  dir.Write("d.vcd", kDump);
  dir.Write("a b", kDump.substr(kDump.find("$scope")));
  const std::string look =
      R"(d.vcd: value change dump of tests\n  span +30 ns, from tick 0 to 30 of 1 ns\n
     +signals +3 with 6 value changes\n +modules +tb\n +clocks +tb/clk 33.33 MHz\n +active +tb/clk 33.33 MHz, tb/.*\n
     +check +(.|\n)*Next:\n  kesncd check d.vcd\n  kesncd tree d.vcd\n  kesncd flat d.vcd --top tb -o activity.csv\n)";
  ExpectRuns(dir, "kesncd d.vcd => 0 => " + look + "\nkesncd look d.vcd => 0 => " + look + R"(
kesncd ./d.vcd -q | tail -1 | sh && head -1 activity.csv && rm activity.csv => 0 => signal,freq_mhz\r\n => .*
kesncd 'a b' => 0 => (.|\n)*ticks of unknown length(.|\n)*kesncd check 'a b'\n(.|\n)* => .*no time scale.*\n
kesncd no.vcd => 2 =>  => kesncd: no.vcd: No such file or directory\n
kesncd no/such => 2 =>  => kesncd: no/such: No such file or directory\n
kesncd . => 2 =>  => kesncd: .: is a directory\n
kesncd nosuch => 2 =>  => kesncd: nosuch is no command, and no such file is there\n.*\n
kesncd --nosuch => 2 =>  => kesncd: --nosuch is no option\n.*\n
kesncd - < d.vcd => 2 =>  => kesncd: standard input: can be read only once, .*\n
kesncd d.vcd --depth 1 => 2 =>  => kesncd: --depth is no option\nkesncd: kesncd look --help .*\n)");
}

TEST(CommandLine, ChoosesFormatsByNamesOfFiles) {
  const TempDir dir;
  dir.Write("d.vcd", kDump);
  dir.Write("rows.csv", "Signal,clk\ninput,[0],PIO\nOutPort,x,y\nremark,z\nOUTPUT,gone,SLICE\n");
  ExpectRuns(dir, R"(kesncd tree d.vcd -o x.JSON && head -c 3 x.JSON => 0 => \{\n 
kesncd tree d.vcd -o x.csv && head -c 10 x.csv => 0 => path,kind,
kesncd tree d.vcd -o x.csv.gz && gzip -dc x.csv.gz | head -c 10 => 0 => path,kind,
kesncd tree d.vcd -o x.txt && head -c 8 x.txt => 0 => path  ki
kesncd tree d.vcd -o .csv && head -c 8 .csv => 0 => path  ki
kesncd tree d.vcd -o x.csv --format json && head -c 3 x.csv => 0 => \{\n 
kesncd tree d.vcd -o x.saif; ls x.saif => 2 =>  => kesncd: x.saif: ends in .saif, but this command writes table, .*\nls.*\n
kesncd tree d.vcd -o x.saif --format csv && head -c 10 x.saif => 0 => path,kind,
kesncd prepare d.vcd -o p.vcd.gz && kesncd prepare d.vcd -o p.vcd && gzip -dc p.vcd.gz | cmp - p.vcd => 0
kesncd top p.vcd.gz => 0 => tb\n
kesncd prepare d.vcd -o - | head -c 10 => 0 => \$.*\n?.* => (.|\n)*
ln -s /dev/full full.gz; kesncd prepare d.vcd -o full.gz => 3 =>  => kesncd: full.gz: .*\n
kesncd power d.vcd rows.csv --top tb --format csv | cut -d, -f1-3 => 0 => kind,signal,component\n
    signal,clk,\ninput,clk,\[0\]\nport.*\noutput,clk,gone\n => kesncd: rows.csv: left out are rows .*: remark\n)");
}

}  // namespace
}  // namespace orsa::kesncd
