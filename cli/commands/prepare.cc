// kesncd prepare: a dump rewritten so that every reader understands it.
//
// For tools that read VCD strictly: what a simulator wrote in an unusual shape (a keyword in the
// middle of a line, several top-level scopes, names with blanks) comes out one item a line, with
// the same signals and the same counts. The rewriting itself is free_format/prepare; here are its
// options, its files and what is said afterwards. Memory is in proportion to the declarations: the
// body streams through, so a pipe may be prepared as it is written.
#include <memory>

#include "cli/commands/commands.h"
#include "cli/selection/scope_choice.h"
#include "free_format/prepare/prepare.h"

namespace orsa::kesncd::cli {

namespace {

struct PrepareChoices {
  InputOptions input;
  // `dump` and `chooseTop` of it are set when the command runs.
  PrepareOptions prepare;
  // Empty and "-": standard output.
  std::string output;
  // The scope to put first; empty: scopes keep their order.
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

/// What must be refused before the dump is opened.
void Check(const PrepareOptions& given) {
  // A tick of 0 would make all times 0, and a rate infinite.
  if (given.tick == 0U) throw Failure(FailureKind::Unusable, "--timescale: must not be 0");
  CheckWindow(given.window);
}

/// Done even if something could not be kept; the remarks say what.
ExitStatus RunPrepare(const PrepareChoices& options) {
  CheckOutputs({options.input.dump}, {options.output});
  UnpackedSource in = OpenDump(options.input);
  // Opened before the dump is read: an output that cannot be written is told at once.
  OutputFile out(options.output);
  const PrepareReport report = PrepareDump(*in.bytes, out, options.prepare);
  // Ends the progress line, so that remarks do not run into it.
  in.bytes.reset();
  // The result gets its name first: remarks are about a file that is there.
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
  // For readers that propose the first modules of a header, as the library's probe does.
  command.AddText("--top", "NAME", options->top, "put this scope first, a name or a path");
  // Such as "1ns"; a dump's own time scale goes before it, which is said.
  command.AddTime("--timescale", prepare.tick, "the tick of a dump that has no time scale");
  AddWindowOptions(command, prepare.window);
  command.check = [options] { Check(options->prepare); };
  command.run = [options] {
    // Only now the dump's name is known.
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
