// The pins of a netlist's cells in the formats that estimators read.
//
// In SAIF a cell is an instance and its pins are nets:
//
//   (INSTANCE soc
//     (INSTANCE fifo
//       (INSTANCE _07_
//         (NET
//           (A (T0 20) (T1 20) (TX 0) (TZ 0) (TB 0) (TC 4) (IG 0))
#include <algorithm>
#include <ostream>
#include <utility>

#include "export/netlist_pins.h"
#include "export/saif_text.h"

namespace orsa::kesncd {

namespace {

/// "fifo/_07_/A", for messages and lists.
std::string PathOf(const NetlistPins& pins, const CellPin& pin) {
  std::string path;
  pins.AppendCellPath(pin, path);
  return path + '/' + pin.name;
}

/// Opens and closes instances so that the cell of each pin is the one that is open. Instances come
/// into the file only with a pin, so none is empty. Calling order: construct inside the outermost
/// instance, Write for each pin in the netlist's order, Finish. The stream is the caller's, as is
/// the outermost instance.
class PinTree {
 public:
  PinTree(const NetlistPins& pins, SaifStream& saif) : pins_(pins), saif_(saif) {}

  /// The pin must have figures, and names that SAIF takes.
  void Write(const CellPin& pin) {
    // Another cell: the one before is complete, since pins of a cell come together.
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
  /// Closes what is open, but not the outermost instance.
  void Finish() {
    CloseCell();
    GoTo(0);
  }

 private:
  /// Nothing where no cell is open.
  void CloseCell() {
    if (std::exchange(inCell_, false)) saif_.Close();
    cell_ = UINT32_MAX;
  }
  /// Instances come in the order of a walk through the tree, so one that is left stays left. From
  /// what is open to what is wanted: closes up to what both have, opens the rest.
  void GoTo(std::uint32_t instance) {
    // From the outside to the instance, without the outermost one.
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
  std::vector<std::uint32_t> open_;  // instances from the outside inwards, without the outermost
  // Of the pin that was written last.
  std::uint32_t instance_ = 0;
  std::uint32_t cell_ = UINT32_MAX;
  bool inCell_ = false;
};

}  // namespace

/// See WriteSaif for nets; what differs is where names come from.
SaifReport WritePinSaif(const NetlistPins& pins, const ActivityResult& result,
                        const SaifOptions& options, std::ostream& out, std::ostream* unwritten) {
  SaifReport report;
  report.root = options.root.empty() ? pins.top() : options.root;
  // Before anything is written.
  CheckSaifRoot(report.root);
  SaifStream saif(out, SaifHeadOf(result, options, report.root), SaifTimesOf(result, options));
  // By instance, whether its name and those of all around it can be written. An instance comes
  // after the one that it is in, so the outer one is known.
  std::vector<bool> readable(pins.instances());
  for (std::uint32_t i = 0; i < readable.size(); ++i) {
    readable[i] = i == 0 || (readable[pins.OuterInstance(i)] && IsSaifName(pins.InstanceName(i)));
  }
  saif.Open(report.root);
  PinTree tree(pins, saif);
  // Pins without figures are no nets, and are not among those that were left out for their names.
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

/// Sorted by figures, so pins are kept until all are known.
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
  // One for each pin, also those without figures, so that a place is a number of the walk.
  std::vector<Place> places;
  // The place of the pin's bit in its cell, as PinNameAt counts.
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

void WriteUnreached(const NetlistPins& pins, std::ostream& out) {
  pins.ForEachPin([&](const CellPin& pin) {
    if (!pin.figures) out << PathOf(pins, pin) << '\n';
  });
}

}  // namespace orsa::kesncd
