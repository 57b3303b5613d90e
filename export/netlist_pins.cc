// A design is laid out once, instance by instance; every net of every instance gets a number, and
// those that ports join become one. What the dump says of any name of a net then holds for all its
// pins.
#include "export/netlist_pins.h"

#include <algorithm>
#include <charconv>
#include <unordered_set>
#include <utility>

#include "text/failure.h"
#include "vcd/bit_names.h"

namespace orsa::kesncd {

namespace {

// A few lines of hierarchy can ask for more instances than there is memory. 2^27 nets take some
// gigabytes.
constexpr std::uint64_t kMostNets = std::uint64_t{1} << 27;
// Real designs nest a few dozen.
constexpr std::size_t kDeepest = 1000;  // instances in each other
// Longer paths are not looked up: one long name, and every path below it would be as long.
constexpr std::size_t kLongestPath = 4096;

/// A part of a path as both sides can agree on: tools flatten a design with dots or with slashes.
/// Appends a part with "/" as "."; the backslash of an escaped name is dropped.
void AppendPart(std::string_view part, std::string& path) {
  for (const char c : part.substr(!part.empty() && part.front() == '\\' ? 1 : 0)) {
    path += c == '/' ? '.' : c;
  }
}

/// The number that all of a text is; nothing for any other.
std::optional<std::int64_t> NumberOf(std::string_view text) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return {};
  return number;
}

/// Which bit has that index. Indices in a dump are texts; those of a variable go up or down by one
/// from bit 0 on. Nothing for an index that is out of its range, or a name without any.
std::optional<std::uint32_t> BitAt(const BitNames& names, std::int64_t index) {
  if (!names.IsIndexed()) return {};
  const std::optional<std::int64_t> lowest = NumberOf(names.Index(0));
  if (!lowest) return {};
  // [0:3]: bit 0 has the largest index.
  const bool isAscending = names.width() > 1 && NumberOf(names.Index(1)) < lowest;
  std::int64_t bit = 0;
  // Both may be at the ends of 64 bits.
  if (__builtin_sub_overflow(index, *lowest, &bit)) return {};
  if (isAscending) bit = -bit;
  if (bit < 0 || bit >= std::int64_t{names.width()}) return {};
  return static_cast<std::uint32_t>(bit);
}

}  // namespace

/// Each new net stands for itself.
void JoinedNets::Resize(std::size_t nets) {
  for (std::size_t net = outer_.size(); net < nets; ++net) {
    outer_.push_back(static_cast<std::uint32_t>(net));
  }
}

/// On the way every second step is shortened, so that later ways are short.
std::uint32_t JoinedNets::Find(std::uint32_t net) {
  while (outer_[net] != net) {
    outer_[net] = outer_[outer_[net]];
    net = outer_[net];
  }
  return net;
}

/// Two constants that meet are a short circuit; which of them wins is not ours to say.
void JoinedNets::Join(std::uint32_t a, std::uint32_t b) {
  a = Find(a);
  b = Find(b);
  if (a != b && std::max(a, b) >= kFirstNet) outer_[std::max(a, b)] = std::min(a, b);
}

