// Tables of connections, and the records that they come to. A record reads
// "name@MHz(inputs|outputs)", a component "name:type@MHz[ports]", a port "net/port@MHz".
#include <sstream>
#include <stdexcept>

#include "tests/support/test_host.h"
#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

std::ostream& operator<<(std::ostream& out, const std::vector<KesComp>& components) {
  for (const KesComp& component : components) {
    out << component.name << ":" << component.type << "@" << component.freq << "[";
    for (const KesPort& p : component.outPorts)
      out << p.netName << "/" << p.portName << "@" << p.freq;
    out << "]";
  }
  return out;
}

class PowerTable : public FreshState {
 protected:
  PowerTable() {
    testHost = {};
    testHost.section = &section;
    section.table = &table;
  }

  /// The records of a table given as "KIND first second;...", words that are missing being empty.
  std::string Export(const std::string& rows, bool exact = true) {
    table.rows.clear();
    for (const std::string& row : Cut(rows, ";")) table.rows.push_back(Cut(row + "  ", " "));
    std::ostringstream out;
    for (const KesSigFreq& record : analyser.CreateKesSigFreq(&data, 4.0, exact)) {
      out << record.name << "@" << record.freq;
      out << "(" << record.inputs << "|" << record.outputs << ")";
    }
    return out.str();
  }

  void ExpectAll(const std::string& cases) {
    for (const auto& row : Rows(cases)) EXPECT_EQ(Export(row[0]), row[1]);
  }

  KesNCD analyser;
  PD_DATA data;
  PD_TBLSECT section;
  PD_TABLE table;
};

TEST_F(PowerTable, RowsBecomeRecords) {
  ExpectAll(
      R"(SIGNAL a;INPUT c t;OUTPORT n z;SIGNAL b;OUTPUT d S => a@-1(c:t@-1[n/z@-1]|)b@-1(|d:S@-1[])
SIGNAL a => 
INPUT c t;OUTPUT d t => @-1(c:t@-1[]|d:t@-1[])
INPUT c t;SIGNAL a;OUTPUT d t => a@-1(|d:t@-1[])
SIGNAL a;SIGNAL b;INPUT c t;SIGNAL d;OUTPORT n z;OUTPUT e t => a@-1(|)b@-1(c:t@-1[]|)d@-1(|e:t@-1[])
OUTPORT n z;SIGNAL a;INPUT c t;OUTPUT d t;OUTPORT n z => a@-1(c:t@-1[]|d:t@-1[n/z@-1])
SIGNAL a;signal b;INPUTS c t;;INPUT d t => a@-1(d:t@-1[]|))");
  EXPECT_EQ(testHost.calls.rfind("GetSection Hierarchical Connections; ", 0), 0U);
  testHost.cell = [](PD_TABLE&, int row, int) { return row == 0 ? "SIGNAL" : "INPUT "; };
  EXPECT_EQ(Export(";;"), "");
}

TEST_F(PowerTable, FrequenciesComeFromTheTree) {
  endCycle = 100.0 + startCycle;
  timeScale = 1.0;
  analyser.SetTopModule("top");
  analyser.hierRoot = new VmodHier("top");
  analyser.hierRoot->AddSubMod(new VmodHier("u1"));
  for (const auto& [name, changes] : {std::pair("clk", 3), {"net", 5}, {"idle", 1}, {"Q", 7}}) {
    VmodHier& scope = *name == 'Q' ? *analyser.hierRoot->subMods[0] : *analyser.hierRoot;
    scope.AddSignal(name, "wire", name, 1);
    scope.signals[name].changes = changes;
  }
  // Slices stay unknown as inputs only; a port takes its net's frequency, else its own; an unknown
  // signal takes the mean of its inputs, in which idle is known to be 0 and x counts as 4.
  ExpectAll(R"(SIGNAL clk;OUTPUT x t => clk@10(|x:t@-1[])
SIGNAL CLK;OUTPUT x t => CLK@-1(|x:t@-1[])
SIGNAL net;INPUT clk SLICE;INPUT clk FSLICE;INPUT clk slice => net@20(clk:SLICE@-1[]clk:FSLICE@-1[]clk:slice@10[]|)
SIGNAL s;INPUT clk SLICE;OUTPUT clk SLICE => s@-1(clk:SLICE@-1[]|clk:SLICE@10[])
SIGNAL s;INPUT top SLICE;OUTPORT net clk;OUTPORT x clk;OUTPORT x x => s@-1(top:SLICE@-1[net/clk@20x/clk@10x/x@-1]|)
SIGNAL s;OUTPUT u1 t;OUTPORT x Q => s@-1(|u1:t@-1[x/Q@30])
SIGNAL s;INPUT net t;INPUT x t => s@12(net:t@20[]x:t@-1[]|)
SIGNAL s;INPUT idle t;INPUT x t => s@2(idle:t@0[]x:t@-1[]|)
SIGNAL s;INPUT x t;OUTPUT clk t => s@-1(x:t@-1[]|clk:t@10[])
SIGNAL idle;INPUT clk t => idle@0(clk:t@10[]|))");
  EXPECT_EQ(Export("SIGNAL CLK;OUTPUT x t", false), "CLK@10(|x:t@-1[])");
  topModName = nullptr;
  EXPECT_EQ(Export("SIGNAL clk;INPUT net t"), "clk@-1(net:t@-1[]|)");
}

TEST_F(PowerTable, DocumentsThatAreOdd) {
  EXPECT_TRUE(analyser.CreateKesSigFreq(nullptr, 1.0, true).empty());
  testHost.cell = [](PD_TABLE& read, int row, int column) {
    if (row == 1 && column == 2) read.rows.resize(2);  // the table shrinks while it is read
    return column == 0 && row == 0 ? "SIGNAL" : "INPUT";
  };
  EXPECT_EQ(Export(";;;;"), "INPUT@-1(INPUT:INPUT@-1[]|)");
  for (const int null : {0, 1, 2}) {
    testHost.cell = [null](PD_TABLE&, int, int column) { return column == null ? nullptr : "x"; };
    EXPECT_THROW(Export(";;"), std::logic_error) << null;
  }
  testHost.throwing = "GetSection";
  EXPECT_THROW(Export(""), std::runtime_error);
  testHost = {};
  PD_SECTION other;
  section.table = nullptr;
  for (PD_SECTION* found : std::initializer_list<PD_SECTION*>{nullptr, &other, &section}) {
    testHost.section = found;
    EXPECT_EQ(Export("SIGNAL a;INPUT c t"), "");
  }
}

}  // namespace
}  // namespace orsa::kesncd
