// kesncd power: frequencies for the rows of a power table.
#include <memory>

#include "cli/commands/commands.h"
#include "host/standalone/standalone_host.h"
#include "kesncd/kesncd.h"

namespace orsa::kesncd::cli {

namespace {

using orsa::kesncd::KesComp;
using orsa::kesncd::KesPort;
using orsa::kesncd::KesSigFreq;

struct PowerOptions {
  InputOptions input;
  std::string table;
  std::string top;
  double defaultFrequency = 0.0;
  bool ignoreCase = false;
  OutputOptions output;
};

constexpr char kHelp[] =
    "Frequencies for the signals, components and ports of a table of connections\n"
    "\n"
    "Examples:\n"
    "  kesncd power sim.vcd connections.csv --top soc\n"
    "  kesncd power sim.vcd connections.csv --top soc --default-freq 10 --format json\n"
    "\n"
    "The table is CSV without a heading, a row a line: SIGNAL,name  INPUT,component,type\n"
    "OUTPUT,component,type  OUTPORT,net,port. A signal that the dump does not hold has the mean\n"
    "frequency of its inputs, when one of them is known.\n";

class PowerRows {
 public:
  explicit PowerRows(Report& report) : report_(report) {}

  void Append(const KesSigFreq& signal) {
    signal_ = signal.name;
    Append("signal", {}, {}, {}, {}, signal.freq);
    for (const KesComp& component : signal.inputs) Append("input", component);
    for (const KesComp& component : signal.outputs) Append("output", component);
  }

 private:
  void Append(const char* kind, const KesComp& component) {
    Append(kind, component.name, component.type, {}, {}, component.freq);
    for (const KesPort& port : component.outPorts) {
      Append("port", component.name, component.type, port.portName, port.netName, port.freq);
    }
  }

  void Append(const char* kind, const std::string& component, const std::string& type,
              const std::string& port, const std::string& net, double frequency) {
    report_.rows.push_back(
        {kind, signal_, component, type, port, net, frequency < 0 ? Cell() : Cell(frequency)});
  }

  Report& report_;
  std::string signal_;
};

ExitStatus Run(const PowerOptions& options) {
  orsa::kesncd::standalone::PowerDocument document;
  std::string message;
  if (!document.ReadConnections(options.table, message)) {
    throw Failure(FailureKind::Unusable, message);
  }
  DumpInput input(options.input);
  orsa::kesncd::KesNCD analyser;
  ReadTree(analyser, input);
  const std::string top = options.top.empty() ? input.ProposedTop() : options.top;
  analyser.SetTopModule(top);
  Report report{RunFacts(input.name(), top),
                "records",
                {"kind", "signal", "component", "type", "port", "net", "freq_mhz"},
                {},
                ""};
  report.unknown = "unknown";
  report.facts.emplace_back("default_freq_mhz", options.defaultFrequency);
  PowerRows rows(report);
  for (const KesSigFreq& signal :
       analyser.CreateKesSigFreq(&document, options.defaultFrequency, !options.ignoreCase)) {
    rows.Append(signal);
  }
  WriteReport(report, options.output);
  if (!report.rows.empty()) return ExitStatus::Done;
  Say(options.table, "no signal with components on it");
  return ExitStatus::NothingMatched;
}

}  // namespace

void AddPowerCommand(CommandLine& line) {
  Command& command = line.Add("power", kHelp);
  const auto options = std::make_shared<PowerOptions>();
  AddInputOptions(command, options->input);
  command.AddFileOperand("TABLE", options->table, "table of connections (CSV)").Required();
  command.AddText("--top", "NAME", options->top, "top module, the dump's outermost scope");
  command.AddNumber("--default-freq", "MHZ", 0, options->defaultFrequency,
                    "stands in for unknown inputs in a mean, in MHz");
  command.AddFlag("--ignore-case", options->ignoreCase, "letter case makes no difference");
  AddOutputOptions(command, options->output);
  command.run = [options] { return Run(*options); };
}

}  // namespace orsa::kesncd::cli
