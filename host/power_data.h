// The host's power-data document, as the library calls it: declarations only. The program that
// loads the library defines the operations; a program without a design application finds ready ones
// in host/standalone.
#ifndef KESNCD_HOST_POWER_DATA_H_
#define KESNCD_HOST_POWER_DATA_H_

#include <string>
#include <vector>

#pragma GCC visibility push(default)  // found from the library, which hides its own symbols

/// A section of the document. The library asks by a run-time cast which kind it is.
class PD_SECTION {
 public:
  virtual ~PD_SECTION();
};

/// A table of texts.
class PD_TABLE {
 public:
  int GetRowCount() const { return static_cast<int>(rows.size()); }
  /// The text of a cell, not null; rows and columns are counted from 0.
  const char* GetValueAt(int row, int column);

  std::vector<std::vector<std::string>> rows;
};

/// A section that is a table.
class PD_TBLSECT : public PD_SECTION {
 public:
  PD_TABLE* table;
};

/// The document.
class PD_DATA {
 public:
  /// The section of this name, which stays the document's; null when there is none.
  PD_SECTION* GetSection(const char* name);
};

#pragma GCC visibility pop

#endif  // KESNCD_HOST_POWER_DATA_H_
