#include "cli/commands/tree_path.h"

#include <algorithm>

namespace orsa::kesncd::cli {

namespace {

// More scopes than a design nests; a damaged dump must not make paths that fill the memory.
constexpr std::size_t kPartsShown = 64;

}  // namespace

std::string PathOf(const VmodHier& scope, const std::string& addedRoot) {
  std::vector<const std::string*> parts;
  const VmodHier* node = &scope;
  for (; node != nullptr && parts.size() < kPartsShown; node = node->parent) {
    parts.push_back(&node->name);
  }
  const bool isInAdded = node == nullptr && parts.size() > 1 && *parts.back() == addedRoot;
  if (isInAdded) parts.pop_back();
  std::string path = node != nullptr ? ".../" : "";
  for (auto part = parts.rbegin(); part != parts.rend(); ++part) {
    path += (part == parts.rbegin() ? "" : "/") + **part;
  }
  return path;
}

}  // namespace orsa::kesncd::cli
