// A dump on its way into a command: opened, unpacked, shown as it is read; and, where the library
// is to read it as a host would, passed on to it.
//
// The way of a dump's bytes, each step only where it is needed:
//
//   file or standard input -> count what was read, for the terminal -> unpack -> a command
//                                                                             -> DumpInput ->
//                                                                             library
//
// Commands that count by themselves use OpenDump. DumpInput is for --as-is and for the grammar
// reader, where the library does the reading.
#ifndef KESNCD_CLI_INPUT_DUMP_INPUT_H_
#define KESNCD_CLI_INPUT_DUMP_INPUT_H_

#include <functional>
#include <memory>
#include <string>

#include "cli/input/unpack.h"
#include "text/byte_stream.h"
#include "vcd/declarations.h"

namespace orsa::kesncd::cli {

/// What every command that reads a dump is told about it. Filled in by AddDumpOptions and its like
/// in cli/commands.
struct InputOptions {
  std::string dump;  // "-" is standard input
  bool asIs = false;
  bool quiet = false;
  int jobs = 0;  // threads that may read it; 0 where the user does not say
};

/// What messages and results call the dump. The path, or "standard input".
std::string NameOf(const InputOptions& options);

/// Opens a dump, unpacks it and shows on a terminal how far it was read. Throws Failure with
/// Unusable for what cannot be opened. The bytes may be read once; `file` of the result, where it
/// is set, any number of times and from several threads. The progress line belongs to the result
/// and goes with it. A directory, a database and FST without fst2vcd are refused with words of
/// their own.
UnpackedSource OpenDump(const InputOptions& options);

/// Whether the library reads a dump as it stands, or as `kesncd prepare` would write it: the
/// grammar reader takes only little of what simulators write. AsIs is what --as-is asks for,
/// Prepared the grammar reader's usual way.
enum class Passing { AsIs, Prepared };

/// A dump for the library, which opens a path. A plain file as it stands is opened by the library
/// itself, all else comes through a pipe; nothing is stored on the way. Calling order: construct,
/// declarations and ProposedTop as often as wanted, Read once. The header is read in the
/// constructor: a second time for a file, from what is kept of it for a stream.
class DumpInput {
 public:
  /// With Prepared a dump without usable declarations fails here, since nothing could be passed on;
  /// with AsIs only when its declarations are asked for, since a host may do without them.
  explicit DumpInput(const InputOptions& options, Passing passing = Passing::AsIs);

  const std::string& name() const { return name_; }
  /// Throws Failure for what is no VCD file or declares no variable. Read in free format, whatever
  /// the library will make of them.
  const Declarations& declarations() const;
  /// The outermost module that declares variables, the largest such one. Its name alone, without a
  /// path: what a host has to give the library.
  std::string ProposedTop() const;

  /// Has the library read the dump from the path that `run` gets, and returns what that returns.
  /// Throws Failure when the dump could not be read to where the library stopped. What the library
  /// returns is its own matter; `run` gets a path that is good during the call.
  bool Read(const std::function<bool(const std::string& path)>& run);

 private:
  void ReadHeader();
  void ReadDeclarationsFrom(ByteSource& bytes);
  bool ReadFile(const std::function<bool(const std::string& path)>& run);
  void Pass(ByteSink& to);

  // As it was given, for opening once more.
  const InputOptions options_;
  const Passing passing_;
  const std::string name_;
  std::string_view packing_;           // that was taken off, "" for none
  std::unique_ptr<ByteSource> bytes_;  // of the whole dump; taken away by Read
  Declarations declarations_;
  std::string headerFailure_;  // why there are no declarations
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_DUMP_INPUT_H_