/// Scopes come after those that they are in, so a prefix is always ready.
DumpNames::DumpNames(const Declarations& declarations, std::uint32_t scope)
    : declarations_(declarations), next_(declarations.variables.size(), 0) {
  const std::vector<DumpScope>& scopes = declarations.scopes;
  // From 1 for the scope itself; 0 outside of it, or where names are not looked up.
  std::vector<std::size_t> depths(scopes.size());
  std::vector<std::string> prefixes(scopes.size());
  // By path the variable that was added last, to link the next one to.
  std::unordered_map<std::string, std::uint32_t> last;
  for (std::size_t id = scope; id < scopes.size(); ++id) {
    const std::uint32_t parent = scopes[id].parent;
    if (id == scope) {
      depths[id] = 1;
    } else if (const std::size_t outer = depths[parent];
               outer != 0 && outer < kDeepest && prefixes[parent].size() <= kLongestPath) {
      depths[id] = outer + 1;
      prefixes[id] = prefixes[parent];
      AppendPart(scopes[id].name, prefixes[id]);
      prefixes[id] += '.';
    } else {
      // Outside of the scope, or deeper or longer than anybody names things.
      continue;
    }
    // Variables without bits cannot be pins.
    for (const std::uint32_t variableId : scopes[id].variables) {
      const DumpVariable& variable = declarations.variables[variableId];
      if (variable.width == 0 || !TypeHasBits(declarations.TypeOf(variable))) continue;
      // A path without the index of a bit: "data" for data[3] and data[7:0] alike.
      std::string path = prefixes[id];
      AppendPart(BitNames(variable).Base(), path);
      if (path.size() > kLongestPath) continue;
      // Variables are linked by their numbers plus one: 0 ends the list.
      const auto [entry, isNew] = last.try_emplace(path, variableId);
      if (!isNew) next_[std::exchange(entry->second, variableId)] = variableId + 1;
      first_.try_emplace(std::move(path), variableId);
    }
  }
}

/// Declared bit by bit (data[3], data[2], ...) all have one path; the first with the bit counts.
std::optional<DumpBit> DumpNames::Find(const std::string& path,
                                       std::optional<std::int64_t> index) const {
  const auto found = first_.find(path);
  if (found == first_.end()) return {};
  for (std::uint32_t link = found->second + 1; link != 0; link = next_[link - 1]) {
    const BitNames names(declarations_.variables[link - 1]);
    // Without an index: a variable of one bit that has none. With one: the bit of that index.
    const std::optional<std::uint32_t> bit = index ? BitAt(names, *index)
                                             : names.IsIndexed() || names.width() != 1
                                                 ? std::nullopt
                                                 : std::optional<std::uint32_t>(0);
    if (bit) return DumpBit{link - 1, *bit};
  }
  return {};
}

/// The order matters: sizes are checked before anything is laid out, and names are looked up in the
/// scope that was found.
NetlistPins::NetlistPins(const Netlist& netlist, const ActivityResult& result,
                         const PinOptions& options)
    : netlist_(netlist), result_(result) {
  const NetlistModule& top = TopModule(options.top);
  CheckSize(top);
  scope_ = options.scope ? *options.scope : ScopeOf(top);
  Elaborate(top);
  FindFigures();
  // Counted by the same walk that writers take, so that the numbers agree.
  ForEachPin([this](const CellPin& pin) {
    ++pins_;
    if (pin.figures) ++reached_;
  });
}

double NetlistPins::ReachedPercent() const {
  return pins_ == 0 ? 100 : 100 * static_cast<double>(reached_) / static_cast<double>(pins_);
}

/// The module of that name; without one, the one that says it is the top, or that is in no other.
const NetlistModule& NetlistPins::TopModule(const std::string& wanted) const {
  // Types that are used by any cell: such a module is not the top.
  std::unordered_set<std::uint32_t> inner;
  for (const NetlistModule& module : netlist_.modules) {
    for (const NetlistCell& cell : module.cells) inner.insert(cell.type);
  }
  std::vector<const NetlistModule*> tops;
  for (const NetlistModule& module : netlist_.modules) {
    const std::string& name = netlist_.texts[module.name];
    // The first one that was asked for, or that says so.
    if (!wanted.empty() ? name == wanted : module.isTop) return module;
    if (!module.isBlackBox && !inner.contains(module.name)) tops.push_back(&module);
  }
  // Exactly one that no other module uses.
  if (tops.size() == 1 && wanted.empty()) return *tops.front();
  throw Failure(FailureKind::Unusable,
                !wanted.empty()            ? "the netlist has no module " + wanted
                : netlist_.modules.empty() ? "the netlist has no module"
                : tops.empty()
                    ? "the netlist has no top module: every module is in another one"
                    : "the netlist has several top modules, " + netlist_.texts[tops[0]->name] +
                          " and " + netlist_.texts[tops[1]->name] + " among them");
}

