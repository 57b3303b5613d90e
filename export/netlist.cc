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

/// The text is copied before its view becomes a key: the view must be of the copy.
std::uint32_t TextPool::Add(std::string_view text) {
  const auto found = ids_.find(text);
  if (found != ids_.end()) return found->second;
  const auto id = static_cast<std::uint32_t>(texts_.size());
  ids_.emplace(texts_.emplace_back(text), id);
  return id;
}

// Most types are library cells, which the netlist does not define.
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

/// A row: inside `in`, what belongs to `key` opens `opens`. What no row allows is Skipped.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): a row reads from place to place
struct Step {
  Open in;
  std::string_view key;  // empty for any
  Open opens;
};

// Written like a path: File "modules", in it any module, in it "cells", in it any cell, ...
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

/// Takes the parser's events. Each returns true, "go on": what is wrong throws instead. Calling
/// order: the parser's events, then Take.
class NetlistReader : public nlohmann::json_sax<Json> {
 public:
  explicit NetlistReader(std::string name) : fileName_(std::move(name)) {}

  /// The netlist, once everything was read.
  Netlist Take() {
    if (!sawModules_) Fail("has no \"modules\"; is it a netlist as Yosys writes it?");
    return std::move(netlist_);
  }

  bool null() override { return TakeOther(); }
  // Some writers have true and false where Yosys has 1 and 0.
  bool boolean(bool value) override { return TakeNumber(value ? 1 : 0); }
  bool number_integer(number_integer_t value) override { return TakeNumber(value); }
  // Numbers of nets, which are never negative, or values such as an offset.
  bool number_unsigned(number_unsigned_t value) override;
  // No number with a fraction means anything in a netlist.
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
  // The parser's own words name its inside; a byte's number is what a user can look up.
  bool parse_error(std::size_t position, const std::string& /*token*/,
                   const Json::exception& /*error*/) override {
    Fail("is no JSON from byte " + std::to_string(position) + " on");
  }

 private:
  // Places and widths are kept in 32 bits.
  static constexpr std::size_t kMost = std::numeric_limits<std::int32_t>::max();

  /// Ends the reading with the file's name.
  [[noreturn]] void Fail(const std::string& text) const {
    throw Failure(FailureKind::Unusable, fileName_ + ": " + text);
  }
  // The module that is being read. Only inside of one.
  NetlistModule& module() { return netlist_.modules.back(); }
  Open open() const { return open_.empty() ? Open::Outside : open_.back(); }
  /// What the bracket that comes now opens at this place.
  Open Opened() const;
  /// Makes what is read from now on.
  void Begin(Open opened);
  /// Puts what was read where it belongs.
  bool End();
  void EndModule();
  template <class Things>
  void FailIfTwice(const Things& things, const std::string& kind) const;
  bool TakeNumber(std::int64_t value);
  bool TakeOther();
  void TakeBit(NetId bit);
  /// See its definition: a value where an object should be must not pass for an empty one.
  void FailIfPartsAreWanted() const;
  void TakeAttribute(bool isSet);
  /// The module's net of that number in the file; a new one if it was not met yet.
  NetId NetOf(std::uint64_t number);

  const std::string fileName_;
  Netlist netlist_;
  // One entry for each bracket that is open.
  std::vector<Open> open_;
  std::string key_;  // the last one: of the member whose value comes next
  bool sawModules_ = false;
  NetlistBus bus_;  // the port, pin or named net under way
  NetlistCell cell_;
  std::unordered_map<std::uint64_t, NetId> nets_;  // of the module, by their numbers in the file
};

/// The first bracket is the file's own.
Open NetlistReader::Opened() const {
  if (open() == Open::Outside) return Open::File;
  // A dozen rows: nothing faster is worth having.
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

/// An object's members and arrays of bits have nothing in common, so each mistake is told.
bool NetlistReader::start_object(std::size_t /*size*/) {
  const Open opened = Opened();
  if (opened == Open::Bits) Fail("has an object where bits are expected");
  Begin(opened);
  return true;
}

/// An array in a skipped part is skipped, whatever is in it.
bool NetlistReader::start_array(std::size_t /*size*/) {
  if (open() == Open::Bits) Fail("has an array where a bit is expected");
  const Open opened = Opened();
  if (opened != Open::Bits && opened != Open::Skipped) {
    Fail("has an array where an object is expected");
  }
  Begin(opened);
  return true;
}

/// `in` is what was open before.
void NetlistReader::Begin(Open opened) {
  const Open in = open();
  open_.push_back(opened);
  if (opened == Open::Modules) sawModules_ = true;
  if (opened == Open::Module) {
    netlist_.modules.emplace_back();
    module().name = netlist_.texts.Add(key_);
    // Numbers of nets begin anew in each module.
    nets_.clear();
  }
  // A cell without a "type" has an empty one, which no module has.
  if (opened == Open::Cell) {
    cell_ = {netlist_.texts.Add(key_), netlist_.texts.Add(""),
             static_cast<std::uint32_t>(module().pins.size()), 0};
  }
  // A pin of a cell has its bits directly as its value; ports and names have them inside an object.
  if (opened == Open::Port || opened == Open::Name || in == Open::Connections) {
    bus_ = {};
    bus_.name = netlist_.texts.Add(key_);
  }
  // Bits come right after this and are not mixed with others'.
  if (opened == Open::Bits) bus_.firstBit = static_cast<std::uint32_t>(module().bits.size());
}

/// `closed` may be Skipped, for which nothing is done.
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
      // A pin is complete with its bits; ports and names with their object, which may still say
      // offset and upto.
      if (open() == Open::Connections) module().pins.push_back(bus_);
      break;
    default:
      break;
  }
  return true;
}

