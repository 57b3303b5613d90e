// A dump on its way into a command: opened, unpacked, shown as it is read; and, where the library
// is to read it as a host would, passed on to it.
#ifndef KESNCD_CLI_INPUT_DUMP_INPUT_H_
#define KESNCD_CLI_INPUT_DUMP_INPUT_H_

#include <functional>
#include <memory>
#include <string>

#include "cli/input/unpack.h"
#include "text/byte_stream.h"
#include "vcd/declarations.h"

namespace orsa::kesncd::cli {

/// What every command that reads a dump is told about it.
struct InputOptions {
  std::string dump;  // "-" is standard input
  bool asIs = false;
  bool quiet = false;
  int jobs = 0;  // threads that may read it; 0 where the user does not say
};

/// What messages and results call the dump.
std::string NameOf(const InputOptions& options);

/// Opens a dump, unpacks it and shows on a terminal how far it was read. Throws Failure with
/// Unusable for what cannot be opened.
UnpackedSource OpenDump(const InputOptions& options);

/// Whether the library reads a dump as it stands, or as `kesncd prepare` would write it: the
/// grammar reader takes only little of what simulators write.
enum class Passing { AsIs, Prepared };

/// A dump for the library, which opens a path. A plain file as it stands is opened by the library
/// itself, all else comes through a pipe; nothing is stored on the way.
class DumpInput {
 public:
  explicit DumpInput(const InputOptions& options, Passing passing = Passing::AsIs);

  const std::string& name() const { return name_; }
  /// Throws Failure for what is no VCD file or declares no variable.
  const Declarations& declarations() const;
  /// The outermost module that declares variables, the largest such one.
  std::string ProposedTop() const;

  /// Has the library read the dump from the path that `run` gets, and returns what that returns.
  /// Throws Failure when the dump could not be read to where the library stopped.
  bool Read(const std::function<bool(const std::string& path)>& run);

 private:
  void ReadHeader();
  void ReadDeclarationsFrom(ByteSource& bytes);
  bool ReadFile(const std::function<bool(const std::string& path)>& run);
  void Pass(ByteSink& to);

  const InputOptions options_;
  const Passing passing_;
  const std::string name_;
  std::string_view packing_;
  std::unique_ptr<ByteSource> bytes_;
  Declarations declarations_;
  std::string headerFailure_;  // why there are no declarations
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_DUMP_INPUT_H_
