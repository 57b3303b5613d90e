// Frequency records for the host's power tables: the rows of its table of connections become
// records, then the module tree is asked for their frequencies.
#include <optional>
#include <string_view>
#include <utility>

#include "host/power_data.h"
#include "kesncd/kesncd.h"
#include "kesncd/model/tree_index.h"

// Only the host has this type's run-time information. Weak, it may be missing, so that the library
// also loads into a program that has no power data.
__asm__(".weak _ZTI10PD_SECTION");

namespace orsa::kesncd {

namespace {

constexpr char kConnections[] = "Hierarchical Connections";
constexpr double kUnknown = -1.0;

/// Builds the records row by row: a signal, then the components on it, each with its ports.
///
/// Hosts rely on what happens to rows in unusual places. Ports belong to the component opened last,
/// also when a signal has closed it, which loses them. Components before the first signal are lost
/// to it, and a last signal without components is left out.
class RecordBuilder {
 public:
  void TakeRow(const std::string& kind, const std::string& first, const std::string& second) {
    if (kind == "SIGNAL") {
      OpenSignal(first);
    } else if (kind == "INPUT") {
      OpenComponent(Component::Input, first, second);
    } else if (kind == "OUTPUT") {
      OpenComponent(Component::Output, first, second);
    } else if (kind == "OUTPORT") {
      component_.outPorts.push_back({first, second, kUnknown});
    }
  }

  /// The records, once all rows are taken.
  std::vector<KesSigFreq> Finish() {
    if (CloseComponent()) records_.push_back(std::move(signal_));
    return std::move(records_);
  }

 private:
  enum class Component { None, Input, Output };

  void OpenSignal(const std::string& name) {
    CloseComponent();
    if (signalIsOpen_) records_.push_back(std::move(signal_));
    signal_ = {name, {}, {}, kUnknown};
    signalIsOpen_ = true;
  }

  void OpenComponent(Component kind, const std::string& name, const std::string& type) {
    CloseComponent();
    component_ = {name, type, {}, kUnknown};
    open_ = kind;
  }

  /// Hangs the open component on the signal; false when there is none.
  bool CloseComponent() {
    switch (open_) {
      case Component::None:
        return false;
      case Component::Input:
        signal_.inputs.push_back(std::move(component_));
        break;
      case Component::Output:
        signal_.outputs.push_back(std::move(component_));
        break;
    }
    open_ = Component::None;
    return true;
  }

  std::vector<KesSigFreq> records_;
  KesSigFreq signal_;
  KesComp component_;
  bool signalIsOpen_ = false;
  Component open_ = Component::None;
};

PD_TABLE* FindConnections(PD_DATA* data) {
  if (data == nullptr) return nullptr;
  const auto* section = dynamic_cast<PD_TBLSECT*>(data->GetSection(kConnections));
  return section == nullptr ? nullptr : section->table;
}

std::vector<KesSigFreq> ReadRecords(PD_TABLE& table) {
  RecordBuilder records;
  for (int row = 0; row < table.GetRowCount(); ++row) {
    // One after the other into texts of our own: the host may use one buffer for every cell.
    const std::string kind = table.GetValueAt(row, 0);
    const std::string first = table.GetValueAt(row, 1);
    const std::string second = table.GetValueAt(row, 2);
    records.TakeRow(kind, first, second);
  }
  return records.Finish();
}

/// Looks frequencies up in the module tree: a few by searching it, many in an index of it.
class TreeLookup {
 public:
  /// For the names that stand in `records`, which must stay there.
  TreeLookup(const VmodHier& root, const std::vector<KesSigFreq>& records, bool exact)
      : root_(root), exact_(exact) {
    for (const KesSigFreq& signal : records) {
      names_.emplace_back(signal.name);
      for (const KesComp& component : signal.inputs) Note(component);
      for (const KesComp& component : signal.outputs) Note(component);
    }
  }

  bool Find(const std::string& module, const std::string& signal, double& freq) {
    if (searches_ < kMostSearches) {
      ++searches_;
      return root_.FindSignalFreqHier(module, signal, freq, exact_);
    }
    if (!index_) index_.emplace(root_, exact_, names_);
    return index_->Find(module, signal, freq);
  }

 private:
  static constexpr int kMostSearches = 4;  // about what the index costs

  void Note(const KesComp& component) {
    names_.emplace_back(component.name);
    for (const KesPort& port : component.outPorts) {
      names_.emplace_back(port.portName);
      names_.emplace_back(port.netName);
    }
  }

  const VmodHier& root_;
  const bool exact_;
  std::vector<std::string_view> names_;
  int searches_ = 0;
  std::optional<TreeIndex> index_;
};

/// Enters the module tree's frequencies into records; what the tree does not know stays as it is.
class FrequencyLookup {
 public:
  FrequencyLookup(const VmodHier& root, const std::vector<KesSigFreq>& records,
                  std::string topModule, bool exact)
      : tree_(root, records, exact), topModule_(std::move(topModule)) {}

  void Fill(KesSigFreq& signal, double defaultFreq) {
    for (KesComp& input : signal.inputs) {
      // A slice that drives the signal says nothing of it under its own name.
      if (input.type != "FSLICE" && input.type != "SLICE") FindTop(input.name, input.freq);
      FillPorts(input);
    }
    for (KesComp& output : signal.outputs) {
      FindTop(output.name, output.freq);
      FillPorts(output);
    }
    if (!FindTop(signal.name, signal.freq)) signal.freq = MeanOf(signal.inputs, defaultFreq);
  }

 private:
  bool FindTop(const std::string& name, double& freq) { return tree_.Find(topModule_, name, freq); }

  void FillPorts(KesComp& component) {
    for (KesPort& port : component.outPorts) {
      tree_.Find(component.name, port.portName, port.freq);
      FindTop(port.netName, port.freq);  // the net in the top module goes before the port
    }
  }

  /// Mean over the components, `defaultFreq` for unknown ones; unknown when all of them are.
  static double MeanOf(const std::vector<KesComp>& components, double defaultFreq) {
    bool anyKnown = false;
    double sum = 0.0;
    for (const KesComp& component : components) {
      const bool known = !(component.freq < 0.0);
      anyKnown = anyKnown || known;
      sum += known ? component.freq : defaultFreq;
    }
    return anyKnown ? sum / static_cast<double>(components.size()) : kUnknown;
  }

  TreeLookup tree_;
  std::string topModule_;
};

}  // namespace

// Hosts are linked against the operation as it stands, not const.
// NOLINTNEXTLINE(readability-make-member-function-const)
std::vector<KesSigFreq> KesNCD::CreateKesSigFreq(PD_DATA* data, double defaultFreq, bool exact) {
  PD_TABLE* const table = FindConnections(data);
  if (table == nullptr) return {};
  std::vector<KesSigFreq> records = ReadRecords(*table);
  if (hierRoot == nullptr || topModName == nullptr) return records;
  FrequencyLookup lookup(*hierRoot, records, topModName, exact);
  for (KesSigFreq& record : records) lookup.Fill(record, defaultFreq);
  return records;
}

}  // namespace orsa::kesncd
