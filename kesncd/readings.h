// One reading of an open dump by a line reader, into the module or the tree that hosts see.
#ifndef KESNCD_READINGS_H_
#define KESNCD_READINGS_H_

#include <cstdio>
#include <set>
#include <string>

#include "kesncd/kesncd.h"
#include "kesncd/model/tree_builder.h"
#include "line_readers/dump_lines.h"

namespace orsa::kesncd {

/// Reads the selected variables of the top module into `topMod`, all of them without a selection.
/// Then changes of codes that `topMod` held before count too. True when it reached the end; see
/// FlatReader::Read. The stream stays the caller's. Exceptions leave the module with what was
/// declared until then.
bool ReadFlat(std::FILE* dump, const std::set<std::string>* selection,
              const ReadingOptions& options = {});

/// Reads all scopes into a tree, which may hold some before. True when it reached the end; see
/// HierarchyReader::Read.
bool ReadTree(std::FILE* dump, HostTree tree, const ReadingOptions& options = {});

}  // namespace orsa::kesncd

#endif  // KESNCD_READINGS_H_
