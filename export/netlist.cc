// The JSON is taken event by event: netlists of real chips have gigabytes of it. A place in it is
// the stack of the kinds of objects and arrays that are open.
#include "export/netlist.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <nlohmann/json.hpp>
#include <span>

#include "text/failure.h"

namespace orsa::kesncd {

std::uint32_t TextPool::Add(std::string_view text) {
  const auto found = ids_.find(text);
  if (found != ids_.end()) return found->second;
  const auto id = static_cast<std::uint32_t>(texts_.size());
  ids_.emplace(texts_.emplace_back(text), id);
  return id;
}

const NetlistModule* Netlist::InnerModule(const NetlistCell& cell) const {
  const auto found = moduleByName.find(cell.type);
  if (found == moduleByName.end() || modules[found->second].isBlackBox) return nullptr;
  return &modules[found->second];
}

const NetlistBus* NetlistModule::Port(std::uint32_t portName) const {
  const auto port = std::lower_bound(
      ports.begin(), ports.end(), portName,
      [](const NetlistBus& bus, std::uint32_t wanted) { return bus.name < wanted; });
  return port != ports.end() && port->name == portName ? &*port : nullptr;
}

namespace {

using Json = nlohmann::json;

/// What is open at a place in the JSON.
enum class Open {
  Outside,
  File,
  Modules,
  Module,
  Attributes,
  Ports,
  Port,
  Cells,
  Cell,
  Connections,
  Names,
  Name,
  Bits,
  Skipped,  // nothing in it is wanted
};

// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): a row reads from place to place
struct Step {
  Open in;
  std::string_view key;  // empty for any
  Open opens;
};

constexpr Step kSteps[] = {
    {Open::File, "modules", Open::Modules},
    {Open::Modules, "", Open::Module},
    {Open::Module, "attributes", Open::Attributes},
    {Open::Module, "ports", Open::Ports},
    {Open::Module, "cells", Open::Cells},
    {Open::Module, "netnames", Open::Names},
    {Open::Ports, "", Open::Port},
    {Open::Port, "bits", Open::Bits},
    {Open::Cells, "", Open::Cell},
    {Open::Cell, "connections", Open::Connections},
    {Open::Connections, "", Open::Bits},
    {Open::Names, "", Open::Name},
    {Open::Name, "bits", Open::Bits},
};

class NetlistReader : public nlohmann::json_sax<Json> {
 public:
  explicit NetlistReader(std::string name) : fileName_(std::move(name)) {}

  Netlist Take() {
    if (!sawModules_) Fail("has no \"modules\"; is it a netlist as Yosys writes it?");
    return std::move(netlist_);
  }

  bool null() override { return TakeOther(); }
  bool boolean(bool value) override { return TakeNumber(value ? 1 : 0); }
  bool number_integer(number_integer_t value) override { return TakeNumber(value); }
  bool number_unsigned(number_unsigned_t value) override;
  bool number_float(number_float_t /*value*/, const string_t& /*text*/) override {
    return TakeOther();
  }
  bool string(string_t& text) override;
  bool binary(binary_t& /*bytes*/) override { return TakeOther(); }
  bool start_object(std::size_t /*size*/) override;
  bool key(string_t& text) override;
  bool end_object() override { return End(); }
  bool start_array(std::size_t /*size*/) override;
  bool end_array() override { return End(); }
  bool parse_error(std::size_t position, const std::string& /*token*/,
                   const Json::exception& /*error*/) override {
    Fail("is no JSON from byte " + std::to_string(position) + " on");
  }

 private:
  static constexpr std::size_t kMost = std::numeric_limits<std::int32_t>::max();

  [[noreturn]] void Fail(const std::string& text) const {
    throw Failure(FailureKind::Unusable, fileName_ + ": " + text);
  }
  NetlistModule& module() { return netlist_.modules.back(); }
  Open open() const { return open_.empty() ? Open::Outside : open_.back(); }
  Open Opened() const;
  void Begin(Open opened);
  bool End();
  void EndModule();
  template <class Things>
  void FailIfTwice(const Things& things, const std::string& kind) const;
  bool TakeNumber(std::int64_t value);
  bool TakeOther();
  void TakeBit(NetId bit);
  void FailIfPartsAreWanted() const;
  void TakeAttribute(bool isSet);
  NetId NetOf(std::uint64_t number);

