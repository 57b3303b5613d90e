#include "vcd/declarations.h"

namespace orsa::kesncd {

namespace {

// More scopes than a design nests; a damaged dump must not make paths that fill the memory.
constexpr std::size_t kPartsShown = 64;

}  // namespace

std::string Declarations::PathOf(std::uint32_t scope) const {
  std::vector<const std::string*> parts;
  for (; scope != kDump && parts.size() < kPartsShown; scope = scopes[scope].parent) {
    parts.push_back(&scopes[scope].name);
  }
  std::string path = scope != kDump ? ".../" : "";
  for (auto part = parts.rbegin(); part != parts.rend(); ++part) {
    path += (part == parts.rbegin() ? "" : "/") + **part;
  }
  return path;
}

std::string Declarations::PathOf(const DumpVariable& variable) const {
  const std::string scope = PathOf(variable.scope);
  return scope.empty() ? variable.name : scope + "/" + variable.name;
}

namespace {

/// How many variables each scope declares with all below it.
std::vector<std::size_t> SizesOf(const std::vector<DumpScope>& scopes) {
  std::vector<std::size_t> sizes(scopes.size());
  // A scope comes behind the one around it.
  for (std::size_t i = scopes.size() - 1; i > 0; --i) {
    sizes[i] += scopes[i].variables.size();
    sizes[scopes[i].parent] += sizes[i];
  }
  return sizes;
}

/// The largest of the outermost scopes that fit, the first such one.
template <class Fits>
std::uint32_t Outermost(const Declarations& declarations, Fits fits) {
  const std::vector<std::size_t> sizes = SizesOf(declarations.scopes);
  std::vector<std::uint32_t> level = declarations.scopes[Declarations::kDump].scopes;
  std::uint32_t best = Declarations::kDump;
  while (!level.empty() && best == Declarations::kDump) {
    std::vector<std::uint32_t> below;
    for (const std::uint32_t index : level) {
      const DumpScope& scope = declarations.scopes[index];
      const bool isBetter = best == Declarations::kDump || sizes[index] > sizes[best];
      if (isBetter && fits(scope)) best = index;
      below.insert(below.end(), scope.scopes.begin(), scope.scopes.end());
    }
    level = std::move(below);
  }
  return best;
}

}  // namespace

std::uint32_t OutermostWithVariables(const Declarations& declarations) {
  const auto hasVariables = [](const DumpScope& scope) { return !scope.variables.empty(); };
  const std::uint32_t module = Outermost(declarations, [&](const DumpScope& scope) {
    return scope.kind == "module" && hasVariables(scope);
  });
  return module != Declarations::kDump ? module : Outermost(declarations, hasVariables);
}

}  // namespace orsa::kesncd
