// kesncd top: the module that a dump's header proposes.
//
// A host that has to name a top module before it reads a dump asks the library's header probe. This
// shows what the probe says, for one line of a script: kesncd flat x.vcd --top "$(kesncd top
// x.vcd)". It is not what the other commands take without --top: they read all declarations and
// take the outermost module that has variables.
#include <cstdio>
#include <memory>
#include <new>

#include "cli/commands/commands.h"
#include "line_readers/header_probe.h"
#include "text/byte_stream.h"
#include "text/failure.h"
#include "text/file.h"

namespace orsa::kesncd::cli {

namespace {

constexpr char kTopHelp[] =
    "The top module that the dump's header proposes\n"
    "\n"
    "Example:\n"
    "  kesncd top sim.vcd\n"
    "\n"
    "It is the innermost module of the first unbroken run of nested modules: the one that\n"
    "encloses the first declaration. Runs without --top take the outermost module that declares\n"
    "signals.\n";

/// A stream over bytes that may come from anywhere. The probe reads a FILE*, as hosts have it,
/// while a dump may come unpacked or through a pipe. It is closed with the object; the source stays
/// the caller's and must outlive it. Throws std::bad_alloc where there is no memory for a stream.
class ByteStream {
 public:
  explicit ByteStream(ByteSource& source) {
    cookie_io_functions_t functions{};
    functions.read = [](void* from, char* to, std::size_t most) -> ssize_t {
      return static_cast<ssize_t>(static_cast<ByteSource*>(from)->Read(to, most));
    };
    file_.reset(fopencookie(&source, "r", functions));
    if (file_ == nullptr) throw std::bad_alloc();
  }
  std::FILE* get() const { return file_.get(); }

 private:
  File file_;
};

/// The probe stops at the first declaration in a module, so that of a pipe little is taken.
ExitStatus RunTop(const InputOptions& options) {
  const std::string name = NameOf(options);
  const UnpackedSource dump = OpenDump(options);
  const std::string top = ProbeTopModule(ByteStream(*dump.bytes).get());
  // Not an input error: a dump may declare scopes of other kinds than modules only.
  if (top.empty()) throw Failure(FailureKind::NothingMatched, name + ": no module to propose");
  OutputFile out("");
  // One bare line and no --format: the output is made for $(...).
  out.Write(top + "\n");
  out.Commit();
  return ExitStatus::Done;
}

}  // namespace

void AddTopCommand(CommandLine& line) {
  Command& command = line.Add("top", kTopHelp);
  const auto options = std::make_shared<InputOptions>();
  AddDumpOptions(command, *options);
  command.run = [options] { return RunTop(*options); };
}

}  // namespace orsa::kesncd::cli
