// The stand-alone host with the shared library, as a program has them.
#include "host/standalone/standalone_host.h"
#include "host/design_data.h"

#include "tests/support/testing.h"

namespace orsa::kesncd::standalone {
namespace {

class StandaloneHost : public ::testing::Test {
 protected:
  TempDir folder;
  KesNCD analyser;
  PowerDocument document;
  std::string message;
};

TEST_F(StandaloneHost, CsvErrorsNameFileAndLine) {
  const std::string cases[][2] = {
      {"SIGNAL,a,\n\nINPUT\n", ":3: 1 columns instead of 2 to 3"},
      {"SIGNAL,a\r\nINPUT,a,b,c\r\n", ":2: 4 columns instead of 2 to 3"},
      {"SIGNAL,\"a\n\",\nx", ":3: 1 columns instead of 2 to 3"},
      {"SIGNAL,a\nINPUT,b\"c,d\n", ":2: error parsing data while strict checking enabled"},
      {"SIGNAL,a\nINPUT,\"b\nSIGNAL,c\n", ":3: a quoted cell is not closed"}};
  for (const auto& [text, error] : cases) {
    const std::string path = folder.Write("table.csv", text);
    EXPECT_FALSE(document.ReadConnections(path, message)) << text;
    EXPECT_EQ(message, path + error);
  }
  EXPECT_FALSE(document.ReadConnections(folder.Path(""), message));
  EXPECT_EQ(message, folder.Path("") + ": cannot be read");
  EXPECT_EQ(document.GetSection("Hierarchical Connections"), nullptr);
}

TEST_F(StandaloneHost, SectionsOfADocument) {
  EXPECT_TRUE(analyser.CreateKesSigFreq(&document, 1.0, true).empty());
  const std::string csv = "SIGNAL, a\n\"INPUT\",\"b,\"\"c\", t \nOUTPORT,n,\r\n\n";
  ASSERT_TRUE(document.ReadConnections(folder.Write("table.csv", csv), message)) << message;
  const KesSigFreq signal = analyser.CreateKesSigFreq(&document, 1.0, true).at(0);
  const KesComp& input = signal.inputs.at(0);
  EXPECT_EQ(signal.name + "/" + input.name + "/" + input.type, "a/b,\"c/t");
  EXPECT_EQ(input.outPorts.at(0).netName + "/" + input.outPorts[0].portName, "n/");
  document.AddOtherSection("Hierarchical Connections");
  EXPECT_TRUE(analyser.CreateKesSigFreq(&document, 1.0, true).empty());
}

TEST_F(StandaloneHost, LoadsReusesAndFails) {
  analyser.signalFreqs = {{"clk", 5.0}, {"unused", 6.0}};
  analyser.extractName = "scope";
  analyser.extractOption = "option";
  analyser.ncdFile = folder.Write("board.nets", "clk\r\n\n  rst_n \nlast");
  EXPECT_NE(analyser.ExtractNCD(), 0) << DesignMessage();
  const Extraction& seen = LastExtraction();
  std::string text = seen.designName + "/" + seen.scope + "/" + seen.option + ":";
  for (const NetFrequency& net : seen.nets) text += net.name + (net.isKnown ? "=5 " : " ");
  EXPECT_EQ(text, "board/scope/option:clk=5 rst_n last ");
  EXPECT_EQ(seen.nets[0].frequency, 5);
  EXPECT_EQ(seen.frequencies, analyser.signalFreqs);

  std::filesystem::remove(analyser.ncdFile);
  analyser.ncdFile = analyser.ncdName = "";
  EXPECT_NE(analyser.ExtractNCD(), 0);  // the loaded design is current
  EXPECT_EQ(analyser.ncdName, "board");
  // Set again, a file may hold another design.
  CommonData::getGlobalInstance()->setNcdSource(folder.Path("board.nets").c_str(), "");
  EXPECT_EQ(analyser.ExtractNCD(), 0);

  analyser.ncdFile = folder.Write("next.nets", "");
  analyser.prfFile = folder.Path("");
  EXPECT_EQ(analyser.ExtractNCD(), 0);
  EXPECT_EQ(DesignMessage(), folder.Path("") + ": cannot be read");
  analyser.ncdFile = analyser.prfFile = "";
  EXPECT_EQ(analyser.ExtractNCD(), 0);  // the failure left nothing to reuse
}

}  // namespace
}  // namespace orsa::kesncd::standalone
