// The scope tree of a dump as instances, and its bits as nets. What a reader could not take, or
// would take for something else, is left out and counted: half a file that is read is worth more
// than a whole one at which every reader stops.
#include "export/saif_writer.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "export/repeated_names.h"
#include "export/saif_text.h"
#include "text/failure.h"
#include "vcd/bit_names.h"

namespace orsa::kesncd {

namespace {

/// A name up to its first bracket: "q" for "q", "q[3]" and the escaped name "\q[3]". Only names
/// with the same start can be the same net.
std::string_view StartOf(const BitNames& names) {
  const std::string_view bare = SaifBareName(names.Base());
  return bare.substr(0, bare.find('['));
}

/// The bits of a scope that share a name, and which bit each name was first seen for. Calling
/// order: Add for every bit whose name may be shared, then IsAmbiguous and Take as bits are
/// written. Only for names that were added.
class SharedBits {
 public:
  // The same bit of the same code under one name twice is no conflict.
  void Add(const std::string& name, std::uint32_t codeId, std::uint32_t bit) {
    const auto [entry, isNew] = bits_.try_emplace(name, Entry{codeId, bit});
    const bool isSame = entry->second.codeId == codeId && entry->second.bit == bit;
    if (!isNew && !isSame) entry->second.isAmbiguous = true;
  }
  bool IsAmbiguous(const std::string& name) const { return bits_.at(name).isAmbiguous; }
  /// Whether the name is to be written now: the first time that it is asked for.
  bool Take(const std::string& name) { return !std::exchange(bits_.at(name).isTaken, true); }

 private:
  // The bit that had the name first.
  struct Entry {
    std::uint32_t codeId;
    std::uint32_t bit;
    // Another bit has it too: neither can be written, as a reader would mix them up.
    bool isAmbiguous = false;
    // It was written; an alias of the same name is the same net.
    bool isTaken = false;
  };
  std::unordered_map<std::string, Entry> bits_;
};

/// Calling order: construct, Write once. Depth first, with a stack of its own: a hostile dump may
/// nest scopes any number deep.
class SaifTree {
 public:
  /// Throws where there is nothing to write, or the root cannot have its name; nothing is written
  /// by then.
  SaifTree(const ActivityResult& result, const SaifOptions& options, std::ostream* unwritten);

  SaifReport Write(std::ostream& out);

 private:
  /// A scope under way.
  struct Frame {
    std::uint32_t scope;
    std::size_t next;  // of its inner scopes
    // False for a scope that is left out; what is below is then left out too, but counted.
    bool isWritten;  // as an instance
    // Names of its inner scopes, where some of them are equal.
    RepeatedNames scopeNames;
  };

  /// Whether the variable has nets: it has bits and was kept.
  bool HasBits(std::uint32_t variableId) const;
  void FindContents();
  void ChooseRoot();
  void Enter(std::uint32_t scope, bool isWritten, SaifStream& saif);
  void WriteScopes(SaifStream& saif);
  bool CanBeInstance(const Frame& outer, std::uint32_t scope) const;
  void WriteNets(std::uint32_t scope, SaifStream& saif);
  /// `shared` is null where no other variable of the scope can have one of its names.
  void WriteVariable(const DumpVariable& variable, SharedBits* shared, SaifStream& saif);
  /// Counts a bit that is not written, and lists it where that is wanted.
  void LeaveOut(const DumpVariable& variable, const BitNames& names, std::uint32_t bit);
  // With bits that are to be written; in the dump's order.
  template <class Visit>
  void ForEachVariable(std::uint32_t scope, Visit visit) const;
  // Filled ones, in the dump's order.
  template <class Visit>
  void ForEachInner(std::uint32_t scope, Visit visit) const;

