// The program from the outside: exit statuses, what goes to which stream, formats, and that every
// console block of the pages shows what really happens.
#include <regex>
#include <sstream>

#include "tests/shell.h"
#include "tests/support.h"

namespace orsa::kesncd {
namespace {

const char kDump[] =
    "$timescale\n1ns\n$end\n$scope module tb $end\n$var wire 1 ! clk $end\n"
    "$var wire 2 # d [1:0] $end\n$scope module u1 $end\n$var wire 1 \" a,\"b $end\n$upscope $end\n"
    "$upscope $end\n$enddefinitions $end\n#0\n1!\n0!\nb1 #\n1\"\n1!\n#30\n";

TEST(Program, EndsAsItSays) {
  const TempDir dir;
  dir.Write("d.vcd", kDump);
  dir.Write("flat.vcd", std::string(kDump).replace(0, 19, ""));
  dir.Write("odd.vcd", std::string(kDump).replace(11, 3, "1sec"));
  dir.Write("late.vcd", "1!\n$scope module tb $end\n");
  dir.Write("nets", "d_1\nclk\n\nnone\n");
  dir.Write("rows.csv", "SIGNAL,clk\nINPUT,d_1_,PIO\nOUTPORT,clk,pin\nOUTPUT,gone,SLICE\n");
  dir.Write("twr", "Preference | Constraint | Actual | Levels\n" + std::string(60, '-') +
                       "\n | | | \nFREQUENCY NET \"clk\" 50.0 MHz ; | 50.0 MHz | 112.5 MHz | 3\n"
                       " | | | \n" +
                       std::string(60, '-') + "\n");
  dir.Write("names", "# nets\n\n  clk \r\nnone\n");
  const struct {
    const char* arguments;
    int status;
    const char* out;    // a regular expression for standard output
    const char* error;  // and for standard error
  } rows[] = {
      {"top d.vcd", 0, "tb\n", ""},
      {"flat d.vcd", 0, "signal +freq_mhz\nclk +33\\.3+\\d*\nd_0 +0\nd_1 +0\n",
       "kesncd: d.vcd: top module is tb; .*\n"},
      {"flat d.vcd --top tb --signal none --format csv", 0, "signal,freq_mhz\r\nd_0,0\r\nd_1,0\r\n",
       ""},
      {"flat d.vcd --top tb --signals-from names --format json", 0,
       "\\{\n  \"dump\": \"d.vcd\",\n  \"top\": \"tb\",\n  \"timescale_ns\": 1.0,\n"
       "  \"start_tick\": 0.0,\n  \"end_tick\": 30.0,\n  \"signals\": \\[\n"
       "    \\{\"signal\":\"clk\",\"freq_mhz\":33.3+\\d*\\},\n    "
       "\\{\"signal\":\"d_0\",\"freq_mhz\":0.0\\},\n"
       "    \\{\"signal\":\"d_1\",\"freq_mhz\":0.0\\}\n  \\]\n\\}\n",
       ""},
      {"flat flat.vcd --top tb", 0, "(.|\n)*clk +0\n(.|\n)*",
       "(.|\n)*no time scale was read(.|\n)*"},
      {"flat d.vcd --top u1 --signal none", 1, "signal +freq_mhz\n", ".*no signal of u1 .*\n"},
      {"flat d.vcd --top no", 1, "",
       "kesncd: d.vcd: ERROR : Not match top module name.\n"
       "kesncd: d.vcd: its modules are tb, tb/u1; .*\n"},
      {"flat no.vcd --top tb", 2, "", "kesncd: no.vcd: No such file.*\n"},
      {"flat . --top tb", 2, "", "kesncd: .: is a directory\n"},
      {"flat d.vcd --top tb --signals-from no", 2, "", "kesncd: no: cannot be read\n"},
      {"flat", 2, "", "kesncd: DUMP is required\nkesncd: --help .*\n"},
      {"", 2, "", "kesncd: .*\n.*\n"},
      {"flat d.vcd --format xml", 2, "", "(.|\n)*xml not in (.|\n)*"},
      {"top d.vcd > /dev/full", 3, "", "kesncd: standard output: .*\n"},
      {"flat d.vcd --top tb > /dev/full", 3, "", "kesncd: standard output: .*No space.*\n"},
      {"flat d.vcd --top tb -o no/such/file", 3, "", "kesncd: no/such/file: .*\n"},
      {"tree d.vcd --format csv", 0,
       "path,kind,signals,changes,mean_freq_mhz,max_freq_mhz,tree_signals,tree_changes,"
       "tree_mean_freq_mhz,tree_max_freq_mhz\r\n"
       "tb,module,2,4,16\\.6+\\d*,33\\.3+\\d*,3,5,11\\.1+\\d*,33\\.3+\\d*\r\n"
       "tb/u1,module,1,1,0,0,1,1,0,0\r\n",
       ""},
      {"tree d.vcd --top tb/u1 --signals --format csv", 0,
       ".*\r\ntb/u1,module,1,1,.*\r\n\"tb/u1/a,\"\"b\",signal,,1,0,0,,,,\r\n", ""},
      {"tree d.vcd --depth 0", 0, "path .*\ntb .*\n", ""},
      {"tree d.vcd --top none", 1, "path .*\n", ".*no scope none .*\n"},
      {"find d.vcd --names-from names d_1_ CLK", 0,
       "name +scope +signal +freq_mhz\nd_1_ +tb +d\\[1:0\\] +0\nCLK +not found +- +-\n"
       "clk +tb +clk +33\\.3+\\d*\nnone +not found +- +-\n2 of 4 found\n",
       ""},
      {"find d.vcd CLK --ignore-case --module TB --format csv", 0, ".*\r\nCLK,tb,clk,.*\r\n", ""},
      {"find d.vcd clk --module u1", 1, "(.|\n)*0 of 1 found\n", ""},
      {"find d.vcd", 2, "", "kesncd: no names to find\n"},
      {"flat d.vcd --top tb --reader grammar --format csv", 0,
       "signal,freq_mhz\r\nclk,33\\.3+\\d*\r\nd\\[1:0\\],0\r\n",
       "kesncd: d.vcd: read through prepare: codes that the grammar reader .*\n"},
      {"flat odd.vcd --top tb --reader grammar --as-is", 2, "",
       "kesncd: odd.vcd: its time scale is .*\n"},
      {"flat d.vcd --top no --reader grammar --as-is", 1, "", "(.|\n)*no is not in it\n(.|\n)*"},
      {"flat late.vcd --top tb", 2, "", "kesncd: late.vcd: declares no variable; .*\n"},
      {"flat late.vcd --top tb --reader grammar --as-is", 2, "",
       "ERROR: syntax error at (.|\n)*kesncd: late.vcd: the grammar reader does not accept it\n"},
      {"clocks twr --format csv", 0, "clock,freq_mhz\r\nclk,50\r\n", ""},
      {"clocks twr --mode 2 --earlier-reader", 0, "clock +freq_mhz\nclk +112.5\n", ""},
      {"clocks twr --dump d.vcd", 0, "clock +freq_mhz +dump_freq_mhz\nclk +50 +33.3+\\d*\n",
       "kesncd: d.vcd: clock clk runs at 33.3333 MHz here, .*\n"},
      {"clocks d.vcd", 1, "clock +freq_mhz\n", ".*no clock frequencies.*\n"},
      {"clocks no", 2, "", "kesncd: no: cannot be read\n"},
      {"clocks twr --mode 3", 2, "", "(.|\n)*"},
      {"power d.vcd rows.csv --top tb --default-freq 10 --format csv", 0,
       "kind,signal,component,type,port,net,freq_mhz\r\nsignal,clk,,,,,33\\.3+\\d*\r\n"
       "input,clk,d_1_,PIO,,,0\r\nport,clk,d_1_,PIO,pin,clk,33\\.3+\\d*\r\n"
       "output,clk,gone,SLICE,,,\r\n",
       ""},
      {"power d.vcd rows.csv --top tb", 0, "(.|\n)*output .* unknown\n", ""},
      {"power d.vcd names --top tb", 2, "", "kesncd: names:\\d+: .*\n"},
      {"extract d.vcd --top tb --nets nets --timing twr --format csv", 0,
       "net,freq_mhz,source\r\nd_1,0,dump\r\nclk,33\\.3+\\d*,dump\r\nnone,,\r\n",
       "kesncd: d.vcd: clock clk runs at 33.3333 MHz here, but at 50 MHz in .*\n"
       "kesncd: nets: 1 of 3 nets have no frequency: .*; --unmatched FILE lists them\n"},
      {"extract d.vcd --nets nets --unmatched /dev/stdout", 0,
       "none\nnet (.|\n)*\n2 of 3 nets reached, 2 from .*\n", ".* nothing reached them\n"},
      {"extract d.vcd --top tb --nets no", 2, "", "kesncd: no: .*\n"},
      {"prepare d.vcd", 0, "\\$timescale\n1ns\n\\$end\n\\$scope module tb \\$end\n(.|\n)*", ""},
      {"prepare flat.vcd --timescale 1ns -o p.vcd && kesncd check p.vcd && rm p.vcd", 0,
       "finding .*\n0 findings; 3 signals with 5 changes in 30 ns; a good top module is tb\n"
       "modules with signals: tb, tb/u1\n",
       ""},
      {"prepare flat.vcd -o /dev/null", 0, "", "kesncd: flat.vcd: it has no time scale, .*\n"},
      {"prepare d.vcd --begin 1us", 1, "", "kesncd: d.vcd: nothing lies in the window\n"},
      {"prepare d.vcd --begin 1.5", 2, "", "kesncd: .*1.5 is no time such as 1.5us or 10ps\n.*\n"},
      {"prepare d.vcd --begin 2ns --end 1ns", 2, "", "kesncd: .*lies before --begin\n.*\n"},
      {"prepare d.vcd --top none", 1, "", "kesncd: d.vcd: has no scope none\n"},
      {"prepare names", 2, "", "kesncd: names: declares no variable; is it a VCD file\\?\n"},
      {"prepare .", 2, "", "kesncd: .: is a directory\n"},
      {"prepare d.vcd > /dev/full", 3, "", "kesncd: standard output: .*No space.*\n"},
      {"check flat.vcd --format csv", 1,
       "finding,count,of,line,example,remedy\r\nno time scale: all (.|\r|\n)*", ""},
      {"check d.vcd --format json", 1,
       "\\{\n  \"dump\": \"d.vcd\",\n  \"timescale_ns\": 1.0,(.|\n)*\"span_ns\": 30.0,(.|\n)*"
       "\"modules\": \\[\"tb\",\"tb/u1\"\\],(.|\n)*",
       ""},
      {"check no.vcd", 2, "", "kesncd: no.vcd: .*\n"},
      {"--help > /dev/full", 3, "", "kesncd: standard output: cannot write\n"},
      {"tree d.vcd >&-", 3, "", "kesncd: standard output: .*\n"},
      {"flat d.vcd --top tb --reader grammar --as-is <&- >&-", 3, "",
       "kesncd: standard output: .*\n"},
      {"flat d.vcd --top tb --format csv -o o.csv <&- >&- && cat o.csv && rm o.csv", 0,
       "signal,freq_mhz\r\n(.|\r|\n)*", ""},
      {"clocks /proc/self/mem", 2, "", "kesncd: /proc/self/mem: cannot be read\n"},
      {"check /proc/self/mem", 2, "", "kesncd: /proc/self/mem: .*\n"},
      {"prepare /proc/self/mem", 2, "", "kesncd: /proc/self/mem: .*\n"},
      {"--version", 0, "kesncd \\d+\\.\\d+\\.\\d+\n", ""},
      {"tree --help", 0, "[^\n]*\n\nExamples:\n(.|\n)*", ""},
  };
  for (const auto& row : rows) {
    const Outcome run = Shell(dir.Path("."), "kesncd " + std::string(row.arguments) + " 2>errors");
    EXPECT_EQ(run.status, row.status) << row.arguments;
    EXPECT_TRUE(std::regex_match(run.out, std::regex(row.out))) << row.arguments << "\n" << run.out;
    const std::string errors = ReadAll(dir.Path("errors"));
    EXPECT_TRUE(std::regex_match(errors, std::regex(row.error))) << row.arguments << "\n" << errors;
  }
}

TEST(Program, ReplacesAFileOnlyByACompleteOne) {
  const TempDir dir;
  dir.Write("d.vcd", kDump);
  dir.Write("out", "earlier");
  EXPECT_EQ(Shell(dir.Path("."), "kesncd flat d.vcd --top no -o out 2>&1").status, 1);
  EXPECT_EQ(Shell(dir.Path("."), "kesncd prepare d.vcd --begin 1s -o out 2>&1").status, 1);
  EXPECT_EQ(ReadAll(dir.Path("out")), "earlier");
  EXPECT_EQ(Shell(dir.Path("."), "kesncd find d.vcd d[0] -o out 2>&1").out, "");
  EXPECT_EQ(ReadAll(dir.Path("out")),
            "name  scope  signal  freq_mhz\nd[0]  tb     d[1:0]         0\n1 of 1 found\n");
  EXPECT_EQ(Shell(dir.Path("."), "ulimit -f 0; kesncd prepare d.vcd -o out 2>&1").status, 3);
  EXPECT_EQ(ReadAll(dir.Path("out")).substr(0, 5), "name ") << "a full disk";
  EXPECT_EQ(Shell(dir.Path("."), "ls").out, "d.vcd\nout\n");
  const std::string closed = "(sleep 0.2; kesncd tree d.vcd 2>errors; echo $? >status) | true";
  EXPECT_EQ(Shell(dir.Path("."), closed + "; sleep 0.5; cat status errors").out,
            "3\nkesncd: standard output: cannot write: Broken pipe\n");
}

/// The commands of a page's console blocks with what the page shows for each.
std::vector<std::pair<std::string, std::string>> ConsoleBlocks(const std::string& page) {
  std::vector<std::pair<std::string, std::string>> shown;
  std::istringstream lines(ReadAll(page));
  bool inside = false;
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind("```", 0) == 0) {
      inside = line == "```console";
    } else if (inside && line.rfind("$ ", 0) == 0) {
      shown.emplace_back(line.substr(2), "");
    } else if (inside && !shown.empty()) {
      shown.back().second += line + "\n";
    }
  }
  return shown;
}

/// Whether a text is what a page shows, where a line "..." stands for any lines.
bool IsShown(const std::string& text, const std::string& shown) {
  std::istringstream have(text);
  std::istringstream want(shown);
  std::string got;
  bool skips = false;
  for (std::string line; std::getline(want, line);) {
    if (line == "...") {
      skips = true;
      continue;
    }
    while (std::getline(have, got) && skips && got != line) {
    }
    if (!have || got != line) return false;
    skips = false;
  }
  return skips || !std::getline(have, got);
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
