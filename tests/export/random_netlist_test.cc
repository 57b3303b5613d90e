// Pins of random designs: modules in modules, buses with ranges in either direction, connections
// wider and narrower than their ports, nets that go straight through a module, constants, and dumps
// that hold some of the names, as buses, bit by bit or flattened. A plain account lays the design
// out by names and joins what ports join.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "activity/activity_run.h"
#include "export/netlist_pins.h"
#include "tests/support/text_stream.h"

namespace orsa::kesncd {
namespace {

constexpr int kTicks = 20;
constexpr int kModules = 4;  // module i is in modules before it only; 0 is the top

struct Bus {
  std::string name;
  int offset = 0;
  bool isAscending = false;
  std::vector<std::string> bits;  // the lowest first: nets by number, or a constant in quotes

  int IndexOf(std::size_t bit) const {
    return offset + static_cast<int>(isAscending ? bits.size() - 1 - bit : bit);
  }
};
struct Cell {
  std::string name;
  int module = 0;  // 0 for a gate
  std::vector<Bus> pins;
};
struct Module {
  std::vector<Bus> ports, names;
  std::vector<Cell> cells;
};

class RandomDesign {
 public:
  explicit RandomDesign(unsigned seed) : random_(seed) {
    for (int module = kModules; module-- > 0;) modules_[module] = MakeModule(module);
    LayOut(0, "");
    for (const auto& [net, joined] : joined_) MakeWave(Root(net));
    dump_ = "$timescale 1ns $end $scope module tb $end $scope module dut $end\n";
    Declare(0, "", "");
    dump_ += "$upscope $end $upscope $end $enddefinitions $end\n";
    for (int tick = 0; tick <= kTicks; ++tick) {
      dump_ += "#" + std::to_string(tick) + "\n";
      for (const auto& [code, nets] : dumped_) {
        std::string value;
        for (auto net = nets.rbegin(); net != nets.rend(); ++net)
          value += waves_.at(*net)[static_cast<std::size_t>(std::min(tick, kTicks - 1))];
        dump_ += "b" + value + " " + code + "\n";
      }
    }
    for (const auto& [code, nets] : dumped_) reached_.insert(nets.begin(), nets.end());
  }

  std::string Json() const {
    std::string json = "{\"modules\": {";
    for (int i = 0; i < kModules; ++i) {
      const Module& module = modules_[i];
      json += (i > 0 ? ", " : "") + Quoted("m" + std::to_string(i)) + ": {\"ports\": {" +
              Buses(module.ports, true) + "}, \"netnames\": {" + Buses(module.names, true) +
              "}, \"cells\": {";
      for (std::size_t c = 0; c < module.cells.size(); ++c) {
        const Cell& cell = module.cells[c];
        json += (c > 0 ? ", " : "") + Quoted(cell.name) + ": {\"type\": " +
                Quoted(cell.module == 0 ? "GATE" : "m" + std::to_string(cell.module)) +
                ", \"connections\": {" + Buses(cell.pins, false) + "}}";
      }
      json += "}}";
    }
    return json + "}}";
  }
  const std::string& dump() const { return dump_; }

  /// What each pin of a gate is to have: "T0 T1 TX TZ TC", or nothing where no name is dumped.
  std::map<std::string, std::string> Expected() const { return pins_; }
  std::string FiguresOf(const std::string& net) const {
    const std::string all = std::to_string(kTicks);
    const std::string root = Root(net);
    if (root == "\"0\"") return all + " 0 0 0 0";
    if (root == "\"1\"") return "0 " + all + " 0 0 0";
    if (root == "\"x\"") return "0 0 " + all + " 0 0";
    if (root == "\"z\"") return "0 0 0 " + all + " 0";
    if (!reached_.contains(root)) return "";
    const std::string& wave = waves_.at(root);
    const auto ones = std::count(wave.begin(), wave.end(), '1');
    int toggles = 0;
    for (std::size_t i = 1; i < wave.size(); ++i) toggles += wave[i] != wave[i - 1] ? 1 : 0;
    return std::to_string(kTicks - ones) + " " + std::to_string(ones) + " 0 0 " +
           std::to_string(toggles);
  }

 private:
  std::size_t Below(std::size_t limit) { return random_() % limit; }
  static std::string Quoted(const std::string& text) { return '"' + text + '"'; }

