// The JSON is taken event by event: netlists of real chips have gigabytes of it. A place in it is
// the stack of the kinds of objects and arrays that are open.
#include "export/netlist.h"

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>

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
  bool TakeNumber(std::int64_t value);
  bool TakeOther();
  void TakeBit(NetId bit);
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
  std::vector<std::uint32_t> names;
  for (const NetlistCell& cell : ended.cells) names.push_back(cell.name);
  std::sort(names.begin(), names.end());
  const auto twice = std::adjacent_find(names.begin(), names.end());
  if (twice != names.end()) Fail("has two cells called " + netlist_.texts[*twice]);
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

bool NetlistReader::TakeNumber(std::int64_t value) {
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

}  // namespace

Netlist ReadNetlist(std::FILE* json, const std::string& name) {
  NetlistReader reader(name);
  Json::sax_parse(json, &reader);
  return reader.Take();
}

}  // namespace orsa::kesncd
