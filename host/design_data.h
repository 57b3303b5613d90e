// The host's design data, as the library calls it: declarations only. The program that loads the
// library defines the operations; a program without a design application finds ready ones in
// host/standalone.
//
// Pointers that the host hands out stay the host's. Where an operation reports success it does so
// with a value other than zero.
#ifndef KESNCD_HOST_DESIGN_DATA_H_
#define KESNCD_HOST_DESIGN_DATA_H_

#include <cstdint>
#include <map>
#include <string>

/// A placed-and-routed design. Only the host knows what is inside.
class NC_DESIGN;

#pragma GCC visibility push(default)  // found from the library, which hides its own symbols

/// Data that the host loads from files.
class FileData {
 public:
  virtual ~FileData();

  /// Whether the state `which` (a number of the host's) holds for the data and its source files.
  int getIsSourceUpdated(int which);
};

/// The design database.
class NcdData : public FileData {
 public:
  /// Name of the loaded design; not null on a loaded object.
  const char* name;

  /// The loaded design, or null.
  NC_DESIGN* findData();
  /// Drops the loaded design.
  int releaseData();
  /// Loads the design from the sources that the registry was given.
  int loadData();
};

/// The process-wide registry of design data.
class CommonData {
 public:
  /// The one registry.
  static CommonData* getGlobalInstance();

  /// Whether there is a design database.
  int isNcdAvailable();
  /// The design database, or null.
  NcdData* findNcdObject();
  /// The current design, or null.
  NC_DESIGN* findNcdPtr();
  /// Names the files to load the design from: the database, and the preferences or ".".
  void setNcdSource(const char* database, const char* preferences);
};

/// One run of the host's extraction of nets.
class NCD_EXTRACTION {
 public:
  NCD_EXTRACTION();
  ~NCD_EXTRACTION();

 private:
  __attribute__((unused)) void* state;  // the host's

 public:
  /// Set before the run; its meaning is the host's.
  std::string option;

  /// Extracts the nets of `design` below `scope` with their `frequencies` in MHz. 0 on failure.
  std::intptr_t extractNCD(NC_DESIGN* design, std::string designName, std::string scope,
                           std::map<std::string, double> frequencies);
};

#pragma GCC visibility pop

#endif  // KESNCD_HOST_DESIGN_DATA_H_