  const std::string fileName_;
  Netlist netlist_;
  std::vector<Open> open_;
  std::string key_;  // the last one
  bool sawModules_ = false;
  NetlistBus bus_;  // the port, pin or named net under way
  NetlistCell cell_;
  std::unordered_map<std::uint64_t, NetId> nets_;  // of the module, by their numbers in the file
};

Open NetlistReader::Opened() const {
  if (open() == Open::Outside) return Open::File;
  for (const Step& step : kSteps) {
    if (step.in == open() && (step.key.empty() || step.key == key_)) return step.opens;
  }
  return Open::Skipped;
}

bool NetlistReader::key(string_t& text) {
  // What opens in a skipped part needs no key, and a part may be large.
  if (open() != Open::Skipped) key_.swap(text);
  return true;
}

bool NetlistReader::start_object(std::size_t /*size*/) {
  const Open opened = Opened();
  if (opened == Open::Bits) Fail("has an object where bits are expected");
  Begin(opened);
  return true;
}

bool NetlistReader::start_array(std::size_t /*size*/) {
  if (open() == Open::Bits) Fail("has an array where a bit is expected");
  const Open opened = Opened();
  if (opened != Open::Bits && opened != Open::Skipped) {
    Fail("has an array where an object is expected");
  }
  Begin(opened);
  return true;
}

void NetlistReader::Begin(Open opened) {
  const Open in = open();
  open_.push_back(opened);
  if (opened == Open::Modules) sawModules_ = true;
  if (opened == Open::Module) {
    netlist_.modules.emplace_back();
    module().name = netlist_.texts.Add(key_);
    nets_.clear();
  }
  if (opened == Open::Cell) {
    cell_ = {netlist_.texts.Add(key_), netlist_.texts.Add(""),
             static_cast<std::uint32_t>(module().pins.size()), 0};
  }
  if (opened == Open::Port || opened == Open::Name || in == Open::Connections) {
    bus_ = {};
    bus_.name = netlist_.texts.Add(key_);
  }
  if (opened == Open::Bits) bus_.firstBit = static_cast<std::uint32_t>(module().bits.size());
}

bool NetlistReader::End() {
  const Open closed = open();
  open_.pop_back();
  switch (closed) {
    case Open::Module:
      EndModule();
      break;
    case Open::Cell:
      cell_.pins = static_cast<std::uint32_t>(module().pins.size()) - cell_.firstPin;
      FailIfTwice(std::span(module().pins).last(cell_.pins), "pins of a cell");
      module().cells.push_back(cell_);
      break;
    case Open::Port:
      module().ports.push_back(bus_);
      break;
    case Open::Name:
      module().names.push_back(bus_);
      break;
    case Open::Bits:
      bus_.width = static_cast<std::uint32_t>(module().bits.size()) - bus_.firstBit;
      if (open() == Open::Connections) module().pins.push_back(bus_);
      break;
    default:
      break;
  }
  return true;
}

void NetlistReader::EndModule() {
  NetlistModule& ended = module();
  ended.nets = static_cast<std::uint32_t>(nets_.size());
  const auto index = static_cast<std::uint32_t>(netlist_.modules.size() - 1);
  if (!netlist_.moduleByName.emplace(ended.name, index).second) {
    Fail("has two modules called " + netlist_.texts[ended.name]);
  }
  std::sort(ended.ports.begin(), ended.ports.end(),
            [](const NetlistBus& one, const NetlistBus& other) { return one.name < other.name; });
  FailIfTwice(ended.ports, "ports");
  FailIfTwice(ended.cells, "cells");
}

/// Things with names that tools look them up by: of two of a name, one would be lost.
template <class Things>
void NetlistReader::FailIfTwice(const Things& things, const std::string& kind) const {
  std::vector<std::uint32_t> names;
  names.reserve(things.size());
  for (const auto& thing : things) names.push_back(thing.name);
  std::sort(names.begin(), names.end());
  const auto twice = std::adjacent_find(names.begin(), names.end());
  if (twice != names.end()) Fail("has two " + kind + " called " + netlist_.texts[*twice]);
}

NetId NetlistReader::NetOf(std::uint64_t number) {
  const auto next = static_cast<NetId>(nets_.size() + kFirstNet);
  return nets_.try_emplace(number, next).first->second;
}

bool NetlistReader::number_unsigned(number_unsigned_t value) {
  if (open() == Open::Bits) {
    TakeBit(NetOf(value));
    return true;
  }
  const auto most = static_cast<number_unsigned_t>(std::numeric_limits<std::int64_t>::max());
  return TakeNumber(static_cast<std::int64_t>(std::min(value, most)));
}

/// A value of its own where parts are expected would leave them out.
void NetlistReader::FailIfPartsAreWanted() const {
  if (open() != Open::Bits && Opened() != Open::Skipped) {
    Fail("has a value for " + key_ + " where an object or bits are expected");
  }
}

bool NetlistReader::TakeNumber(std::int64_t value) {
  FailIfPartsAreWanted();
  const bool isBus = open() == Open::Port || open() == Open::Name;
  if (isBus && key_ == "offset") {
    // An index is an int in every tool; larger ones would overflow where they are counted on from.
    const auto most = static_cast<std::int64_t>(kMost);
    bus_.offset = std::clamp(value, -most, most);
  }
  if (isBus && key_ == "upto") bus_.isAscending = value != 0;
  if (open() == Open::Attributes) TakeAttribute(value != 0);
  return open() == Open::Bits ? TakeOther() : true;
}

bool NetlistReader::string(string_t& text) {
  FailIfPartsAreWanted();
  if (open() == Open::Cell && key_ == "type") cell_.type = netlist_.texts.Add(text);
  if (open() == Open::Attributes) TakeAttribute(text.find('1') != std::string::npos);
  if (open() != Open::Bits) return true;
  constexpr std::string_view kConstants = "01xz";
  const std::size_t constant =
      text.size() == 1 ? kConstants.find(text.front()) : std::string_view::npos;
  if (constant == std::string_view::npos) return TakeOther();
  TakeBit(static_cast<NetId>(constant));
  return true;
}

bool NetlistReader::TakeOther() {
  FailIfPartsAreWanted();
  if (open() == Open::Bits) Fail("has a bit that is neither a net's number nor 0, 1, x or z");
  return true;
}

void NetlistReader::TakeBit(NetId bit) {
  std::vector<NetId>& bits = module().bits;
  if (bits.size() >= kMost) Fail("has a module with too many bits");
  bits.push_back(bit);
}

void NetlistReader::TakeAttribute(bool isSet) {
  if (key_ == "top") module().isTop = isSet;
  if (key_ == "blackbox" || key_ == "whitebox") module().isBlackBox = isSet;
}

/// A source as the blocks that are read of it.
class Blocks {
 public:
  explicit Blocks(ByteSource& source) : source_(source), block_(std::size_t{1} << 16) { Read(); }

