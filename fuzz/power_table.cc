// The power table: records against a plain builder, frequencies against plain searches of the tree.
//
// An input is lines: ">name" opens a scope, "<" closes it, ".name" and "*name" declare a signal of
// the scope (the latter with changes), and every other line is a row of the table, its cells parted
// by tabs.
#include <algorithm>
#include <memory>

#include "fuzz/target.h"
#include "host/power_data.h"
#include "kesncd/kesncd.h"
#include "kesncd/model/tree_index.h"
#include "tests/support/input.h"
#include "tests/support/plain_names.h"
#include "tests/support/reader_state.h"
#include "tests/support/require.h"
#include "tests/support/test_host.h"

namespace {

using namespace orsa::kesncd;

constexpr double kDefault = 10.0;

struct Table : PD_TBLSECT {
  Table() { table = &connections; }
  PD_TABLE connections;
};

struct Case {
  std::unique_ptr<VmodHier> root;
  Table section;
};

std::vector<std::string> Cells(const std::string& line) {
  std::vector<std::string> cells(1);
  for (const char c : line) {
    if (c == '\t' && cells.size() < 3) {
      cells.emplace_back();
    } else if (c != '\0') {
      cells.back() += c;
    }
  }
  cells.resize(3);
  return cells;
}

void ReadCase(const std::string& text, Case& read) {
  VmodHier* current = nullptr;
  int signals = 0;
  for (const std::string& line : support::Lines(text)) {
    const std::string rest = line.empty() ? "" : line.substr(1);
    const char first = line.empty() ? ' ' : line[0];
    if (first == '>' && (current != nullptr || read.root == nullptr)) {
      auto scope = std::make_unique<VmodHier>(rest);
      scope->parent = current;
      VmodHier* const opened = scope.get();
      if (current == nullptr) {
        read.root = std::move(scope);
      } else {
        current->AddSubMod(scope.release());
      }
      current = opened;
    } else if (first == '<') {
      if (current != nullptr) current = current->parent;
    } else if ((first == '.' || first == '*') && current != nullptr) {
      const std::string code = std::to_string(++signals);
      current->AddSignal(rest, "wire", code, 1);
      current->signals[code].changes = first == '*' ? signals : 0;
    } else {
      read.section.connections.rows.push_back(Cells(line));
    }
  }
}

/// The first pass over the rows, copies and all.
std::vector<KesSigFreq> BuildPlainly(const PD_TABLE& table) {
  std::vector<KesSigFreq> records;
  KesSigFreq signal;
  KesComp component;
  bool signalOpen = false;
  bool inputOpen = false;
  bool outputOpen = false;
  const auto close = [&] {
    if (inputOpen) signal.inputs.push_back(component);
    if (outputOpen) signal.outputs.push_back(component);
  };
  for (const auto& row : table.rows) {
    if (row[0] == "SIGNAL") {
      close();
      if (signalOpen) records.push_back(signal);
      signal = {row[1], {}, {}, -1.0};
      inputOpen = outputOpen = false;
      signalOpen = true;
    } else if (row[0] == "INPUT" || row[0] == "OUTPUT") {
      close();
      component = {row[1], row[2], {}, -1.0};
      inputOpen = row[0] == "INPUT";
      outputOpen = !inputOpen;
    } else if (row[0] == "OUTPORT") {
      component.outPorts.push_back({row[1], row[2], -1.0});
    }
  }
  close();
  if (inputOpen || outputOpen) records.push_back(signal);
  return records;
}

/// The second pass: one search of the tree for each name.
class PlainFrequencies {
 public:
  PlainFrequencies(const VmodHier* root, bool exact) : root_(root), exact_(exact) {}

  void Fill(KesSigFreq& signal) const {
    for (KesComp& input : signal.inputs) {
      if (input.type != "FSLICE" && input.type != "SLICE") Find("top", input.name, input.freq);
      FillPorts(input);
    }
    for (KesComp& output : signal.outputs) {
      Find("top", output.name, output.freq);
      FillPorts(output);
    }
    if (Find("top", signal.name, signal.freq)) return;
    double sum = 0.0;
    bool known = false;
    for (const KesComp& input : signal.inputs) {
      known = known || !(input.freq < 0.0);
      sum += input.freq < 0.0 ? kDefault : input.freq;
    }
    if (known) signal.freq = sum / static_cast<double>(signal.inputs.size());
  }

 private:
  bool Find(const std::string& module, const std::string& name, double& frequency) const {
    return root_ != nullptr && root_->FindSignalFreqHier(module, name, frequency, exact_);
  }
  void FillPorts(KesComp& component) const {
    for (KesPort& port : component.outPorts) {
      Find(component.name, port.portName, port.freq);
      Find("top", port.netName, port.freq);
    }
  }

  const VmodHier* root_;
  bool exact_;
};

void AppendComponents(const std::vector<KesComp>& components, std::string& text) {
  for (const KesComp& component : components) {
    text += "\n  " + component.name + "|" + component.type + "=" + std::to_string(component.freq);
    for (const KesPort& port : component.outPorts) {
      text += "\n    " + port.netName + "|" + port.portName + "=" + std::to_string(port.freq);
    }
  }
}

std::string TextOf(const std::vector<KesSigFreq>& records) {
  std::string text;
  for (const KesSigFreq& record : records) {
    text += "\n" + record.name + "=" + std::to_string(record.freq);
    AppendComponents(record.inputs, text);
    text += "\n  --";
    AppendComponents(record.outputs, text);
  }
  return text;
}

/// Looks every cell up in an index of the tree, under the names of the cell before and of the top
/// module.
void CheckIndex(const VmodHier& root, const PD_TABLE& table, bool exact) {
  std::vector<std::string_view> names;
  for (const auto& row : table.rows) names.insert(names.end(), row.begin(), row.end());
  const TreeIndex index(root, exact, names);
  constexpr std::size_t kMostLookups = 30;
  names.resize(std::min(names.size(), kMostLookups));
  std::string module = root.name;
  for (const std::string_view name : names) {
    const std::string signal(name);
    for (const std::string& asked : {module, root.name}) {
      double found = -7.25;
      double expected = -7.25;
      const bool isFound = index.Find(asked, signal, found);
      support::Require(isFound == root.FindSignalFreqHier(asked, signal, expected, exact),
                       [&] { return "the index on " + signal; });
      support::Require(support::Same(found, expected),
                       [&] { return "the index's frequency of " + signal; });
      support::CheckLookup(root, asked, signal, exact);
    }
    module = signal;
  }
}

}  // namespace

void CheckInput(std::string_view bytes) {
  ResetReaderState();
  testHost = {};
  Case read;
  ReadCase(std::string(bytes), read);
  startCycle = 0.0;
  endCycle = 100.0;
  timeScale = 1.0;
  testHost.section = &read.section;
  KesNCD analyser;
  analyser.SetTopModule("top");
  PD_DATA document;
  for (const bool exact : {false, true}) {
    std::vector<KesSigFreq> expected = BuildPlainly(read.section.connections);
    const PlainFrequencies plain(read.root.get(), exact);
    for (KesSigFreq& record : expected) plain.Fill(record);
    analyser.hierRoot = read.root.get();
    const auto records = analyser.CreateKesSigFreq(&document, kDefault, exact);
    analyser.hierRoot = nullptr;
    support::Require(TextOf(records) == TextOf(expected), [&] {
      return "records:" + TextOf(records) + "\nexpected:" + TextOf(expected);
    });
    if (read.root != nullptr) CheckIndex(*read.root, read.section.connections, exact);
  }
}
