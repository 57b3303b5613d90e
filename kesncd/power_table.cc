// Frequency records for the host's power tables: the rows of its table of connections become
// records, then the module tree is asked for their frequencies.
#include <optional>
#include <string_view>
#include <utility>

#include "host/power_data.h"
#include "kesncd/kesncd.h"
#include "kesncd/model/power_records.h"
#include "kesncd/model/tree_index.h"

// Only the host has this type's run-time information. Weak, it may be missing, so that the library
// also loads into a program that has no power data.
__asm__(".weak _ZTI10PD_SECTION");

namespace orsa::kesncd {

namespace {

// The host's name of the section.
constexpr char kConnections[] = "Hierarchical Connections";

/// The table of connections; null for a document without one, or with a section of another kind
/// under its name. By a cast at run time: a host may have other sections under any name.
PD_TABLE* FindConnections(PD_DATA* data) {
  if (data == nullptr) return nullptr;
  const auto* section = dynamic_cast<PD_TBLSECT*>(data->GetSection(kConnections));
  return section == nullptr ? nullptr : section->table;
}

/// The table is the host's; all texts are copied.
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

/// Looks frequencies up in the module tree: a few by searching it, many in an index of it, which
/// answers alike. A table of a large design asks hundreds of thousands of times, and each search
/// would walk the whole tree.
class TreeLookup {
 public:
  /// For the names that stand in `records`. Keeps views of them, so the texts must not move.
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

  // Every name that a record can be asked for.
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
  // How often the tree was walked.
  int searches_ = 0;
  std::optional<TreeIndex> index_;
};

/// Enters the module tree's frequencies into records.
class TreeRecordLookup : public RecordLookup {
 public:
  TreeRecordLookup(const VmodHier& root, const std::vector<KesSigFreq>& records,
                   std::string topModule, bool exact)
      : tree_(root, records, exact), topModule_(std::move(topModule)) {}

  bool FindTop(const std::string& signal, double& freq) override {
    return tree_.Find(topModule_, signal, freq);
  }
  bool FindPort(const std::string& component, const std::string& port, double& freq) override {
    return tree_.Find(component, port, freq);
  }

 private:
  TreeLookup tree_;
  std::string topModule_;
};

}  // namespace

// Hosts are linked against the operation as it stands, not const.
// NOLINTNEXTLINE(readability-make-member-function-const)
std::vector<KesSigFreq> KesNCD::CreateKesSigFreq(PD_DATA* data, double defaultFreq, bool exact) {
  // Null for a document without the table: no records.
  PD_TABLE* const table = FindConnections(data);
  if (table == nullptr) return {};
  std::vector<KesSigFreq> records = ReadRecords(*table);
  // Without a hierarchical run the rows are still worth having, with unknown frequencies.
  if (hierRoot == nullptr || topModName == nullptr) return records;
  TreeRecordLookup lookup(*hierRoot, records, topModName, exact);
  for (KesSigFreq& record : records) FillRecord(record, lookup, defaultFreq);
  return records;
}

}  // namespace orsa::kesncd