  Bus MakeBus(const std::string& name, std::size_t width, int nets, bool hasConstants) {
    Bus bus{name, static_cast<int>(Below(4)) - 1, Below(2) == 0, {}};
    for (std::size_t bit = 0; bit < width; ++bit) {
      bus.bits.push_back(hasConstants && Below(5) == 0
                             ? std::string(1, "01xz"[Below(4)]).insert(0, 1, '"') + '"'
                             : std::to_string(2 + Below(static_cast<std::size_t>(nets))));
    }
    return bus;
  }

  Module MakeModule(int number) {
    Module module;
    const int nets = 6;
    int next = 2;
    for (const char* name : {"a", "b"}) {
      if (number == 0) break;
      Bus port = MakeBus(name, 1 + Below(3), nets, false);
      for (std::string& bit : port.bits) bit = std::to_string(next++ % 6 + 2);
      // A net that goes through: the modules outside have it under two names.
      if (name[0] == 'b' && Below(3) == 0) port.bits.front() = module.ports[0].bits.front();
      module.ports.push_back(port);
    }
    for (const char* name : {"w", "v", "u/x", "y[2]"})
      if (Below(3) > 0)
        module.names.push_back(MakeBus(name, 1 + Below(4) * (name[1] == '\0'), nets, false));
    for (int i = 0; i < 2; ++i) {
      Cell gate{"g" + std::to_string(i), 0, {}};
      for (const char* pin : {"A", "B"}) {
        gate.pins.push_back(MakeBus(pin, 1 + Below(3), nets, true));
        gate.pins.back().offset = 0;
        gate.pins.back().isAscending = false;
      }
      module.cells.push_back(gate);
    }
    for (int inner = number + 1; inner < kModules; ++inner) {
      for (std::size_t uses = Below(3); uses > 0; --uses) {
        Cell cell{"i" + std::to_string(inner) + "_" + std::to_string(uses), inner, {}};
        for (const Bus& port : modules_[inner].ports) {
          cell.pins.push_back(MakeBus(port.name, 1 + Below(3), nets, false));
          // One constant only, since what goes through must not join two of them.
          if (Below(4) == 0) cell.pins.back().bits.front() = "\"1\"";
        }
        module.cells.push_back(cell);
      }
    }
    return module;
  }

  static std::string Buses(const std::vector<Bus>& buses, bool hasRange) {
    std::string json;
    for (const Bus& bus : buses) {
      json += (json.empty() ? "" : ", ") + Quoted(bus.name) + ": ";
      std::string bits;
      for (const std::string& bit : bus.bits) bits += (bits.empty() ? "" : ", ") + bit;
      json += !hasRange ? "[" + bits + "]"
                        : "{\"offset\": " + std::to_string(bus.offset) +
                              ", \"upto\": " + (bus.isAscending ? "1" : "0") + ", \"bits\": [" +
                              bits + "]}";
    }
    return json;
  }

  /// A net of an instance; constants are the same everywhere.
  static std::string NetOf(const std::string& path, const std::string& bit) {
    return bit.front() == '"' ? bit : path + ":" + bit;
  }
  std::string Root(std::string net) const {
    for (auto outer = joined_.find(net); outer != joined_.end() && outer->second != net;
         outer = joined_.find(net))
      net = outer->second;
    return net;
  }
  void Join(const std::string& a, const std::string& b) {
    std::string one = Root(a);
    std::string other = Root(b);
    if (one.front() == '"') std::swap(one, other);
    if (one != other) joined_[one] = other;
  }

  void LayOut(int number, const std::string& path) {
    const Module& module = modules_[number];
    for (int net = 2; net < 8; ++net)
      joined_.try_emplace(path + ":" + std::to_string(net), path + ":" + std::to_string(net));
    for (const Cell& cell : module.cells) {
      const std::string inner = path + cell.name + "/";
      if (cell.module == 0) {
        for (const Bus& pin : cell.pins) {
          for (std::size_t bit = 0; bit < pin.bits.size(); ++bit) {
            const std::string index = pin.bits.size() > 1 ? "[" + std::to_string(bit) + "]" : "";
            pins_[inner + pin.name + index] = NetOf(path, pin.bits[bit]);
          }
        }
        continue;
      }
      LayOut(cell.module, inner);
      for (std::size_t i = 0; i < cell.pins.size(); ++i) {
        const Bus& port = modules_[cell.module].ports[i];
        for (std::size_t bit = 0; bit < std::min(port.bits.size(), cell.pins[i].bits.size()); ++bit)
          Join(NetOf(inner, port.bits[bit]), NetOf(path, cell.pins[i].bits[bit]));
      }
    }
  }

