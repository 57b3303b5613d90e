// Rewrites dumps, and counts them by their items, as plainly as can be.
#include "tests/support/dump_figures.h"

#include <algorithm>
#include <set>
#include <vector>

#include "free_format/declaration_reader.h"
#include "kesncd/kesncd.h"
#include "tests/support/reader_state.h"
#include "tests/support/text_stream.h"
#include "text/failure.h"

using namespace orsa::kesncd;

namespace support {

using orsa::kesncd::TextSource;

std::optional<std::string> Prepare(const std::string& dump, const PrepareOptions& options,
                                   std::size_t chunk) {
  TextSource source(dump, chunk);
  orsa::kesncd::TextSink sink;
  PrepareOptions inBlocks = options;
  inBlocks.block = kSmallBlock;
  try {
    (void)PrepareDump(source, sink, inBlocks).Remarks();
  } catch (const Failure&) {
    return std::nullopt;
  }
  return sink.text;
}

Figures TreeFigures(const std::string& dump) {
  ResetReaderState();
  KesNCD analyser;
  analyser.ParseVcdFileHier(TextStream(dump), {});
  Figures figures;
  std::vector<std::pair<const VmodHier*, std::string>> pending;
  if (analyser.hierRoot != nullptr) pending.emplace_back(analyser.hierRoot, "");
  while (!pending.empty()) {
    const auto [scope, before] = pending.back();
    const std::string path = before + scope->name;
    pending.pop_back();
    for (const auto& [code, signal] : scope->signals) {
      figures[{path, signal.name}] += signal.changes;
    }
    for (const VmodHier* child : scope->subMods) pending.emplace_back(child, path + "/");
  }
  return figures;
}

namespace {

std::string FullPath(const Declarations& declarations, std::uint32_t scope) {
  std::string path = declarations.scopes[scope].name;
  while ((scope = declarations.scopes[scope].parent) != Declarations::kDump) {
    path.insert(0, declarations.scopes[scope].name + "/");
  }
  return path;
}

}  // namespace

PlainFigures ItemFigures(const std::string& dump) {
  TextSource source(dump, std::string::npos);
  DumpWords words(source, kSmallBlock, kSmallBlock / 4);
  const Declarations declarations = ReadDeclarations(words, "");
  DumpItems items(words, declarations);
  std::vector<std::int64_t> counts(declarations.codes.size());
  PlainFigures plain;
  bool isDumping = true;
  while (items.Next()) {
    const bool isScalar = items.kind() == ItemKind::Scalar;
    if (items.kind() == ItemKind::Stamp) {
      // A stamp that goes back does not move time.
      plain.last = std::max(plain.last, static_cast<double>(items.ticks()));
      if (plain.first < 0) plain.first = plain.last;
    } else if (items.kind() == ItemKind::Command) {
      isDumping = items.command() != Keyword::DumpOff;
    } else if (items.kind() == ItemKind::Vector || items.kind() == ItemKind::Real ||
               (isScalar && items.value() <= '1')) {
      counts[items.codeId()] += isDumping ? 1 : 0;
    }
  }
  std::set<std::pair<std::pair<std::string, std::string>, std::uint32_t>> seen;
  for (const DumpVariable& variable : declarations.variables) {
    const std::pair key(FullPath(declarations, variable.scope), variable.name);
    if (seen.emplace(key, variable.codeId).second) plain.figures[key] += counts[variable.codeId];
  }
  return plain;
}

std::string TextOf(const Figures& figures) {
  std::string text;
  for (const auto& [signal, changes] : figures) {
    text += "\n" + signal.first + " . " + signal.second + " = " + std::to_string(changes);
  }
  return text;
}

}  // namespace support
