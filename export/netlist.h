// A gate-level netlist as Yosys writes it in JSON: cells, and the nets that their pins are on. A
// simulator dumps nets, a power estimator wants pins; the netlist says which is on which.
#ifndef KESNCD_EXPORT_NETLIST_H_
#define KESNCD_EXPORT_NETLIST_H_

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "text/byte_stream.h"

namespace orsa::kesncd {

/// Texts that occur often, each kept once and known by a number.
class TextPool {
 public:
  TextPool() = default;
  TextPool(TextPool&&) = default;
  TextPool& operator=(TextPool&&) = default;

  std::uint32_t Add(std::string_view text);
  const std::string& operator[](std::uint32_t id) const { return texts_[id]; }

 private:
  std::deque<std::string> texts_;  // their places stay
  std::unordered_map<std::string_view, std::uint32_t> ids_;
};

/// What a bit is connected to: one of four constants, or a net of the module, counted from
/// kFirstNet.
using NetId = std::uint32_t;
constexpr NetId kConstant0 = 0;
constexpr NetId kConstant1 = 1;
constexpr NetId kConstantX = 2;
constexpr NetId kConstantZ = 3;
constexpr NetId kFirstNet = 4;

/// Several bits with one name: a port of a module, a pin of a cell, a named net.
struct NetlistBus {
  std::uint32_t name = 0;      // in the pool
  std::uint32_t firstBit = 0;  // in the module's bits, the lowest bit first
  std::uint32_t width = 0;
  std::int64_t offset = 0;   // the smallest index
  bool isAscending = false;  // the lowest bit has the largest index: [0:3]

  std::int64_t Index(std::uint32_t bit) const {
    // cppcheck-suppress integerOverflow ; the width is positive and has 32 bits
    return offset + (isAscending ? std::int64_t{width} - 1 - bit : std::int64_t{bit});
  }
};

struct NetlistCell {
  std::uint32_t name = 0;
  std::uint32_t type = 0;
  std::uint32_t firstPin = 0;  // in the module's pins
  std::uint32_t pins = 0;
};

struct NetlistModule {
  std::uint32_t name = 0;
  bool isTop = false;             // says so itself
  bool isBlackBox = false;        // only its ports are known: what is of its kind is a cell
  std::uint32_t nets = 0;         // different ones that its bits are connected to
  std::vector<NetlistBus> ports;  // by name
  std::vector<NetlistBus> names;
  std::vector<NetlistCell> cells;
  std::vector<NetlistBus> pins;
  std::vector<NetId> bits;

  /// The port of that name; null where there is none.
  const NetlistBus* Port(std::uint32_t portName) const;
};

struct Netlist {
  TextPool texts;
  std::vector<NetlistModule> modules;
  std::unordered_map<std::uint32_t, std::uint32_t> moduleByName;

  /// The module of a cell's type; null for one that is a leaf: a gate, a macro.
  const NetlistModule* InnerModule(const NetlistCell& cell) const;
};

/// Reads a netlist in JSON as a stream: memory is in proportion to its cells and nets. Throws
/// Failure with Unusable, calling the source `name`, for what is no netlist.
Netlist ReadNetlist(ByteSource& json, const std::string& name);

}  // namespace orsa::kesncd

#endif  // KESNCD_EXPORT_NETLIST_H_