  const ActivityResult& result_;
  const Declarations& declarations_;
  const SaifOptions& options_;
  std::ostream* const unwritten_;
  std::vector<bool> typeHasBits_;
  // Found once, so that no empty instance is written.
  std::vector<bool> filled_;        // by scope: there are bits to write in it or below
  std::vector<std::uint32_t> way_;  // from the root to the scope, both included
  std::vector<Frame> frames_;
  // Its counts grow as nets are written.
  SaifReport report_;
};

/// All that may fail by itself comes here, before the first byte.
SaifTree::SaifTree(const ActivityResult& result, const SaifOptions& options,
                   std::ostream* unwritten)
    : result_(result),
      declarations_(result.declarations),
      options_(options),
      unwritten_(unwritten) {
  for (const std::string& type : declarations_.types) typeHasBits_.push_back(TypeHasBits(type));
  FindContents();
  ChooseRoot();
}

/// Reals and the like have no bits; `kept` is what --scope and --match left.
bool SaifTree::HasBits(std::uint32_t variableId) const {
  const DumpVariable& variable = declarations_.variables[variableId];
  return variable.width > 0 && typeHasBits_[variable.typeId] &&
         (options_.kept.empty() || options_.kept[variableId]);
}

template <class Visit>
void SaifTree::ForEachVariable(std::uint32_t scope, Visit visit) const {
  for (const std::uint32_t id : declarations_.scopes[scope].variables) {
    if (HasBits(id)) visit(declarations_.variables[id]);
  }
}

template <class Visit>
void SaifTree::ForEachInner(std::uint32_t scope, Visit visit) const {
  for (const std::uint32_t inner : declarations_.scopes[scope].scopes) {
    if (filled_[inner]) visit(inner);
  }
}

/// From the leaves up, so that a scope is filled if anything in it is.
void SaifTree::FindContents() {
  const std::vector<DumpScope>& scopes = declarations_.scopes;
  filled_.resize(scopes.size());
  // A scope is declared after the one that it is in.
  for (std::size_t i = scopes.size(); i-- > 0;) {
    const auto scope = static_cast<std::uint32_t>(i);
    ForEachVariable(scope, [&](const DumpVariable&) { filled_[scope] = true; });
    if (filled_[scope]) filled_[scopes[scope].parent] = true;
  }
  // The chosen scope is empty, or reals only.
  if (!filled_[options_.scope]) {
    throw Failure(FailureKind::NothingMatched, "there is no bit to write");
  }
}

/// One top-level scope is the root by itself. Several of them, or variables outside every scope,
/// are put in an instance "top" made for them, since a file has exactly one outermost instance.
void SaifTree::ChooseRoot() {
  std::uint32_t scope = options_.scope;
  if (scope == Declarations::kDump) {
    std::vector<std::uint32_t> tops;
    // Those with nets; a package beside the design often has none.
    ForEachInner(scope, [&](std::uint32_t top) { tops.push_back(top); });
    bool isJoined = tops.size() > 1;
    ForEachVariable(scope, [&](const DumpVariable&) { isJoined = true; });
    // Not joined: there is exactly one, since the dump has bits to write.
    if (!isJoined) scope = tops.front();
    for (const std::uint32_t top : tops) {
      if (isJoined) report_.joined.push_back(declarations_.scopes[top].name);
    }
  }
  // The scope first, then those around it, then turned round.
  way_ = {scope};
  while (!options_.stripsWay && declarations_.scopes[way_.back()].parent != Declarations::kDump) {
    way_.push_back(declarations_.scopes[way_.back()].parent);
  }
  std::reverse(way_.begin(), way_.end());
  // kDump is left only where scopes are joined.
  const bool isMade = scope == Declarations::kDump;
  report_.root = !options_.root.empty() ? options_.root
                 : isMade               ? "top"
                          : std::string(SaifBareName(declarations_.scopes[way_.front()].name));
  // All of them stand in the file, so a reader must take each name.
  for (const std::uint32_t step : way_) {
    const std::string_view name = step == way_.front()
                                      ? std::string_view(report_.root)
                                      : SaifBareName(declarations_.scopes[step].name);
    CheckSaifRoot(name);
  }
}

/// The order is that of the text; nothing is kept but the stack of open scopes.
SaifReport SaifTree::Write(std::ostream& out) {
  SaifStream saif(out, SaifHeadOf(result_, options_, report_.root), SaifTimesOf(result_, options_));
  saif.Open(report_.root);
  // The way from the root's first inner scope to the chosen one is opened without nets.
  for (std::size_t i = 1; i < way_.size(); ++i) {
    saif.Open(SaifBareName(declarations_.scopes[way_[i]].name));
  }
  // With the chosen scope open.
  Enter(way_.back(), true, saif);
  WriteScopes(saif);
  // Those of the way; WriteScopes closes all others.
  for (std::size_t i = 0; i < way_.size(); ++i) saif.Close();
  saif.Finish();
  return std::move(report_);
}

/// Writes what a scope holds itself, and gets ready for its inner scopes.
void SaifTree::Enter(std::uint32_t scope, bool isWritten, SaifStream& saif) {
  frames_.push_back({scope, 0, isWritten, {}});
  // Not written: its bits are counted and listed, and its inner scopes after it.
  if (!isWritten) {
    ForEachVariable(scope, [&](const DumpVariable& variable) {
      const BitNames names(variable);
      for (std::uint32_t bit = names.width(); bit-- > 0;) LeaveOut(variable, names, bit);
    });
    return;
  }
  WriteNets(scope, saif);
  // Which names of inner scopes occur twice: in two rounds, see RepeatedNames.
  RepeatedNames& inner = frames_.back().scopeNames;
  const auto add = [&](std::uint32_t id) {
    inner.Add(SaifBareName(declarations_.scopes[id].name));
  };
  ForEachInner(scope, add);
  inner.Settle();
  if (!inner.AllDiffer()) ForEachInner(scope, add);
}

/// Goes on from the frame on top until all are done.
void SaifTree::WriteScopes(SaifStream& saif) {
  while (!frames_.empty()) {
    Frame& frame = frames_.back();
    const std::vector<std::uint32_t>& inner = declarations_.scopes[frame.scope].scopes;
    // All inner scopes are done.
    if (frame.next == inner.size()) {
      // The outermost one was opened by Write, which closes it.
      const bool isOutermost = frames_.size() == 1;
      if (frame.isWritten && !isOutermost) saif.Close();
      frames_.pop_back();
      continue;
    }
    const std::uint32_t scope = inner[frame.next++];
    if (!filled_[scope]) continue;
    // Where a scope is left out, so is everything in it.
    const bool isWritten = CanBeInstance(frame, scope);
    if (isWritten) saif.Open(SaifBareName(declarations_.scopes[scope].name));
    Enter(scope, isWritten, saif);
  }
}

/// Two scopes of one name would be one instance to a reader, with the nets of both.
bool SaifTree::CanBeInstance(const Frame& outer, std::uint32_t scope) const {
  const std::string_view name = SaifBareName(declarations_.scopes[scope].name);
  return outer.isWritten && IsSaifName(name) && !outer.scopeNames.IsRepeated(name);
}

/// First the names that several variables may share; mostly there are none.
void SaifTree::WriteNets(std::uint32_t scope, SaifStream& saif) {
  RepeatedNames starts;
  const auto add = [&](const DumpVariable& variable) { starts.Add(StartOf(BitNames(variable))); };
  ForEachVariable(scope, add);
  starts.Settle();
  SharedBits shared;
  // The second round, then the bits of those that share a name's start.
  if (!starts.AllDiffer()) {
    ForEachVariable(scope, add);
    ForEachVariable(scope, [&](const DumpVariable& variable) {
      const BitNames names(variable);
      if (!starts.IsRepeated(StartOf(names))) return;
      for (std::uint32_t bit = 0; bit < names.width(); ++bit) {
        std::string name;
        names.AppendName(bit, name);
        shared.Add(std::string(SaifBareName(name)), variable.codeId, bit);
      }
    });
  }
  // In the dump's order, whatever they share.
  ForEachVariable(scope, [&](const DumpVariable& variable) {
    const bool isShared = starts.IsRepeated(StartOf(BitNames(variable)));
    WriteVariable(variable, isShared ? &shared : nullptr, saif);
  });
}

/// From the highest bit down, as the range says.
void SaifTree::WriteVariable(const DumpVariable& variable, SharedBits* shared, SaifStream& saif) {
  const BitNames names(variable);
  const std::span<const BitFigures> figures = result_.BitsOf(variable.codeId);
  std::string name;
  for (std::uint32_t bit = names.width(); bit-- > 0;) {
    name.clear();
    names.AppendName(bit, name);
    // The backslash of an escaped name goes, as SaifBareName takes it off.
    if (name.front() == '\\') name.erase(0, 1);
    // A second variable of the same code and name: the same net, which is there already.
    if (shared != nullptr && !shared->IsAmbiguous(name) && !shared->Take(name)) continue;
    // One that a reader would stop at, or mix up.
    if (!IsSaifName(name) || (shared != nullptr && shared->IsAmbiguous(name))) {
      LeaveOut(variable, names, bit);
      continue;
    }
    saif.Net(SaifNetName(name), figures[bit]);
    ++report_.nets;
  }
}

/// The dump's own name, which a user can look up, also where it is escaped.
void SaifTree::LeaveOut(const DumpVariable& variable, const BitNames& names, std::uint32_t bit) {
  ++report_.unwritten;
  if (unwritten_ == nullptr) return;
  std::string path = declarations_.PathOf(variable.scope);
  if (!path.empty()) path += '/';
  names.AppendName(bit, path);
  path += '\n';
  unwritten_->write(path.data(), static_cast<std::streamsize>(path.size()));
}

}  // namespace

SaifHead SaifHeadOf(const ActivityResult& result, const SaifOptions& options,
                    const std::string& root) {
  return {root, result.declarations.date, options.version, result.observedTicks};
}

/// Both are errors rather than files of zeros: a reader would divide by them.
SaifTimes SaifTimesOf(const ActivityResult& result, const SaifOptions& options) {
  if (!result.tick) {
    throw Failure(FailureKind::Unusable,
                  "the dump has no time scale, so no time can be written as SAIF");
  }
  if (result.observedTicks == 0) {
    throw Failure(FailureKind::Unusable,
                  "no time was observed, and readers of SAIF divide by that time");
  }
  return {*result.tick, options.scaleNumerator, options.scaleDenominator};
}

SaifReport WriteSaif(const ActivityResult& result, const SaifOptions& options, std::ostream& out,
                     std::ostream* unwritten) {
  (void)SaifTimesOf(result, options);  // what is wrong with times shows before what is with names
  return SaifTree(result, options, unwritten).Write(out);
}

}  // namespace orsa::kesncd
