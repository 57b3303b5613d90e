#include "tests/line_readers.h"

#include <sstream>

#include "kesncd/vcd/change_scanner.h"
#include "tests/support.h"

namespace orsa::kesncd {

Reading ReadDump(Reader reader, std::FILE* stream, bool fast) {
  ResetReaderState();
  useChangeScanner = fast;
  KesNCD analyser;
  analyser.SetTopModule("t");
  Reading reading;
  std::ostringstream text;
  switch (reader) {
    case Reader::Unfiltered:
      reading.complete = analyser.ParseVcdFile(stream);
      break;
    case Reader::Filtered:
      analyser.ParseVcdFile2(stream, {});
      break;
    case Reader::Hierarchical:
      reading.complete = analyser.ParseVcdFileHier(stream, {});
      for (const auto& [code, scopes] : analyser.codeIndex) {
        for (VmodHier* scope : scopes) {
          text << code << scope->signals[code].changes << " ";
          reading.changes += scope->signals[code].changes;
        }
      }
      break;
    case Reader::Grammar:
      reading.complete = ParseVcdFile(stream) == 0;
      break;
  }
  useChangeScanner = true;
  for (int i = 0; i < topMod.GetSignalSize(); ++i) reading.changes += topMod.GetSignalChange(i);
  text << TopModCounts() << " " << timeScale << " " << startCycle << " " << endCycle << " "
       << recording;
  reading.text = text.str();
  return reading;
}

Reading ExpectSamePaths(Reader reader, const std::string& dump) {
  Reading readings[2];
  std::string ends[2];
  for (const bool fast : {false, true}) {
    const TextStream stream(dump);
    readings[fast] = ReadDump(reader, stream, fast);
    ends[fast] = readings[fast].text + (readings[fast].complete ? " " : " gave up ") +
                 std::to_string(std::ftell(stream));
  }
  EXPECT_EQ(ends[true], ends[false]) << "reader " << static_cast<int>(reader) << "\n"
                                     << ::testing::PrintToString(dump.substr(0, 3000));
  return readings[true];
}

}  // namespace orsa::kesncd