  void MakeWave(const std::string& net) {
    std::string& wave = waves_[net];
    if (!wave.empty()) return;
    for (int tick = 0; tick < kTicks; ++tick) wave += net.front() == '"' ? net[1] : "01"[Below(2)];
  }

  void DeclareVariable(const std::string& name, const std::vector<std::string>& nets) {
    std::string code;
    for (std::size_t number = dumped_.size() + 1; number > 0; number /= 90)
      code += static_cast<char>('!' + number % 90);
    dump_ += "$var wire " + std::to_string(nets.size()) + " " + code + " " + name + " $end\n";
    dumped_[code] = nets;
  }

  /// Declares some of an instance's names: in a scope of its own, or with `flat` in front where the
  /// simulator knew the flattened design.
  void Declare(int number, const std::string& path, const std::string& flat) {
    for (const Bus& bus : modules_[number].names) {
      std::vector<std::string> nets;
      for (const std::string& bit : bus.bits) nets.push_back(Root(NetOf(path, bit)));
      const auto last = nets.size() - 1;
      const std::size_t how = Below(4);
      if (how == 0 || bus.name == "y[2]") {
        for (std::size_t bit = 0; bit <= last; ++bit) {
          const std::string index = "[" + std::to_string(bus.IndexOf(bit)) + "]";
          if (Below(4) > 0) DeclareVariable(flat + bus.name + (last > 0 ? index : ""), {nets[bit]});
        }
      } else if (how < 3) {
        const std::string range =
            "[" + std::to_string(bus.IndexOf(last)) + ":" + std::to_string(bus.IndexOf(0)) + "]";
        DeclareVariable(flat + bus.name + (last > 0 ? range : ""), nets);
      }
    }
    for (const Cell& cell : modules_[number].cells) {
      if (cell.module == 0) continue;
      const bool isFlat = !flat.empty() || Below(3) == 0;
      if (!isFlat) dump_ += "$scope module " + cell.name + " $end\n";
      Declare(cell.module, path + cell.name + "/",
              isFlat ? flat + cell.name + (Below(2) == 0 ? "." : "/") : "");
      if (!isFlat) dump_ += "$upscope $end\n";
    }
  }

  std::mt19937 random_;
  Module modules_[kModules];
  std::map<std::string, std::string> joined_;               // net, and the one that stands for both
  std::map<std::string, std::string> waves_;                // by net: its value in each tick
  std::map<std::string, std::string> pins_;                 // of gates: the net
  std::map<std::string, std::vector<std::string>> dumped_;  // by code: nets, the lowest bit first
  std::set<std::string> reached_;
  std::string dump_;
};

std::uint32_t ScopeCalled(const ActivityResult& result, const std::string& path) {
  for (std::uint32_t id = 0; id < result.declarations.scopes.size(); ++id)
    if (result.declarations.PathOf(id) == path) return id;
  return 0;
}

TEST(RandomNetlist, GivesEachPinTheFiguresOfItsNet) {
  std::size_t reached = 0;
  std::size_t unreached = 0;
  for (unsigned seed = 0; seed < 150; ++seed) {
    SCOPED_TRACE(seed);
    const RandomDesign design(seed);
    TextSource dump(design.dump());
    const ActivityResult result = CountActivity(dump, {});
    TextSource json(design.Json(), 50);
    const Netlist netlist = ReadNetlist(json, "n");
    PinOptions options;
    options.top = "m0";
    options.scope = ScopeCalled(result, "tb/dut");
    const NetlistPins pins(netlist, result, options);
    std::map<std::string, std::string> found;
    std::ostringstream rows;
    pins.ForEachPin([&](const CellPin& pin) {
      std::string path;
      pins.AppendCellPath(pin, path);
      std::string& figures = found[path + "/" + pin.name];
      if (!pin.figures) return;
      const BitFigures& f = *pin.figures;
      for (const std::uint64_t figure : {f.t0, f.t1, f.tx, f.tz, f.tc})
        figures += (figures.empty() ? "" : " ") + std::to_string(figure);
    });
    std::map<std::string, std::string> expected;
    for (const auto& [pin, net] : design.Expected()) {
      expected[pin] = design.FiguresOf(net);
      ++(expected[pin].empty() ? unreached : reached);
    }
    ASSERT_EQ(found, expected) << design.Json() << "\n" << design.dump();
    EXPECT_EQ(pins.pins(), expected.size());
  }
  EXPECT_GT(reached, 3000U);
  EXPECT_GT(unreached, 1000U);
}

}  // namespace
}  // namespace orsa::kesncd
