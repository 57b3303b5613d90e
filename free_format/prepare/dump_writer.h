// Writes a dump that every reader understands: each thing on a line of its own, codes renewed.
#ifndef KESNCD_FREE_FORMAT_PREPARE_DUMP_WRITER_H_
#define KESNCD_FREE_FORMAT_PREPARE_DUMP_WRITER_H_

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "free_format/prepare/new_codes.h"
#include "text/byte_stream.h"
#include "vcd/declarations.h"
#include "vcd/dump_keywords.h"

namespace orsa::kesncd {

/// The name of the scope that a prepared dump has around several top-level ones; empty where it
/// needs none. No other scope has that name. Readers take the first top-level scope for the tree's
/// root, so there must be one only.
std::string AddedRootOf(const Declarations& declarations);

/// Calling order: WriteHeader, then the body's lines as they come, EndSection, Flush. Nothing goes
/// to the sink before a block is full.
class DumpWriter {
 public:
  /// `block` bytes are passed on at a time, at least as many as the longest line takes.
  DumpWriter(ByteSink& sink, const Declarations& declarations, std::size_t block);

  /// Writes the header: the time scale if there is one, and all scopes that hold variables, under a
  /// common one where several stand at the top. `tick` is in femtoseconds. To be called once,
  /// before anything of the body.
  void WriteHeader(std::optional<std::uint64_t> tick);

  /// Opens a section with one of the four dump commands. The section before it ends here at the
  /// latest, as it does at a stamp.
  void WriteCommand(Keyword command);
  // Does nothing where no section is open.
  void EndSection();
  void WriteStamp(std::uint64_t ticks);
  /// Writes a change for every name of the code. A code with three names in a scope gives three
  /// lines.
  void WriteScalar(char value, std::uint32_t code);
  // `text` begins with its "b" or "r".
  void WriteVector(std::string_view text, std::uint32_t code);

  /// Passes what is still held to the sink.
  void Flush();

  /// Names of the header that were replaced because no reader could take them. Known when the
  /// header is written.
  const Tally& renamed() const { return renamed_; }
  /// Names that were left out because their signal has too many in one scope.
  const Tally& leftOut() const { return leftOut_; }

 private:
  // No text is longer than `held_`.
  void Put(std::string_view text);
  void PutScalar(char value, const char* code);
  void PutVector(std::string_view text, const char* code);
  // Writes a scope with all below it.
  void WriteScopes(std::uint32_t top);
  void OpenScope(std::uint32_t scope, const std::string& name);
  // `number` makes a cut name different from others.
  std::string FittingName(const std::string& name, std::uint32_t number, std::uint64_t line);

  // The sink belongs to the caller, as do the declarations.
  ByteSink& sink_;
  const Declarations& declarations_;
  // How each variable takes part in its scope, by its index.
  const std::vector<CodeShare> shares_;
  NewCodes codes_;
  // A block on its way to the sink, with `used_` bytes in it.
  std::vector<char> held_;
  std::size_t used_ = 0;
  // A dump command was written whose $end is still to come.
  bool inSection_ = false;
  Tally renamed_;
  Tally leftOut_;
};

inline void DumpWriter::Put(std::string_view text) {
  if (held_.size() - used_ < text.size()) Flush();
  std::memcpy(held_.data() + used_, text.data(), text.size());
  used_ += text.size();
}

/// A whole code's room is copied, since copying a fixed size is one instruction; the newline cuts
/// it.
inline void DumpWriter::PutScalar(char value, const char* code) {
  if (held_.size() - used_ < NewCodes::kReadAhead + 2) Flush();
  char* const at = held_.data() + used_;
  at[0] = value;
  std::memcpy(at + 1, code, NewCodes::kReadAhead);
  at[1 + codes_.length()] = '\n';
  used_ += codes_.length() + 2;
}

/// Nearly every code has one name, so the loop does not run.
inline void DumpWriter::WriteScalar(char value, std::uint32_t code) {
  PutScalar(value, codes_.First(code));
  for (std::uint32_t name = 0; name < codes_.FurtherNames(code); ++name) {
    PutScalar(value, codes_.Further(code, name));
  }
}

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_PREPARE_DUMP_WRITER_H_
