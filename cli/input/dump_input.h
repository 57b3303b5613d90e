// A dump on its way to the library.
//
// Whatever the dump is -- a file, standard input, packed or plain -- the library reads it untouched
// where its readers understand it, else as `kesncd prepare` would write it. A plain file that needs
// no preparing is opened by the library itself, all else comes through a pipe; nothing is stored on
// the way.
#ifndef KESNCD_CLI_INPUT_DUMP_INPUT_H_
#define KESNCD_CLI_INPUT_DUMP_INPUT_H_

#include <functional>
#include <memory>
#include <string>

#include "cli/input/unpack.h"
#include "free_format/dump_look.h"
#include "text/byte_stream.h"
#include "vcd/declarations.h"

namespace orsa::kesncd::cli {

/// What every command that reads a dump is told about it.
struct InputOptions {
  std::string dump;  // "-" is standard input
  bool asIs = false;
  bool quiet = false;
};

/// What messages and reports call the dump.
std::string NameOf(const InputOptions& options);

/// Opens a dump, unpacks it and shows on a terminal how far it was read. Throws Failure with
/// Unusable for what cannot be opened.
UnpackedSource OpenDump(const InputOptions& options);

class DumpInput {
 public:
  /// Looks at the dump, and says so where it will be read as prepared.
  explicit DumpInput(const InputOptions& options, Reader reader = Reader::Lines);

  const std::string& name() const { return name_; }
  /// Whether the dump is prepared on its way.
  bool isPrepared() const { return isPrepared_; }
  /// Throws Failure for what is no VCD file or declares no variable.
  const Declarations& declarations() const;
  /// The outermost module that declares variables, the largest such one.
  std::string ProposedTop() const;
  /// The scope that stands in no dump: preparing puts it around several top-level ones. Empty for
  /// none.
  std::string AddedRoot() const;

  /// Has the library read the dump from the path that `run` gets, and returns what that returns.
  /// Throws Failure when the dump could not be read to where the library stopped.
  bool Read(const std::function<bool(const std::string& path)>& run);

 private:
  void Look(Reader reader);
  bool IsPlainFile() const;
  bool ReadFile(const std::function<bool(const std::string& path)>& run);
  void Pass(ByteSink& to);

  const InputOptions options_;
  const std::string name_;
  std::string_view packing_;
  std::unique_ptr<ByteSource> bytes_;
  DumpLook look_;
  std::string lookFailure_;
  bool isPrepared_ = false;
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_DUMP_INPUT_H_
