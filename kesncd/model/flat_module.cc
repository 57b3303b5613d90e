// The flat module: parallel vectors addressed by signal index.
#include <algorithm>
#include <bit>
#include <iostream>
#include <utility>

#include "kesncd/kesncd.h"
#include "kesncd/model/activity_file.h"
#include "kesncd/model/state_frequency.h"
#include "line_readers/code_counts.h"
#include "text/number.h"
#include "text/secret_hash.h"
#include "vcd/change_count.h"

namespace orsa::kesncd {

namespace {

/// A negative index becomes a huge position, which is outside as well.
template <class T>
T At(const std::vector<T>& values, int index) {
  const auto position = static_cast<std::size_t>(index);
  return position < values.size() ? values[position] : T();
}

/// Outside the list nothing is erased: the lists may differ in length after a removal by name.
template <class T>
void EraseAt(std::vector<T>& values, std::size_t index) {
  if (index < values.size()) values.erase(values.begin() + static_cast<std::ptrdiff_t>(index));
}

/// Makes sure that one element more can be appended. By doubling, as the list itself grows;
/// reserving each time for one more would copy all of it each time.
template <class T>
void MakeRoom(std::vector<T>& values) {
  if (values.size() == values.capacity()) values.reserve(2 * values.size() + 1);
}

/// The number of values where it is none of them.
std::size_t FirstOf(const std::vector<std::string>& values, const std::string& value) {
  return static_cast<std::size_t>(std::find(values.begin(), values.end(), value) - values.begin());
}

}  // namespace

Vmod::Vmod() : indexed_(0) {}

Vmod::Vmod(const std::string& name) : name_(name), indexed_(0) {}

Vmod::~Vmod() = default;

void Vmod::SetName(const std::string& name) {
  name_ = name;
}

std::string Vmod::GetName() const {
  return name_;
}

void Vmod::AddSignal(const std::string& name, const std::string& type, const std::string& symbol,
                     int nbit) {
  // What can fail comes first, so that the lists stay in step. Copies too: a text may be one of
  // this module's own.
  std::string texts[] = {name, type, symbol};
  MakeRoom(names_);
  MakeRoom(types_);
  MakeRoom(symbols_);
  MakeRoom(nbits_);
  MakeRoom(changes_);
  MakeRoom(states_);
  names_.push_back(std::move(texts[0]));
  types_.push_back(std::move(texts[1]));
  symbols_.push_back(std::move(texts[2]));
  nbits_.push_back(nbit);
  changes_.push_back(0);
  states_.emplace_back();
}

int Vmod::GetSignalSize() const {
  return static_cast<int>(names_.size());
}
std::string Vmod::GetSignalName(int index) const {
  return At(names_, index);
}
std::string Vmod::GetSignalType(int index) const {
  return At(types_, index);
}
std::string Vmod::GetSignalSymb(int index) const {
  return At(symbols_, index);
}
std::string Vmod::GetSignalState(int index) const {
  return At(states_, index);
}
int Vmod::GetSignalNbit(int index) const {
  return At(nbits_, index);
}
int Vmod::GetSignalChange(int index) const {
  return At(changes_, index);
}

/// The place of firstOfSymbol_ that a symbol has, or that it would take. Open addressing over
/// indices: no text is kept twice.
std::size_t& Vmod::SlotOf(const std::string& symbol) {
  const std::size_t mask = firstOfSymbol_.size() - 1;
  std::size_t slot = SecretHash(symbol) & mask;
  while (firstOfSymbol_[slot] != 0 && symbols_[firstOfSymbol_[slot] - 1] != symbol) {
    // The search ends, since half of the places are free.
    slot = (slot + 1) & mask;
  }
  return firstOfSymbol_[slot];
}

/// Brings firstOfSymbol_ up to the signals added since the last count. Of its places, a power of
/// two, half stay free at least.
void Vmod::IndexSymbols() {
  // Adding signals leaves the index behind; it is brought up when a change is counted.
  if (indexed_ == symbols_.size() && !firstOfSymbol_.empty()) return;
  // Grown to four times as many, so that it is built again only after the module has doubled.
  if (firstOfSymbol_.size() < 2 * symbols_.size() + 1) {
    firstOfSymbol_.assign(std::bit_ceil(4 * symbols_.size() + 1), 0);
    indexed_ = 0;
  }
  for (; indexed_ < symbols_.size(); ++indexed_) {
    std::size_t& slot = SlotOf(symbols_[indexed_]);
    // The first signal of a symbol keeps the place: it alone counts.
    if (slot == 0) slot = indexed_ + 1;
  }
}

/// Hosts that read dumps themselves call this for each change.
void Vmod::IncreaseChangeForSymbol(const std::string& symbol) {
  IndexSymbols();
  const std::size_t found = SlotOf(symbol);
  if (found != 0) AddToCount(changes_[found - 1], 1);
}

/// What the module holds before a reading counts in it, too.
void Vmod::AddCodesTo(CodeCounts& counts) const {
  for (const std::string& symbol : symbols_) counts.Add(symbol);
}

/// The first signal of a code takes all; for the others nothing is left.
void Vmod::TakeChangesOf(CodeCounts& counts) {
  for (std::size_t i = 0; i < symbols_.size(); ++i) {
    AddToCount(changes_[i], counts.Take(symbols_[i]));
  }
}

double Vmod::GetSignalFreq(int index) const {
  ClearDebugLatch();
  return FrequencyOf(GetSignalChange(index));
}

/// Removes a signal. The widths are a list of their own: one removal leaves them alone. The index
/// of symbols is built anew, since all after the signal have moved.
void Vmod::Remove(std::size_t index, bool widthToo) {
  if (index >= names_.size()) return;
  EraseAt(names_, index);
  EraseAt(types_, index);
  EraseAt(symbols_, index);
  EraseAt(changes_, index);
  EraseAt(states_, index);
  if (widthToo) EraseAt(nbits_, index);
  firstOfSymbol_.clear();
  indexed_ = 0;
}

/// A negative index is past the end.
void Vmod::RemoveSignal(int index) {
  Remove(static_cast<std::size_t>(index), true);
}

void Vmod::RemoveSignal(const std::string& name) {
  Remove(FirstOf(names_, name), false);
}

void Vmod::RemoveSignal(const std::string& name, const std::string& type) {
  std::size_t index = 0;
  while (index < names_.size() && (names_[index] != name || types_[index] != type)) ++index;
  Remove(index, true);
}

void Vmod::Clear() {
  name_.clear();
  names_.clear();
  types_.clear();
  symbols_.clear();
  nbits_.clear();
  changes_.clear();
  states_.clear();
  firstOfSymbol_.clear();
  indexed_ = 0;
}

void Vmod::PrintMod() const {
  // The blanks of these texts are what hosts have always shown.
  std::cout << "PrintMod: name=" << name_ << std::endl;
  for (int i = 0; i < GetSignalSize(); ++i) {
    std::cout << "  " << GetSignalName(i) << " (" << GetSignalType(i)
              << ") symbol= " << GetSignalSymb(i) << " (bit=" << std::to_string(GetSignalNbit(i))
              << ") change: " << std::to_string(GetSignalChange(i))
              << "  freq: " << DisplayText(GetSignalFreq(i)) << std::endl;
  }
}

void Vmod::PrintModSimple() const {
  std::cout << "name=" << name_ << std::endl;
  for (int i = 0; i < GetSignalSize(); ++i) {
    std::cout << "  " << GetSignalName(i) << "  freq: " << DisplayText(GetSignalFreq(i))
              << std::endl;
  }
}

void Vmod::DumpIntoFile(const std::string& path) const {
  AppendActivity(*this, path);
}

/// Vsig is kept for hosts; nothing of a reading gets into one.
Vsig::Vsig() : freq_(-1.0) {}

Vsig::Vsig(const std::string& name) : name_(name), freq_(-1.0) {}

void Vsig::SetSig(const std::string& name) {
  name_ = name;
}

/// Type and frequency have never been taken.
void Vsig::SetSig(const std::string& name, const std::string& /*type*/, double /*freq*/) {
  name_ = name;
}

std::string Vsig::GetSigName() const {
  return name_;
}
std::string Vsig::GetSigType() const {
  return type_;
}
double Vsig::GetSigFreq() const {
  return freq_;
}

void Vsig::PrintSig() const {
  std::cout << "PrintSig: name=" << name_ << " type=" << type_ << " freq=" << DisplayText(freq_)
            << std::endl;
}

}  // namespace orsa::kesncd
