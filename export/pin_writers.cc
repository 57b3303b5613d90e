// The pins of a netlist's cells in the formats that estimators read.
#include <algorithm>
#include <ostream>
#include <utility>

#include "export/netlist_pins.h"
#include "export/saif_text.h"

namespace orsa::kesncd {

namespace {

std::string PathOf(const NetlistPins& pins, const CellPin& pin) {
  std::string path;
  pins.AppendCellPath(pin, path);
  return path + '/' + pin.name;
}

/// Opens and closes instances so that the cell of each pin is the one that is open. Instances come
/// into the file only with a pin, so none is empty.
class PinTree {
 public:
  PinTree(const NetlistPins& pins, SaifStream& saif) : pins_(pins), saif_(saif) {}

  void Write(const CellPin& pin) {
    if (instance_ != pin.instance || cell_ != pin.cell) {
      CloseCell();
      GoTo(pin.instance);
      saif_.Open(pins_.CellName(pin));
      instance_ = pin.instance;
      cell_ = pin.cell;
      inCell_ = true;
    }
    saif_.Net(SaifNetName(pin.name), *pin.figures);
  }
  void Finish() {
    CloseCell();
    GoTo(0);
  }

 private:
  void CloseCell() {
    if (std::exchange(inCell_, false)) saif_.Close();
    cell_ = UINT32_MAX;
  }
  /// Instances come in the order of a walk through the tree, so one that is left stays left.
  void GoTo(std::uint32_t instance) {
    std::vector<std::uint32_t> way;
    for (; instance != 0; instance = pins_.OuterInstance(instance)) way.push_back(instance);
    std::reverse(way.begin(), way.end());
    const auto [differing, wanted] =
        std::mismatch(open_.begin(), open_.end(), way.begin(), way.end());
    for (auto left = differing; left != open_.end(); ++left) saif_.Close();
    for (auto entered = wanted; entered != way.end(); ++entered) {
      saif_.Open(pins_.InstanceName(*entered));
    }
    open_ = std::move(way);
  }

  const NetlistPins& pins_;
  SaifStream& saif_;
  std::vector<std::uint32_t> open_;  // instances, without the outermost
  std::uint32_t instance_ = 0;
  std::uint32_t cell_ = UINT32_MAX;
  bool inCell_ = false;
};

std::string CsvField(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted += c == '"' ? "\"\"" : std::string(1, c);
  return quoted + '"';
}

}  // namespace

SaifReport WritePinSaif(const NetlistPins& pins, const ActivityResult& result,
                        const SaifOptions& options, std::ostream& out, std::ostream* unwritten) {
  SaifReport report;
  report.root = options.root.empty() ? pins.top() : options.root;
  CheckSaifRoot(report.root);
  SaifStream saif(out, SaifHeadOf(result, options, report.root), SaifTimesOf(result, options));
  // By instance, whether its name and those of all around it can be written.
  std::vector<bool> readable(pins.instances());
  for (std::uint32_t i = 0; i < readable.size(); ++i) {
    readable[i] = i == 0 || (readable[pins.OuterInstance(i)] && IsSaifName(pins.InstanceName(i)));
  }
  saif.Open(report.root);
  PinTree tree(pins, saif);
  pins.ForEachPin([&](const CellPin& pin) {
    if (!pin.figures) return;
    if (readable[pin.instance] && IsSaifName(pins.CellName(pin)) && IsSaifName(pin.name)) {
      ++report.nets;
      tree.Write(pin);
      return;
    }
    ++report.unwritten;
    if (unwritten != nullptr) *unwritten << PathOf(pins, pin) << '\n';
  });
  tree.Finish();
  saif.Close();
  saif.Finish();
  return report;
}

void WritePinTcl(const NetlistPins& pins, const ActivityResult& result, const TclRates& rates,
                 std::ostream& out) {
  TclActivity activity(result, rates);
  // Pins are asked for by their place in the walk; where they are is kept, not what they are
  // called.
  struct Place {
    std::uint32_t instance;
    std::uint32_t cell;
    std::uint32_t bit;
  };
  std::vector<Place> places;
  std::uint32_t bit = 0;
  pins.ForEachPin([&](const CellPin& pin) {
    const bool isSameCell =
        !places.empty() && places.back().instance == pin.instance && places.back().cell == pin.cell;
    bit = isSameCell ? bit + 1 : 0;
    if (pin.figures) activity.Add(*pin.figures, places.size());
    places.push_back({pin.instance, pin.cell, bit});
  });
  activity.Write(out, [&](std::uint64_t place, std::string& path) {
    const auto& [instance, cell, index] = places[place];
    pins.AppendCellPath(instance, cell, path);
    path += '/';
    path += pins.PinNameAt(instance, cell, index);
  });
}

void WritePinCsv(const NetlistPins& pins, std::ostream& out) {
  out << "path,t0,t1,tx,tz,tc,ig\r\n";
  pins.ForEachPin([&](const CellPin& pin) {
    if (!pin.figures) return;
    const BitFigures& figures = *pin.figures;
    out << CsvField(PathOf(pins, pin));
    for (const std::uint64_t figure :
         {figures.t0, figures.t1, figures.tx, figures.tz, figures.tc, figures.ig}) {
      out << ',' << std::to_string(figure);
    }
    out << "\r\n";
  });
}

void WriteUnreached(const NetlistPins& pins, std::ostream& out) {
  pins.ForEachPin([&](const CellPin& pin) {
    if (!pin.figures) out << PathOf(pins, pin) << '\n';
  });
}

}  // namespace orsa::kesncd
