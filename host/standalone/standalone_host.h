// A host for programs that have no design application: the operations that the library leaves to
// the host, over plain text files. A program links kesncd-host beside kesncd and fills in what the
// design application would know:
//
//   using namespace orsa::kesncd::standalone;
//
//   PowerDocument document;                       // for CreateKesSigFreq
//   std::string message;
//   if (!document.ReadConnections("soc_connections.csv", message)) { ... message ... }
//   auto records = analyser.CreateKesSigFreq(&document, 10.0, true);
//
//   analyser.ncdFile = "soc_nets.txt";            // for ExtractNCD
//   if (analyser.ExtractNCD() == 0) { ... DesignMessage() ... }
//   for (const NetFrequency& net : LastExtraction().nets) { ... }
//
// A design is a file of net names, one a line; blanks around a name and blank lines do not count.
// The design is named like the file, without folder and extension. A second source, the
// preferences, is not read but must be there when it is named (the library names "." for none).
//
// There is one design database in a process, as with the design application. No threads.
#ifndef KESNCD_HOST_STANDALONE_STANDALONE_HOST_H_
#define KESNCD_HOST_STANDALONE_STANDALONE_HOST_H_

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/power_data.h"

#pragma GCC visibility push(default)

namespace orsa {
namespace kesncd {
namespace standalone {

/// A power-data document that the program puts together. It owns its sections.
///
/// GetSection works on documents of this class only.
class PowerDocument : public PD_DATA {
 public:
  /// A document without sections.
  PowerDocument();
  ~PowerDocument();
  PowerDocument(const PowerDocument&) = delete;
  PowerDocument& operator=(const PowerDocument&) = delete;

  /// Reads the table "Hierarchical Connections" from a CSV file: a row a line of kind, column 1
  /// and, where the kind has one, column 2. Blanks around an unquoted cell do not count, nor do
  /// blank lines; kinds are not checked. False, with the document as it was and `message` set to
  /// "FILE:LINE: what is wrong" (or "FILE: ..."), when the file is not such a table.
  bool ReadConnections(const std::string& path, std::string& message);

  /// Adds a table under `name`, in place of a section of that name.
  void AddTable(const std::string& name, std::vector<std::vector<std::string>> rows);
  /// Adds a section that is no table under `name`, in place of a section of that name.
  void AddOtherSection(const std::string& name);

 private:
  friend class ::PD_DATA;

  std::map<std::string, std::unique_ptr<PD_SECTION>> sections_;
};

/// A net of the design in an extraction.
struct NetFrequency {
  std::string name;
  bool isKnown;      ///< whether the extraction was given a frequency for it
  double frequency;  ///< in MHz; 0.0 when it was not
};

/// What an extraction was given, and what that comes to for the nets of the design.
struct Extraction {
  std::string designName;
  std::string scope;
  std::string option;
  std::map<std::string, double> frequencies;
  std::vector<NetFrequency> nets;  ///< in the order of the design's file
};

/// The last extraction of the process; empty before the first.
const Extraction& LastExtraction();

/// Why the last loading of the design failed: "FILE: what is wrong". Empty when it did not.
const std::string& DesignMessage();

}  // namespace standalone
}  // namespace kesncd
}  // namespace orsa

#pragma GCC visibility pop

#endif  // KESNCD_HOST_STANDALONE_STANDALONE_HOST_H_
