// Rows into records, and frequencies into records.
#include "kesncd/model/power_records.h"

#include <utility>

namespace orsa::kesncd {

namespace {

// As in the records' declarations: hosts test for a negative frequency.
constexpr double kUnknown = -1.0;

/// The net in the top module goes before the port, since it is looked up last: a find overwrites.
/// Without the component's own frequency, which FillRecord finds.
void FillPorts(KesComp& component, RecordLookup& lookup) {
  for (KesPort& port : component.outPorts) {
    lookup.FindPort(component.name, port.portName, port.freq);
    lookup.FindTop(port.netName, port.freq);
  }
}

/// Mean over the components, `defaultFreq` for unknown ones; unknown when all of them are.
double MeanOf(const std::vector<KesComp>& components, double defaultFreq) {
  bool anyKnown = false;
  double sum = 0.0;
  for (const KesComp& component : components) {
    // Not `>= 0`: what is no number counts as known, as it always has.
    const bool known = !(component.freq < 0.0);
    anyKnown = anyKnown || known;
    sum += known ? component.freq : defaultFreq;
  }
  // An unknown input takes part with the default, so the mean is of all of them.
  return anyKnown ? sum / static_cast<double>(components.size()) : kUnknown;
}

}  // namespace

void RecordBuilder::TakeRow(const std::string& kind, const std::string& first,
                            const std::string& second) {
  if (kind == "SIGNAL") {
    OpenSignal(first);
  } else if (kind == "INPUT") {
    OpenComponent(Component::Input, first, second);
  } else if (kind == "OUTPUT") {
    OpenComponent(Component::Output, first, second);
  } else if (kind == "OUTPORT") {
    // Also where no component is open: its ports are lost with it, and nothing else is harmed. The
    // row's first text is the net, the second the port.
    component_.outPorts.push_back({first, second, kUnknown});
  }
}

/// A last signal goes into the records only with a component that is still open on it.
std::vector<KesSigFreq> RecordBuilder::Finish() {
  if (CloseComponent()) records_.push_back(std::move(signal_));
  return std::move(records_);
}

/// A component that is open belongs to the signal before.
void RecordBuilder::OpenSignal(const std::string& name) {
  CloseComponent();
  if (signalIsOpen_) records_.push_back(std::move(signal_));
  // Also a name that was there before: each row makes a record of its own.
  signal_ = {name, {}, {}, kUnknown};
  signalIsOpen_ = true;
}

void RecordBuilder::OpenComponent(Component kind, const std::string& name,
                                  const std::string& type) {
  // Ports that came without a component are gone with this.
  CloseComponent();
  component_ = {name, type, {}, kUnknown};
  open_ = kind;
}

/// Hangs the open component on the signal; false when there is none.
bool RecordBuilder::CloseComponent() {
  switch (open_) {
    case Component::None:
      return false;
    case Component::Input:
      signal_.inputs.push_back(std::move(component_));
      break;
    case Component::Output:
      signal_.outputs.push_back(std::move(component_));
      break;
  }
  open_ = Component::None;
  return true;
}

void FillRecord(KesSigFreq& signal, RecordLookup& lookup, double defaultFreq) {
  for (KesComp& input : signal.inputs) {
    // A slice that drives the signal says nothing of it under its own name.
    if (input.type != "FSLICE" && input.type != "SLICE") lookup.FindTop(input.name, input.freq);
    FillPorts(input, lookup);
  }
  for (KesComp& output : signal.outputs) {
    lookup.FindTop(output.name, output.freq);
    FillPorts(output, lookup);
  }
  // The signal itself comes last, for the mean needs what its inputs were found to have.
  if (!lookup.FindTop(signal.name, signal.freq)) {
    signal.freq = MeanOf(signal.inputs, defaultFreq);
  }
}

}  // namespace orsa::kesncd