/// Looked at when a module is complete: the parser gives an object's members as they come, also two
/// of a name.
void NetlistReader::EndModule() {
  NetlistModule& ended = module();
  ended.nets = static_cast<std::uint32_t>(nets_.size());
  const auto index = static_cast<std::uint32_t>(netlist_.modules.size() - 1);
  if (!netlist_.moduleByName.emplace(ended.name, index).second) {
    Fail("has two modules called " + netlist_.texts[ended.name]);
  }
  // See NetlistModule::Port.
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

/// Numbers in a file may be any; here they are counted without gaps, as they are places in vectors.
NetId NetlistReader::NetOf(std::uint64_t number) {
  const auto next = static_cast<NetId>(nets_.size() + kFirstNet);
  return nets_.try_emplace(number, next).first->second;
}

/// Where bits are listed, a number is a net; elsewhere it is a value like others.
bool NetlistReader::number_unsigned(number_unsigned_t value) {
  if (open() == Open::Bits) {
    TakeBit(NetOf(value));
    return true;
  }
  // A number beyond 63 bits is an offset or an attribute that nobody can mean.
  const auto most = static_cast<number_unsigned_t>(std::numeric_limits<std::int64_t>::max());
  return TakeNumber(static_cast<std::int64_t>(std::min(value, most)));
}

/// A value of its own where parts are expected would leave them out.
void NetlistReader::FailIfPartsAreWanted() const {
  if (open() != Open::Bits && Opened() != Open::Skipped) {
    Fail("has a value for " + key_ + " where an object or bits are expected");
  }
}

/// Offset, "upto" and the attributes that matter; all other numbers are passed over.
bool NetlistReader::TakeNumber(std::int64_t value) {
  FailIfPartsAreWanted();
  const bool isBus = open() == Open::Port || open() == Open::Name;
  // Whether its member belongs to a port or a named net.
  if (isBus && key_ == "offset") {
    // An index is an int in every tool; larger ones would overflow where they are counted on from.
    const auto most = static_cast<std::int64_t>(kMost);
    bus_.offset = std::clamp(value, -most, most);
  }
  // [0:3] instead of [3:0].
  if (isBus && key_ == "upto") bus_.isAscending = value != 0;
  if (open() == Open::Attributes) TakeAttribute(value != 0);
  // A negative number among bits is no net.
  return open() == Open::Bits ? TakeOther() : true;
}

/// Types, constants among bits, and attributes as Yosys writes them: texts of binary digits, such
/// as "00000000000000000000000000000001".
bool NetlistReader::string(string_t& text) {
  FailIfPartsAreWanted();
  if (open() == Open::Cell && key_ == "type") cell_.type = netlist_.texts.Add(text);
  if (open() == Open::Attributes) TakeAttribute(text.find('1') != std::string::npos);
  if (open() != Open::Bits) return true;
  constexpr std::string_view kConstants = "01xz";
  // The place in the text is the NetId; see kConstant0 and so on.
  const std::size_t constant =
      text.size() == 1 ? kConstants.find(text.front()) : std::string_view::npos;
  if (constant == std::string_view::npos) return TakeOther();
  TakeBit(static_cast<NetId>(constant));
  return true;
}

/// null, a fraction or anything else: among bits it is a mistake, elsewhere nothing that is wanted.
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

/// A white box says what it does but is one cell to a power estimator, as a black box is.
void NetlistReader::TakeAttribute(bool isSet) {
  if (key_ == "top") module().isTop = isSet;
  if (key_ == "blackbox" || key_ == "whitebox") module().isBlackBox = isSet;
}

/// A source as the blocks that are read of it. One block of 64 KiB in memory, however long the file
/// is.
class Blocks {
 public:
  // Reads ahead, so that an empty source is at its end at once.
  explicit Blocks(ByteSource& source) : source_(source), block_(std::size_t{1} << 16) { Read(); }

  bool IsAtEnd() const { return at_ == end_; }
  /// Only where it is not at the end. A reference, since iterators have to give one.
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
/// Copies share the blocks: going on with one of them moves all, as input iterators may.
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
  // Two ends are equal, and two that are not at the end; a parser compares with the end only.
  bool operator==(const Characters& other) const { return IsAtEnd() == other.IsAtEnd(); }
  bool operator!=(const Characters& other) const { return !(*this == other); }

 private:
  bool IsAtEnd() const { return blocks_ == nullptr || blocks_->IsAtEnd(); }

  Blocks* blocks_ = nullptr;
};

}  // namespace

/// What the source throws passes through the parser.
Netlist ReadNetlist(ByteSource& json, const std::string& name) {
  NetlistReader reader(name);
  Blocks blocks(json);
  // The parser builds no tree: each event goes to the reader and is forgotten.
  Json::sax_parse(Characters(blocks), Characters(), &reader);
  return reader.Take();
}

}  // namespace orsa::kesncd
