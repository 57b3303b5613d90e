// A gate-level netlist as Yosys writes it in JSON: cells, and the nets that their pins are on. A
// simulator dumps nets, a power estimator wants pins; the netlist says which is on which.
//
// What of the JSON is read:
//
//   {"modules": {"soc": {
//     "attributes": {"top": 1},
//     "ports": {"clk": {"direction": "input", "bits": [2]}},
//     "cells": {"_07_": {"type": "NAND2", "connections": {"A": [2], "Y": [3]}}},
//     "netnames": {"q": {"bits": [3, "0"], "offset": 4, "upto": 1}}}}}
//
// Numbers in "bits" are nets of the module, texts are the constants "0", "1", "x" and "z".
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

/// Texts that occur often, each kept once and known by a number. Calling order: Add any number of
/// times; a number that it gave is good as long as the pool. Not copied: the map's keys are views
/// of the texts, whose places a move keeps.
class TextPool {
 public:
  TextPool() = default;
  TextPool(TextPool&&) = default;
  TextPool& operator=(TextPool&&) = default;

  /// The number of the text, a new one if it was never added.
  std::uint32_t Add(std::string_view text);
  const std::string& operator[](std::uint32_t id) const { return texts_[id]; }

 private:
  // A deque, since a vector would move them when it grows.
  std::deque<std::string> texts_;
  std::unordered_map<std::string_view, std::uint32_t> ids_;
};

/// What a bit is connected to: one of four constants, or a net of the module, counted from
/// kFirstNet. Numbers in a module's `bits`; they mean something in that module only.
using NetId = std::uint32_t;
constexpr NetId kConstant0 = 0;
constexpr NetId kConstant1 = 1;
constexpr NetId kConstantX = 2;
constexpr NetId kConstantZ = 3;
constexpr NetId kFirstNet = 4;

/// Several bits with one name: a port of a module, a pin of a cell, a named net. The index of a bit
/// is what its name has in brackets: of "q[7:4]" bit 0 has index 4.
struct NetlistBus {
  std::uint32_t name = 0;      // in the pool
  std::uint32_t firstBit = 0;  // in the module's bits, the lowest bit first
  std::uint32_t width = 0;
  std::int64_t offset = 0;   // the smallest index
  bool isAscending = false;  // the lowest bit has the largest index: [0:3]

  /// `bit` counts from 0, the lowest (rightmost) one. Offsets are 31 bits wide (see TakeNumber), so
  /// nothing overflows.
  std::int64_t Index(std::uint32_t bit) const {
    // cppcheck-suppress integerOverflow ; the width is positive and has 32 bits
    return offset + (isAscending ? std::int64_t{width} - 1 - bit : std::int64_t{bit});
  }
};

/// A gate, a macro or an instance of another module, depending on its type.
struct NetlistCell {
  std::uint32_t name = 0;
  std::uint32_t type = 0;
  std::uint32_t firstPin = 0;  // in the module's pins, where they are together
  std::uint32_t pins = 0;
};

/// Names are numbers in the netlist's pool; buses and cells refer to `pins` and `bits` by places.
struct NetlistModule {
  std::uint32_t name = 0;         // the key in "modules"
  bool isTop = false;             // by the attribute "top"
  bool isBlackBox = false;        // only its ports are known: what is of its kind is a cell
  std::uint32_t nets = 0;         // different ones that its bits are connected to
  std::vector<NetlistBus> ports;  // by name
  // In the file's order, aliases of nets among them.
  std::vector<NetlistBus> names;
  std::vector<NetlistCell> cells;
  // Of all cells, cell by cell.
  std::vector<NetlistBus> pins;
  // Of all ports, pins and names, one after the other.
  std::vector<NetId> bits;

  /// The port of that name; null where there is none. `portName` is a number in the pool. Binary
  /// search, as ports are sorted by it.
  const NetlistBus* Port(std::uint32_t portName) const;
};

/// Modules in the file's order, as they are defined: what is in them is laid out by NetlistPins.
struct Netlist {
  TextPool texts;
  std::vector<NetlistModule> modules;
  // By name in the pool: a place in `modules`.
  std::unordered_map<std::uint32_t, std::uint32_t> moduleByName;

  /// The module of a cell's type; null for one that is a leaf: a gate, a macro. Also null for a
  /// module of which only the ports are known. Valid as long as the netlist.
  const NetlistModule* InnerModule(const NetlistCell& cell) const;
};

/// Reads a netlist in JSON as a stream: memory is in proportion to its cells and nets. Throws
/// Failure with Unusable, calling the source `name`, for what is no netlist. The message names the
/// byte at which it is no JSON, or what is missing or there twice.
Netlist ReadNetlist(ByteSource& json, const std::string& name);

}  // namespace orsa::kesncd

#endif  // KESNCD_EXPORT_NETLIST_H_
