// kesncd power: frequencies for the rows of a power table.
//
// A power estimator's table says which components hang on which net; this fills in the frequencies.
// The input is a CSV file, and one record of it (a SIGNAL row with what follows up to the next one)
// becomes as many rows of the result:
//
//   SIGNAL,clk           ->  signal  clk                        100  found
//   INPUT,u_pll,PLL      ->  input   clk  u_pll  PLL        unknown  not found
//   OUTPUT,u_ff,FF       ->  output  clk  u_ff   FF              50  found
//   OUTPORT,clk_q,Q      ->  port    clk  u_ff   FF  Q  clk_q    50  found
//
// How rows become records is the library's (see RecordBuilder), as is the rule for unknown signals;
// only where a name is looked up differs between the direct way and --as-is.
#include <memory>
#include <unordered_map>
#include <variant>

#include "cli/commands/commands.h"
#include "cli/host_figures/host_runs.h"
#include "cli/input/list_file.h"
#include "host/standalone/standalone_host.h"
#include "kesncd/kesncd.h"
#include "kesncd/model/power_records.h"
#include "names/signal_search.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

using orsa::kesncd::KesComp;
using orsa::kesncd::KesPort;
using orsa::kesncd::KesSigFreq;
using orsa::kesncd::standalone::PowerDocument;

struct PowerOptions {
  FigureOptions figures;
  // The table of connections.
  std::string table;
  // The module that names are looked up in; empty: the outermost with variables.
  std::string top;
  // MHz, for unknown inputs in a mean.
  double defaultFrequency = 0.0;
  bool ignoreCase = false;
  OutputOptions output;
};

constexpr char kPowerHelp[] =
    "Frequencies for the signals, components and ports of a table of connections\n"
    "\n"
    "Examples:\n"
    "  kesncd power sim.vcd connections.csv --top soc\n"
    "  kesncd power sim.vcd connections.csv --top soc --default-freq 10 --format json\n"
    "\n"
    "The table is CSV without a heading, a row a line: SIGNAL,name  INPUT,component,type\n"
    "OUTPUT,component,type  OUTPORT,net,port, the kinds in any letter case. Names are looked up in "
    "the module of --top and "
    "below\n"
    "it, as kesncd find looks them up; a name that means different signals takes the outermost "
    "and\n"
    "is marked ambiguous. A signal that the dump does not hold has the mean frequency of its\n"
    "inputs, when one of them is known.\n";

// The section of a power document that the library reads the rows from.
constexpr char kConnections[] = "Hierarchical Connections";

/// All names of a table, looked up in one walk over the declarations; after that each Find is a
/// look into a map. Keeps a reference to the figures, which have to outlive it.
class DumpLookup : public orsa::kesncd::RecordLookup {
 public:
  DumpLookup(const Figures& figures, std::uint32_t top, bool exact,
             const std::vector<KesSigFreq>& records)
      : figures_(figures) {
    for (const KesSigFreq& record : records) {
      names_.push_back(record.name);
      for (const KesComp& component : record.inputs) Note(component);
      for (const KesComp& component : record.outputs) Note(component);
    }
    // Only now all names are known; `exact` false ignores letter case.
    search_ = std::make_unique<SignalSearch>(figures.run.declarations, top, exact, names_);
    // A name that comes several times has the same answer at each of its places.
    for (std::size_t i = 0; i < names_.size(); ++i) places_.try_emplace(names_[i], i);
  }

  // The two calls that FillRecord makes; they leave `freq` alone where nothing is known.
  bool FindTop(const std::string& signal, double& freq) override { return Find(signal, freq); }
  /// The port of the component itself, else whatever has its name.
  bool FindPort(const std::string& component, const std::string& port, double& freq) override {
    return Find(component + "/" + port, freq) || Find(port, freq);
  }

  // For the column "status". `name` has to be one of the table: places_ holds no other.
  bool IsFound(const std::string& name) const { return !AnswerTo(name).variables.empty(); }
  bool IsAmbiguous(const std::string& name) const { return AnswerTo(name).variables.size() > 1; }

 private:
  /// Notes every name under which FillRecord may ask for a component or its ports.
  void Note(const KesComp& component) {
    names_.push_back(component.name);
    for (const KesPort& port : component.outPorts) {
      // What FindPort asks for first: the component's own signal in the dump, "u_ff/Q".
      names_.push_back(component.name + "/" + port.portName);
      names_.push_back(port.portName);
      names_.push_back(port.netName);
    }
  }

  const SignalAnswer& AnswerTo(const std::string& name) const {
    return search_->Answer(places_.at(name));
  }

