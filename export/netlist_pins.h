// The activity of each cell's pins: the figures of a dump's nets, carried through a netlist's
// hierarchy.
//
// A netlist has modules; a design has instances of them. Laid out ("elaborated"), every net of
// every instance gets a number of its own, ports join numbers inside and outside, and the dump's
// names are then looked up for each: whichever name of a net the simulator dumped, all pins on it
// are reached.
#ifndef KESNCD_EXPORT_NETLIST_PINS_H_
#define KESNCD_EXPORT_NETLIST_PINS_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "activity/activity_result.h"
#include "export/netlist.h"
#include "export/saif_writer.h"
#include "export/tcl_writer.h"

namespace orsa::kesncd {

/// Nets that are one: ports join those of a module with those outside, and assigns join names. A
/// union-find: each net leads to another one of its set, the last one to itself. Calling order:
/// Resize as nets come, Join, then Find.
class JoinedNets {
 public:
  /// More nets; those that are there stay joined. Each new one is a set of its own.
  void Resize(std::size_t nets);
  /// The net that stands for the whole set.
  std::uint32_t Find(std::uint32_t net);
  /// Constants stay what they are: the smaller number stands for both. The four constants have the
  /// smallest numbers, so a net that is tied to one becomes it. Two constants that meet stay two.
  void Join(std::uint32_t a, std::uint32_t b);

 private:
  // By net: one of its set that is nearer to the one that stands for it.
  std::vector<std::uint32_t> outer_;
};

/// Which bit of a dump a net is; `bit` counts from the variable's lowest one.
struct DumpBit {
  std::uint32_t variableId = 0;
  std::uint32_t bit = 0;
};

/// The variables of a dump below one scope by their names, as netlists may write them: parts of a
/// path may be scopes of their own or one name with dots or slashes, as flattening makes them.
/// Parts are joined by dots and lose the backslash of an escaped name; a slash in a name becomes a
/// dot. So "\fifo.q", "\fifo/q" and q in the scope fifo are one path. Memory is in proportion to
/// the names; declarations must outlive it.
class DumpNames {
 public:
  /// Of the scope and all below it; paths begin inside the scope.
  DumpNames(const Declarations& declarations, std::uint32_t scope);

  /// The bit of that index, or without one. Several variables of the name: the first that has it.
  /// `index` is what the name has in brackets, `path` the rest.
  std::optional<DumpBit> Find(const std::string& path, std::optional<std::int64_t> index) const;

 private:
  const Declarations& declarations_;
  std::unordered_map<std::string, std::uint32_t> first_;  // by path without a bit's index
  std::vector<std::uint32_t> next_;                       // by variable: the next of the same path
};

/// What a user may say where the netlist or the dump leaves it open.
struct PinOptions {
  std::string top;                     // the module; empty where the netlist says which
  std::optional<std::uint32_t> scope;  // of the dump that the top module is; found if not given
};

/// One pin of a cell, or one bit of a wider one. A value that is made anew for each visit.
struct CellPin {
  std::uint32_t instance;             // 0 is the top module's
  std::uint32_t cell;                 // in the instance's module
  std::string name;                   // "A", "D[3]"
  std::optional<BitFigures> figures;  // nothing where the dump does not hold its net
};

/// Calling order: construct, which does all the work, then ask as often as wanted. Memory is that
/// of the nets of all instances.
class NetlistPins {
 public:
  /// Netlist and result have to outlive it. Throws Failure with Unusable for a netlist that cannot
  /// be, or where it is not clear which module or scope is meant; with NothingMatched where no
  /// scope of the dump looks like the design.
  NetlistPins(const Netlist& netlist, const ActivityResult& result, const PinOptions& options);

  /// How many pins are connected, and how many of them have figures.
  std::uint64_t pins() const { return pins_; }
  std::uint64_t reached() const { return reached_; }
  /// The share of pins that have figures; 100 where there is no pin.
  double ReachedPercent() const;
  /// The scope that the top module is: the one that was given or that was found.
  std::uint32_t scope() const { return scope_; }
  const std::string& top() const { return netlist_.texts[instances_.front().module->name]; }

