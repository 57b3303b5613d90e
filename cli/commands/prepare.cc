// kesncd prepare: a dump rewritten so that every reader understands it.
#include <memory>

#include "cli/commands/commands.h"
#include "cli/selection/scope_choice.h"
#include "free_format/prepare/prepare.h"

namespace orsa::kesncd::cli {

namespace {

struct PrepareChoices {
  InputOptions input;
  PrepareOptions prepare;
  std::string output;
  std::string top;
};

constexpr char kPrepareHelp[] =
    "Rewrite a dump into the shape that every reader understands\n"
    "\n"
    "Examples:\n"
    "  kesncd prepare sim.vcd -o prepared.vcd\n"
    "  kesncd prepare sim.vcd --begin 1.5us --end 2us > window.vcd\n"
    "\n"
    "All signals keep their scopes, names and counts. A window keeps the changes from BEGIN to "
    "END;\n"
    "the values that signals have at BEGIN are its initial values.\n";

void Check(const PrepareOptions& given) {
  if (given.tick == 0U) throw Failure(FailureKind::Unusable, "--timescale: must not be 0");
  CheckWindow(given.window);
}

ExitStatus RunPrepare(const PrepareChoices& options) {
  CheckOutputs({options.input.dump}, {options.output});
  UnpackedSource in = OpenDump(options.input);
  OutputFile out(options.output);
  const PrepareReport report = PrepareDump(*in.bytes, out, options.prepare);
  in.bytes.reset();
  out.Commit();
  for (const std::string& remark : report.Remarks()) Remark(options.prepare.dump, remark);
  return ExitStatus::Done;
}

}  // namespace

void AddPrepareCommand(CommandLine& line) {
  Command& command = line.Add("prepare", kPrepareHelp);
  const auto options = std::make_shared<PrepareChoices>();
  PrepareOptions& prepare = options->prepare;
  AddDumpOptions(command, options->input);
  command.AddFile("-o,--output", "FILE", options->output,
                  "write the prepared dump to FILE, packed if it ends in .gz");
  command.AddText("--top", "NAME", options->top, "put this scope first, a name or a path");
  command.AddTime("--timescale", prepare.tick, "the tick of a dump that has no time scale");
  AddWindowOptions(command, prepare.window);
  command.check = [options] { Check(options->prepare); };
  command.run = [options] {
    options->prepare.dump = NameOf(options->input);
    if (!options->top.empty()) {
      // By reference: what options hold would keep them alive for ever.
      options->prepare.chooseTop = [&choices = *options](const Declarations& declarations) {
        return ChosenScope(choices.prepare.dump, declarations, choices.top);
      };
    }
    return RunPrepare(*options);
  };
}

}  // namespace orsa::kesncd::cli