  /// Takes the outermost of several answers, which is the first one.
  bool Find(const std::string& name, double& freq) {
    const SignalAnswer& answer = AnswerTo(name);
    if (answer.variables.empty()) return false;
    const Cell frequency =
        figures_.FrequencyOf(figures_.run.declarations.variables[answer.variables.front()]);
    // Found, but its frequency is not known: the dump has no time scale or spans no time.
    const double* const known = std::get_if<double>(&frequency);
    if (known == nullptr) return false;
    freq = *known;
    return true;
  }

  const Figures& figures_;
  // In the order of the table, with repetitions.
  std::vector<std::string> names_;
  std::unique_ptr<SignalSearch> search_;
  // Name to its number in names_, the first where it repeats.
  std::unordered_map<std::string, std::size_t> places_;
};

/// The rows of the result. Without a lookup, as a host has them, nothing is known of ambiguity.
/// Calling order: Append for each record in the table's order.
class PowerRows {
 public:
  PowerRows(ResultOutput& out, const DumpLookup* lookup) : out_(out), lookup_(lookup) {}

  /// Writes a record: the signal's row, then its inputs and outputs, each followed by its ports.
  void Append(const KesSigFreq& signal) {
    signal_ = signal.name;
    // A frequency that no lookup gave must be the mean of the inputs.
    const bool isMean = lookup_ != nullptr && !lookup_->IsFound(signal.name);
    Append({"signal", "", "", "", ""}, signal.freq, isMean ? "mean" : Status(signal.name));
    for (const KesComp& component : signal.inputs) Append("input", component);
    for (const KesComp& component : signal.outputs) Append("output", component);
  }

 private:
  // The first five columns without the signal, which is that of the whole record.
  struct Texts {
    std::string kind, component, type, port, net;
  };

  void Append(const char* kind, const KesComp& component) {
    Append({kind, component.name, component.type, "", ""}, component.freq, Status(component.name));
    for (const KesPort& port : component.outPorts) {
      Append({"port", component.name, component.type, port.portName, port.netName}, port.freq,
             PortStatus(component, port));
    }
  }

  // Of a name that is known to have a figure; the caller checks that.
  std::string Status(const std::string& name) const {
    return lookup_ != nullptr && lookup_->IsAmbiguous(name) ? "ambiguous" : "found";
  }

  /// A port is looked up by its net first, then as part of its component, then by its bare name:
  /// the status must follow the same order as the frequency did.
  std::string PortStatus(const KesComp& component, const KesPort& port) const {
    if (lookup_ == nullptr) return "found";
    if (lookup_->IsFound(port.netName)) return Status(port.netName);
    const std::string path = component.name + "/" + port.portName;
    return Status(lookup_->IsFound(path) ? path : port.portName);
  }

  void Append(const Texts& texts, double frequency, const std::string& status) {
    // The library's mark for "unknown" is -1. A host's negative frequency, of a span that goes
    // back, is taken for unknown too.
    const bool isKnown = !(frequency < 0);
    out_.Add({texts.kind, signal_, texts.component, texts.type, texts.port, texts.net,
              isKnown ? Cell(frequency) : Cell(), isKnown ? status : std::string("not found")});
  }

  ResultOutput& out_;
  const DumpLookup* lookup_;
  // The record's name, which every row of it repeats.
  std::string signal_;
};

/// The rows as the document holds them; null where the section is missing or is no table.
PD_TABLE* TableOf(PowerDocument& document) {
  const auto* const section = dynamic_cast<PD_TBLSECT*>(document.GetSection(kConnections));
  return section == nullptr ? nullptr : section->table;
}