  /// Calls `visit(const CellPin&)` for every pin that is connected, in the netlist's order: an
  /// instance's own cells, then the instances in it.
  template <class Visit>
  void ForEachPin(Visit visit) const {
    for (std::uint32_t instance = 0; instance < instances_.size(); ++instance) {
      const NetlistModule& module = *instances_[instance].module;
      for (std::uint32_t cell = 0; cell < module.cells.size(); ++cell) {
        if (netlist_.InnerModule(module.cells[cell]) == nullptr) VisitCell(instance, cell, visit);
      }
    }
  }
  /// Adds the path from the design's top, "fifo/_07_", to a text. Neither "tb" nor the top module's
  /// own name is part of it.
  void AppendCellPath(std::uint32_t instance, std::uint32_t cell, std::string& path) const;
  void AppendCellPath(const CellPin& pin, std::string& path) const {
    AppendCellPath(pin.instance, pin.cell, path);
  }
  const std::string& CellName(const CellPin& pin) const {
    return netlist_.texts[instances_[pin.instance].module->cells[pin.cell].name];
  }
  /// The instance's name, and the instance that it is in; the first is in itself.
  const std::string& InstanceName(std::uint32_t instance) const {
    return netlist_.texts[instances_[instance].name];
  }
  std::uint32_t OuterInstance(std::uint32_t instance) const { return instances_[instance].outer; }
  std::size_t instances() const { return instances_.size(); }
  /// The name of a cell's pin, `place` counting its pins as ForEachPin comes to them. For writers
  /// that keep only where a pin is, as names of millions of pins take too much memory.
  std::string PinNameAt(std::uint32_t instance, std::uint32_t cell, std::uint32_t place) const;

 private:
  // A module with a place in the design.
  struct Instance {
    const NetlistModule* module;
    std::uint32_t name;      // of the cell that it is; of the top one the module's
    std::uint32_t outer;     // the instance around it; of the top one itself
    std::uint32_t firstNet;  // all nets of the design have numbers in a row
  };

  /// The number of a net of a module in the design. Constants are the same everywhere.
  std::uint32_t NetOf(const Instance& instance, NetId net) const {
    return net < kFirstNet ? net : instance.firstNet + (net - kFirstNet);
  }
  /// The steps of the constructor, in this order.
  const NetlistModule& TopModule(const std::string& wanted) const;
  void CheckSize(const NetlistModule& top) const;
  std::uint32_t ScopeOf(const NetlistModule& top) const;
  /// Makes the instances, numbers their nets and joins them.
  void Elaborate(const NetlistModule& top);
  /// Joins an instance's ports with what is on them.
  void Connect(JoinedNets& joined, const Instance& outer, const NetlistCell& cell,
               const Instance& inner) const;
  /// Looks up every name of every net in the dump.
  void FindFigures();
  /// The same for one name of several bits.
  void FindBus(const DumpNames& names, const std::string& prefix, const Instance& instance,
               const NetlistBus& bus);
  /// Figures of a net: a constant's are its level for all of the observed time.
  std::optional<BitFigures> FiguresOf(std::uint32_t net) const;
  /// "A" for a pin of one bit, "D[3]" for a bit of a wider one.
  std::string PinName(const NetlistCell& cell, const NetlistBus& pin, std::uint32_t bit) const;

  // Bits of a pin from the highest down, as names of buses go.
  template <class Visit>
  void VisitCell(std::uint32_t instance, std::uint32_t cell, Visit& visit) const {
    const NetlistModule& module = *instances_[instance].module;
    const NetlistCell& visited = module.cells[cell];
    for (std::uint32_t i = 0; i < visited.pins; ++i) {
      const NetlistBus& pin = module.pins[visited.firstPin + i];
      for (std::uint32_t bit = pin.width; bit-- > 0;) {
        const std::uint32_t net = NetOf(instances_[instance], module.bits[pin.firstBit + bit]);
        visit(CellPin{instance, cell, PinName(visited, pin, bit), FiguresOf(net)});
      }
    }
  }

  const Netlist& netlist_;
  const ActivityResult& result_;
  std::uint32_t scope_ = 0;          // of the dump
  std::vector<Instance> instances_;  // each before those in it, and those of one together
  std::vector<std::uint32_t> nets_;  // by net, the number of the joined one
  // Constants and nets that the dump does not hold have none.
  std::vector<std::optional<DumpBit>> dumpBits_;  // by joined net
  std::uint64_t pins_ = 0;
  std::uint64_t reached_ = 0;
};

/// One instance a cell, in it its pins that were reached as nets, below the instances of modules.
/// Throws as WriteSaif does for times and the root's name. Pins that were not reached are no nets:
/// a reader then takes its own default for them.
SaifReport WritePinSaif(const NetlistPins& pins, const ActivityResult& result,
                        const SaifOptions& options, std::ostream& out, std::ostream* unwritten);
/// Paths begin below the top module: "fifo/_07_/A".
void WritePinTcl(const NetlistPins& pins, const ActivityResult& result, const TclRates& rates,
                 std::ostream& out);
/// The paths of the pins that were not reached, each on a line.
void WriteUnreached(const NetlistPins& pins, std::ostream& out);

}  // namespace orsa::kesncd

#endif  // KESNCD_EXPORT_NETLIST_PINS_H_
