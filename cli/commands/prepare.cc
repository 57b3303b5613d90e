// kesncd prepare: a dump rewritten so that every reader understands it.
#include <memory>

#include "cli/commands/commands.h"
#include "cli/output/result_file.h"
#include "free_format/prepare.h"
#include "vcd/time_text.h"

namespace orsa::kesncd::cli {

namespace {

struct Options {
  InputOptions input;
  PrepareOptions prepare;
  std::string output;
};

constexpr char kHelp[] =
    "Rewrite a dump into the shape that every reader understands\n"
    "\n"
    "Examples:\n"
    "  kesncd prepare sim.vcd -o prepared.vcd\n"
    "  kesncd prepare sim.vcd --begin 1.5us --end 2us > window.vcd\n"
    "\n"
    "All signals keep their scopes, names and counts. A window keeps the changes from BEGIN to "
    "END;\n"
    "the values that signals have at BEGIN are its initial values.\n";

/// "1 ns" as "1ns": dumps write either.
std::string WithoutBlanks(std::string text) {
  std::erase(text, ' ');
  return text;
}

/// An option that takes a time with a unit.
CLI::Option* AddTime(CLI::App& command, const std::string& name, std::optional<std::uint64_t>& time,
                     const std::string& help) {
  return command
      .add_option_function<std::string>(
          name,
          [name, &time](const std::string& text) {
            time = text == "0" ? 0 : Femtoseconds(WithoutBlanks(text));
            if (!time) throw CLI::ValidationError(name, text + " is no time such as 1.5us or 10ps");
          },
          help)
      ->type_name("TIME");
}

ExitStatus Run(const Options& options) {
  UnpackedSource in = OpenDump(options.input);
  ResultFile out(options.output);
  const PrepareReport report = PrepareDump(*in.bytes, out, options.prepare);
  in.bytes.reset();
  out.Commit();
  for (const std::string& remark : report.Remarks()) Say(options.prepare.dump, remark);
  return ExitStatus::Done;
}

}  // namespace

void AddPrepareCommand(CLI::App& app, Action& chosen) {
  CLI::App* command = app.add_subcommand("prepare", kHelp);
  const auto options = std::make_shared<Options>();
  PrepareOptions& prepare = options->prepare;
  AddDumpOptions(*command, options->input);
  command->add_option("-o,--output", options->output, "write the prepared dump to FILE")
      ->type_name("FILE");
  command->add_option("--top", prepare.top, "put this scope first, a name or a path")
      ->type_name("NAME");
  AddTime(*command, "--timescale", prepare.tick, "the tick of a dump that has no time scale");
  AddTime(*command, "--begin", prepare.begin, "leave out what happens before");
  AddTime(*command, "--end", prepare.end, "leave out what happens after");
  command->callback([options, &chosen] {
    options->prepare.dump = NameOf(options->input);
    const PrepareOptions& given = options->prepare;
    if (given.tick == 0U) throw CLI::ValidationError("--timescale", "must not be 0");
    if (given.begin && given.end && *given.begin > *given.end) {
      throw CLI::ValidationError("--end", "lies before --begin");
    }
    chosen = [options] { return Run(*options); };
  });
}

}  // namespace orsa::kesncd::cli