/// The library knows the kinds of rows in capitals only and leaves others out; here they may be
/// written in any letter case, and what is left out is said.
void TakeKinds(const std::string& name, PD_TABLE& table) {
  std::vector<std::string> others;
  for (std::vector<std::string>& row : table.rows) {
    std::string kind = row.front();
    for (char& c : kind) {
      // Only ASCII: the words are ASCII, and the locale must not decide.
      if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    if (kind == "SIGNAL" || kind == "INPUT" || kind == "OUTPUT" || kind == "OUTPORT") {
      row.front() = kind;
    } else {
      others.push_back(row.front());
    }
  }
  if (others.empty()) return;
  Remark(name,
         "left out are rows that are none of SIGNAL, INPUT, OUTPUT, OUTPORT: " + ShortList(others));
}

/// Reads the table into the document. Throws Failure with Unusable and the line of the first fault,
/// such as "connections.csv:3: ...".
void ReadTable(const std::string& path, PowerDocument& document) {
  const TextByPath text(WithoutComments(ReadText(path)));
  // The library's message begins with the path of the memory that the text is in; the user's name
  // for the table takes its place.
  const std::string name = path == "-" ? "standard input" : path;
  std::string message;
  if (!document.ReadConnections(text.path(), message)) {
    throw Failure(FailureKind::Unusable, name + message.substr(text.path().size()));
  }
  // Before rows become records, since the library leaves out kinds that it does not know in
  // silence.
  if (PD_TABLE* const table = TableOf(document)) TakeKinds(name, *table);
}

/// The records without frequencies yet, for the direct way. Columns that a row does not have read
/// as empty.
std::vector<KesSigFreq> ReadRecords(PowerDocument& document) {
  orsa::kesncd::RecordBuilder records;
  PD_TABLE* const found = TableOf(document);
  if (found == nullptr) return {};
  PD_TABLE& table = *found;
  for (int row = 0; row < table.GetRowCount(); ++row) {
    records.TakeRow(table.GetValueAt(row, 0), table.GetValueAt(row, 1), table.GetValueAt(row, 2));
  }
  return records.Finish();
}

/// The columns of both ways. What is not known shows as "unknown" in a table.
ResultHead PowerHead(const Figures& figures, const std::string& top, const PowerOptions& options) {
  ResultHead head{RunFacts(figures, top),
                  "records",
                  {"kind", "signal", "component", "type", "port", "net", "freq_mhz", "status"},
                  "unknown"};
  head.facts.emplace_back("default_freq_mhz", options.defaultFrequency);
  return head;
}

/// A table without a single complete record is most likely no table of connections.
ExitStatus EndPower(const PowerOptions& options, ResultOutput& out) {
  out.End();
  if (out.rows() > 0) return ExitStatus::Done;
  Say(options.table, "no signal with components on it");
  return ExitStatus::NothingMatched;
}

/// The direct way: counts the dump, then fills each record as the library would.
ExitStatus PowerDirectly(const PowerOptions& options, PowerDocument& document) {
  const Figures figures = ReadFigures(options.figures);
  const std::uint32_t top = ChosenScope(figures, options.top);
  // Before the result is opened, so that its facts name the module that was chosen.
  std::vector<KesSigFreq> records = ReadRecords(document);
  DumpLookup lookup(figures, top, !options.ignoreCase, records);
  ResultOutput out(options.output,
                   PowerHead(figures, figures.run.declarations.PathOf(top), options));
  PowerRows rows(out, &lookup);
  for (KesSigFreq& record : records) {
    orsa::kesncd::FillRecord(record, lookup, options.defaultFrequency);
    rows.Append(record);
  }
  return EndPower(options, out);
}

/// The library's own way on the untouched dump: hierarchical reading, then CreateKesSigFreq.
ExitStatus PowerAsHost(const PowerOptions& options, PowerDocument& document) {
  DumpInput input(options.figures.input);
  orsa::kesncd::KesNCD analyser;
  ReadTree(analyser, input);
  const std::string top = options.top.empty() ? input.ProposedTop() : options.top;
  analyser.SetTopModule(top);
  // Wanted for the facts only (time scale and span).
  const Figures figures = FiguresOfTree(input.name(), *analyser.hierRoot);
  ResultOutput out(options.output, PowerHead(figures, top, options));
  PowerRows rows(out, nullptr);
  for (const KesSigFreq& record :
       analyser.CreateKesSigFreq(&document, options.defaultFrequency, !options.ignoreCase)) {
    rows.Append(record);
  }
  return EndPower(options, out);
}

/// The table is read first: it is small, and a fault in it must not wait for the dump.
ExitStatus RunPower(const PowerOptions& options) {
  CheckOutputs({options.figures.input.dump, options.table}, {options.output.path});
  PowerDocument document;
  ReadTable(options.table, document);
  return options.figures.input.asIs ? PowerAsHost(options, document)
                                    : PowerDirectly(options, document);
}

}  // namespace

void AddPowerCommand(CommandLine& line) {
  Command& command = line.Add("power", kPowerHelp);
  const auto options = std::make_shared<PowerOptions>();
  AddFigureOptions(command, options->figures);
  command.AddFileOperand("TABLE", options->table, "table of connections (CSV)").Required();
  command.AddText("--top", "NAME", options->top, "module to look names up in, a name or a path");
  // 0 or more, in MHz.
  command.AddNumber("--default-freq", "MHZ", 0, options->defaultFrequency,
                    "stands in for unknown inputs in a mean, in MHz");
  command.AddFlag("--ignore-case", options->ignoreCase, "letter case makes no difference");
  AddOutputOptions(command, options->output);
  command.check = [options] { CheckFigureOptions(options->figures); };
  command.run = [options] { return RunPower(*options); };
}

}  // namespace orsa::kesncd::cli
