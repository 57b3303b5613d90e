// JSON streams through, unpacked on its way; yosys wants a file, so Verilog from elsewhere is kept.
#include "cli/input/netlist_input.h"

#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string_view>

#include "cli/input/dump_input.h"
#include "cli/input/list_file.h"
#include "export/yosys.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

constexpr std::size_t kKnownBy = 4096;

bool IsJson(std::string_view start) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (start.starts_with(kByteOrderMark)) start.remove_prefix(kByteOrderMark.size());
  const std::size_t first = start.find_first_not_of(" \t\r\n");
  return first != std::string_view::npos && start[first] == '{';
}

bool IsPlainFile(const std::string& path, const UnpackedSource& source) {
  std::error_code ignored;
  return path != "-" && source.packing.empty() && std::filesystem::is_regular_file(path, ignored);
}

Netlist ReadAny(const InputOptions& options) {
  UnpackedSource source = OpenDump(options);
  std::string start(kKnownBy, '\0');
  start.resize(ReadFully(*source.bytes, start.data(), start.size()));
  const bool isJson = IsJson(start);
  const bool isPlain = IsPlainFile(options.dump, source);
  ResumedSource whole(std::move(start), std::move(source.bytes));
  if (isJson) return ReadNetlist(whole, NameOf(options));
  if (isPlain) return ReadVerilog(options.dump, options.dump);
  const TextByPath kept(ReadText(whole, NameOf(options)));
  return ReadVerilog(kept.PathForOthers(), NameOf(options));
}

}  // namespace

Netlist ReadNetlistOf(const std::string& path) {
  InputOptions options;
  options.dump = path;
  options.quiet = true;
  Netlist netlist = ReadAny(options);
  if (netlist.modules.empty()) {
    throw Failure(FailureKind::Unusable, NameOf(options) + ": is a netlist without a module");
  }
  return netlist;
}

}  // namespace orsa::kesncd::cli
