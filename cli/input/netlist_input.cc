// JSON streams through, unpacked on its way; yosys wants a file, so Verilog from elsewhere is kept.
#include "cli/input/netlist_input.h"

#include <unistd.h>

#include <filesystem>
#include <string_view>

#include "cli/input/dump_input.h"
#include "cli/input/list_file.h"
#include "export/yosys.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

// Blanks before the first brace may be many where a generator wrote a heading of blank lines; more
// than a page of them is no JSON that anybody writes.
constexpr std::size_t kKnownBy = 4096;

/// By the first character that is no blank: no Verilog begins with a brace.
bool IsJson(std::string_view start) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  // As editors on Windows put it in front.
  if (start.starts_with(kByteOrderMark)) start.remove_prefix(kByteOrderMark.size());
  const std::size_t first = start.find_first_not_of(" \t\r\n");
  return first != std::string_view::npos && start[first] == '{';
}

/// Whether another program can open the path and find the same bytes there.
bool IsPlainFile(const std::string& path, const UnpackedSource& source) {
  std::error_code ignored;
  return path != "-" && source.packing.empty() && std::filesystem::is_regular_file(path, ignored);
}

Netlist ReadAny(const InputOptions& options) {
  // Packed netlists are common, and OpenDump knows all packings.
  UnpackedSource source = OpenDump(options);
  std::string start(kKnownBy, '\0');
  start.resize(ReadFully(*source.bytes, start.data(), start.size()));
  const bool isJson = IsJson(start);
  const bool isPlain = IsPlainFile(options.dump, source);
  // The bytes that were looked at are put back in front.
  ResumedSource whole(std::move(start), std::move(source.bytes));
  // Of any size: JSON is read as it comes.
  if (isJson) return ReadNetlist(whole, NameOf(options));
  // Yosys reads the user's file itself, and its messages name it.
  if (isPlain) return ReadVerilog(options.dump, options.dump);
  // From a pipe or packed: kept in memory under a path that the child process can open.
  const TextByPath kept(ReadText(whole, NameOf(options)));
  return ReadVerilog(kept.PathForOthers(), NameOf(options));
}

}  // namespace

Netlist ReadNetlistOf(const std::string& path) {
  InputOptions options;
  options.dump = path;
  // Lists show no progress line: there is one of the dump already.
  options.quiet = true;
  Netlist netlist = ReadAny(options);
  if (netlist.modules.empty()) {
    throw Failure(FailureKind::Unusable, NameOf(options) + ": is a netlist without a module");
  }
  return netlist;
}

}  // namespace orsa::kesncd::cli