/// Walks the modules, not their instances: each is counted once, however often it is used. A few
/// modules, each with two instances of the next, ask for 2^n instances: this must be known before
/// any is made. Also throws for a module that is in itself. Depth first, without recursion.
void NetlistPins::CheckSize(const NetlistModule& top) const {
  struct Size {
    std::uint64_t nets = 0;
    std::size_t depth = 0;  // 0 until known
  };
  // By module, with all instances in it; added up while the module is on the walk.
  std::unordered_map<const NetlistModule*, Size> sizes;
  // Those on the walk: meeting one again is a circle.
  std::unordered_set<const NetlistModule*> underWay{&top};
  // A module with the number of its next cell.
  std::vector<std::pair<const NetlistModule*, std::size_t>> walk{{&top, 0}};
  while (!walk.empty()) {
    auto& [module, cell] = walk.back();
    Size& size = sizes[module];
    // All cells are done: its own nets come to those of its instances. One more, as a module
    // without nets is an instance too.
    if (cell == module->cells.size()) {
      size.nets += module->nets + 1U;
      ++size.depth;
      if (size.nets > kMostNets || size.depth > kDeepest) {
        throw Failure(FailureKind::Unusable, "the netlist has too many instances in each other");
      }
      underWay.erase(module);
      walk.pop_back();
      continue;
    }
    const NetlistModule* const inner = netlist_.InnerModule(module->cells[cell]);
    const auto known = inner != nullptr ? sizes.find(inner) : sizes.end();
    // A gate.
    if (inner == nullptr) {
      ++cell;
    } else if (known != sizes.end() && !underWay.contains(inner)) {
      // Known completely from another place; added up with a bound, so that sums cannot overflow.
      const Size ready = known->second;
      Size& outer = sizes[module];
      outer.nets = std::min(outer.nets + ready.nets, kMostNets + 1);
      outer.depth = std::max(outer.depth, ready.depth);
      ++cell;
    } else if (underWay.insert(inner).second) {
      // Not known yet: comes first, and this cell once more after it.
      walk.emplace_back(inner, 0);
    } else {
      throw Failure(FailureKind::Unusable,
                    "the netlist's module " + netlist_.texts[inner->name] + " holds itself");
    }
  }
}

/// The scope that has most of the top module's names: a test bench around it often has those of its
/// ports, but not those within. Names of nets and of cells count, each once. Throws Failure with
/// NothingMatched where no scope has any of them, with Unusable where two have the same number.
std::uint32_t NetlistPins::ScopeOf(const NetlistModule& top) const {
  // What the module holds, as a dump may call it.
  std::unordered_set<std::string> names;
  const auto add = [&](std::uint32_t text) {
    std::string name;
    AppendPart(netlist_.texts[text], name);
    names.insert(std::move(name));
  };
  for (const NetlistBus& bus : top.names) add(bus.name);
  for (const NetlistCell& cell : top.cells) add(cell.name);
  // The best scope so far, and the last one that has as many names as it.
  std::uint32_t best = Declarations::kDump;
  std::uint32_t rival = Declarations::kDump;
  std::size_t most = 0;
  const Declarations& declarations = result_.declarations;
  // All scopes, the whole dump too: its variables may be those of the design.
  for (std::size_t id = 0; id < declarations.scopes.size(); ++id) {
    std::unordered_set<std::string> found;
    // Two variables of one name count once.
    const auto look = [&](std::string_view text) {
      std::string name;
      AppendPart(text, name);
      if (names.contains(name)) found.insert(std::move(name));
    };
    // Variables are nets, inner scopes are instances.
    for (const std::uint32_t variable : declarations.scopes[id].variables) {
      look(BitNames(declarations.variables[variable]).Base());
    }
    for (const std::uint32_t inner : declarations.scopes[id].scopes) {
      look(declarations.scopes[inner].name);
    }
    if (found.size() == most) rival = static_cast<std::uint32_t>(id);
    if (found.size() > most) best = rival = static_cast<std::uint32_t>(id);
    most = std::max(most, found.size());
  }
  if (most == 0) {
    throw Failure(FailureKind::NothingMatched,
                  "no scope of the dump has the names of the module " + netlist_.texts[top.name]);
  }
  if (best != rival) {
    throw Failure(FailureKind::Unusable, "the module " + netlist_.texts[top.name] + " may be " +
                                             declarations.PathOf(best) + " or " +
                                             declarations.PathOf(rival) +
                                             " in the dump; --scope says which");
  }
  return best;
}

