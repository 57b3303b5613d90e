// Frequency records of power tables: what the rows of a table of connections become, and the order
// in which signals are looked up for them. Where a name is looked up is the caller's.
#ifndef KESNCD_MODEL_POWER_RECORDS_H_
#define KESNCD_MODEL_POWER_RECORDS_H_

#include <string>
#include <vector>

#include "kesncd/kesncd.h"

namespace orsa::kesncd {

/// Builds the records row by row: a signal, then the components on it, each with its ports.
///
/// Hosts rely on what happens to rows in unusual places. Ports belong to the component opened last,
/// also when a signal has closed it, which loses them. Components before the first signal are lost
/// to it, and a last signal without components is left out.
///
/// Calling order: TakeRow for each row, then Finish. A table of connections has rows such as SIGNAL
/// clk, INPUT buf1 BUF, OUTPORT net_1 Z, OUTPUT ff1 FF.
class RecordBuilder {
 public:
  // Other kinds of rows are passed over.
  void TakeRow(const std::string& kind, const std::string& first, const std::string& second);
  /// The records, once all rows are taken.
  std::vector<KesSigFreq> Finish();

 private:
  enum class Component { None, Input, Output };

  void OpenSignal(const std::string& name);
  void OpenComponent(Component kind, const std::string& name, const std::string& type);
  // Whether there was one.
  bool CloseComponent();

  std::vector<KesSigFreq> records_;
  // The signal that is being built; it counts while signalIsOpen_.
  KesSigFreq signal_;
  // The component that is being built; the next row of its kind or a signal closes it.
  KesComp component_;
  bool signalIsOpen_ = false;
  Component open_ = Component::None;
};

/// Where frequencies come from. Names are as the table writes them.
class RecordLookup {
 public:
  virtual ~RecordLookup() = default;

  /// The frequency of a signal in the top module; false, with `freq` untouched, for one that is not
  /// known.
  virtual bool FindTop(const std::string& signal, double& freq) = 0;
  /// The same of a component's port.
  virtual bool FindPort(const std::string& component, const std::string& port, double& freq) = 0;
};

/// Enters frequencies into a record; what is not known stays as it is. A signal that is not known
/// takes the mean of its inputs, `defaultFreq` standing for unknown ones.
void FillRecord(KesSigFreq& signal, RecordLookup& lookup, double defaultFreq);

}  // namespace orsa::kesncd

#endif  // KESNCD_MODEL_POWER_RECORDS_H_