  bool IsAtEnd() const { return at_ == end_; }
  const char& Character() const { return block_[at_]; }
  void Skip() {
    if (++at_ == end_) Read();
  }

 private:
  void Read() {
    at_ = 0;
    end_ = source_.Read(block_.data(), block_.size());
  }

  ByteSource& source_;
  std::vector<char> block_;
  std::size_t at_ = 0;
  std::size_t end_ = 0;
};

/// The characters in blocks, for a parser that takes iterators. Without blocks it is the end.
class Characters {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  Characters() = default;
  explicit Characters(Blocks& blocks) : blocks_(&blocks) {}

  reference operator*() const { return blocks_->Character(); }
  Characters& operator++() {
    blocks_->Skip();
    return *this;
  }
  Characters operator++(int) {  // NOLINT(cert-dcl21-cpp): as iterators do
    const Characters before = *this;
    ++*this;
    return before;
  }
  bool operator==(const Characters& other) const { return IsAtEnd() == other.IsAtEnd(); }
  bool operator!=(const Characters& other) const { return !(*this == other); }

 private:
  bool IsAtEnd() const { return blocks_ == nullptr || blocks_->IsAtEnd(); }

  Blocks* blocks_ = nullptr;
};

}  // namespace

Netlist ReadNetlist(ByteSource& json, const std::string& name) {
  NetlistReader reader(name);
  Blocks blocks(json);
  Json::sax_parse(Characters(blocks), Characters(), &reader);
  return reader.Take();
}

}  // namespace orsa::kesncd