/// Depth first in the netlist's order, without recursion. Numbers of nets follow one another,
/// instance by instance, after those of the constants.
void NetlistPins::Elaborate(const NetlistModule& top) {
  struct Pending {
    const NetlistModule* module;
    const NetlistCell* cell;
    std::uint32_t outer;
  };
  JoinedNets joined;
  std::uint32_t nets = kFirstNet;
  joined.Resize(nets);
  std::vector<Pending> pending{{&top, nullptr, 0}};
  while (!pending.empty()) {
    const Pending next = pending.back();
    pending.pop_back();
    const auto index = static_cast<std::uint32_t>(instances_.size());
    // Before the instances in it: a writer relies on that order.
    instances_.push_back(
        {next.module, next.cell != nullptr ? next.cell->name : top.name, next.outer, nets});
    // CheckSize made sure that this stays below 2^27 or so.
    nets += next.module->nets;
    joined.Resize(nets);
    // All but the top one are connected to what is around them.
    if (next.cell != nullptr) {
      const Instance& outer = instances_[next.outer];
      Connect(joined, outer, *next.cell, instances_.back());
    }
    // Backwards onto the stack, to come off in the netlist's order.
    const std::vector<NetlistCell>& cells = next.module->cells;
    for (auto cell = cells.rbegin(); cell != cells.rend(); ++cell) {
      const NetlistModule* const inner = netlist_.InnerModule(*cell);
      if (inner != nullptr) pending.push_back({inner, &*cell, index});
    }
  }
  // From now on a look instead of a search.
  nets_.resize(nets);
  for (std::uint32_t net = 0; net < nets; ++net) nets_[net] = joined.Find(net);
}

/// Joins what is on an instance's ports, bit by bit from the lowest on; ports and connections may
/// differ in width, as they may in Verilog.
void NetlistPins::Connect(JoinedNets& joined, const Instance& outer, const NetlistCell& cell,
                          const Instance& inner) const {
  for (std::uint32_t i = 0; i < cell.pins; ++i) {
    const NetlistBus& pin = outer.module->pins[cell.firstPin + i];
    const NetlistBus* const port = inner.module->Port(pin.name);
    // A port that the module does not have: a mistake of the netlist, or a black box's.
    if (port == nullptr) continue;
    for (std::uint32_t bit = 0; bit < std::min(pin.width, port->width); ++bit) {
      joined.Join(NetOf(outer, outer.module->bits[pin.firstBit + bit]),
                  NetOf(inner, inner.module->bits[port->firstBit + bit]));
    }
  }
}

/// Once for each instance: paths in the dump are those of instances.
void NetlistPins::FindFigures() {
  const DumpNames names(result_.declarations, scope_);
  dumpBits_.resize(nets_.size());
  std::vector<std::string> prefixes;
  // Instances come after those that they are in, so that one's prefix is there.
  for (const Instance& instance : instances_) {
    std::string prefix;
    // The top module's path is the scope itself, so its prefix is empty.
    if (!prefixes.empty()) {
      prefix = prefixes[instance.outer];
      if (prefix.size() <= kLongestPath) AppendPart(netlist_.texts[instance.name], prefix);
      prefix += '.';
      // Once too long it stays so, and nothing below it is looked up.
      prefix.resize(std::min(prefix.size(), kLongestPath + 1));
    }
    for (const NetlistBus& bus : instance.module->names) FindBus(names, prefix, instance, bus);
    prefixes.push_back(std::move(prefix));
  }
}

/// Tries the spellings that dumps have for a bit, the likeliest first: "q" or "q[3]" of a bus, then
/// "q[3]" as a name of its own.
void NetlistPins::FindBus(const DumpNames& names, const std::string& prefix,
                          const Instance& instance, const NetlistBus& bus) {
  std::string path = prefix;
  if (path.size() > kLongestPath) return;
  AppendPart(netlist_.texts[bus.name], path);
  if (path.size() > kLongestPath) return;
  // "q[3]" as a name of one bit in the netlist may be bit 3 of a bus in the dump.
  const std::size_t bracket = path.ends_with(']') ? path.rfind('[') : std::string_view::npos;
  for (std::uint32_t bit = 0; bit < bus.width; ++bit) {
    const std::uint32_t net = nets_[NetOf(instance, instance.module->bits[bus.firstBit + bit])];
    // A constant, or a net that another name has found already.
    if (net < kFirstNet || dumpBits_[net]) continue;
    std::optional<DumpBit>& found = dumpBits_[net];
    // "q" for "q".
    if (bus.width == 1) found = names.Find(path, {});
    // "q[3]" as bit 3 of "q[7:0]".
    if (!found) found = names.Find(path, bus.Index(bit));
    // One side may have a bus where the other has its bits one by one.
    if (!found && bus.width > 1) {
      found = names.Find(path + '[' + std::to_string(bus.Index(bit)) + ']', {});
    }
    // The index is taken off the name: bit 3 of "q".
    if (!found && bus.width == 1 && bracket != std::string_view::npos) {
      const auto index =
          NumberOf(std::string_view(path).substr(bracket + 1, path.size() - bracket - 2));
      if (index) found = names.Find(path.substr(0, bracket), index);
    }
  }
}

/// The observed time at one level, without a toggle.
std::optional<BitFigures> NetlistPins::FiguresOf(std::uint32_t net) const {
  const std::uint32_t joined = nets_[net];
  if (joined < kFirstNet) {
    BitFigures constant;
    std::uint64_t* const times[] = {&constant.t0, &constant.t1, &constant.tx, &constant.tz};
    // In the order of NetIds.
    *times[joined] = result_.observedTicks;
    return constant;
  }
  // No name of the net is in the dump.
  const std::optional<DumpBit>& found = dumpBits_[joined];
  if (!found) return {};
  const DumpVariable& variable = result_.declarations.variables[found->variableId];
  return result_.BitsOf(variable.codeId)[found->bit];
}

/// Of a black box the ports say how its bits are numbered; of a gate they count from 0.
std::string NetlistPins::PinName(const NetlistCell& cell, const NetlistBus& pin,
                                 std::uint32_t bit) const {
  const std::string& name = netlist_.texts[pin.name];
  if (pin.width == 1) return name;
  std::int64_t index = bit;
  const auto box = netlist_.moduleByName.find(cell.type);
  if (box != netlist_.moduleByName.end()) {
    const NetlistBus* const port = netlist_.modules[box->second].Port(pin.name);
    if (port != nullptr && bit < port->width) index = port->Index(bit);
  }
  return name + '[' + std::to_string(index) + ']';
}

/// `place` runs through the bits of all pins from the highest bit of the first pin on.
std::string NetlistPins::PinNameAt(std::uint32_t instance, std::uint32_t cell,
                                   std::uint32_t place) const {
  const NetlistModule& module = *instances_[instance].module;
  const NetlistCell& visited = module.cells[cell];
  std::uint32_t pin = visited.firstPin;
  while (place >= module.pins[pin].width) place -= module.pins[pin++].width;
  return PinName(visited, module.pins[pin], module.pins[pin].width - 1 - place);
}

/// From the instance outwards, then backwards.
void NetlistPins::AppendCellPath(std::uint32_t instance, std::uint32_t cell,
                                 std::string& path) const {
  std::vector<std::uint32_t> way;
  for (std::uint32_t at = instance; at != 0; at = instances_[at].outer) way.push_back(at);
  for (auto step = way.rbegin(); step != way.rend(); ++step) {
    path += InstanceName(*step);
    path += '/';
  }
  path += netlist_.texts[instances_[instance].module->cells[cell].name];
}

}  // namespace orsa::kesncd
