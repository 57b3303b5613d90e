// The scope tree of a dump: paths in it, and the scope that a run takes unless told otherwise.
#include "vcd/declarations.h"

namespace orsa::kesncd {

namespace {

// Characters of a path in a message, and how many scopes may come into it. A hostile dump may nest
// a million scopes; a message must not become that long.
constexpr std::size_t kShortPath = 120;

/// The last scopes of a path, as many as a message can show; false where some are left out.
bool AppendLastParts(const Declarations& declarations, std::uint32_t scope, std::string& path) {
  std::vector<const std::string*> parts;
  std::size_t length = 0;
  for (; scope != Declarations::kDump && length < kShortPath;
       scope = declarations.scopes[scope].parent) {
    parts.push_back(&declarations.scopes[scope].name);
    length += parts.back()->size() + 1;
  }
  for (auto part = parts.rbegin(); part != parts.rend(); ++part) {
    // Each name is cut too: one of them alone may be as long as a line.
    path += (part == parts.rbegin() ? "" : "/") + (*part)->substr(0, kShortPath);
  }
  return scope == Declarations::kDump;
}

}  // namespace

std::string Declarations::PathOf(std::uint32_t scope) const {
  return PathBelow(kDump, scope);
}

/// Measured first and then filled from its end: the way leads upwards, and putting each name before
/// the others would move all of them every time.
std::string Declarations::PathBelow(std::uint32_t top, std::uint32_t scope) const {
  std::size_t length = 0;
  for (std::uint32_t at = scope; at != top; at = scopes[at].parent) {
    length += scopes[at].name.size() + 1;
  }
  if (length == 0) return "";
  // All slashes at first; the names are written between them.
  std::string path(length - 1, '/');
  for (std::size_t end = path.size(); scope != top; scope = scopes[scope].parent) {
    const std::string& name = scopes[scope].name;
    path.replace(end - name.size(), name.size(), name);
    end -= name.size() + 1;
  }
  return path;
}

std::string Declarations::PathOf(const DumpVariable& variable) const {
  const std::string scope = PathOf(variable.scope);
  return scope.empty() ? variable.name : scope + "/" + variable.name;
}

std::string Declarations::ShortPathOf(std::uint32_t scope) const {
  std::string path;
  const bool isWhole = AppendLastParts(*this, scope, path);
  return isWhole ? path : ".../" + path;
}

std::string Declarations::ShortPathOf(const DumpVariable& variable) const {
  const std::string scope = ShortPathOf(variable.scope);
  return (scope.empty() ? "" : scope + "/") + variable.name.substr(0, kShortPath);
}

namespace {

/// How many variables each scope declares with all below it.
std::vector<std::size_t> SizesOf(const std::vector<DumpScope>& scopes) {
  std::vector<std::size_t> sizes(scopes.size());
  // A scope comes after the one around it. From the last scope back, so that each sum is complete
  // before it goes to the scope around it.
  for (std::size_t i = scopes.size() - 1; i > 0; --i) {
    sizes[i] += scopes[i].variables.size();
    sizes[scopes[i].parent] += sizes[i];
  }
  return sizes;
}

/// The largest of the outermost scopes that fit, the first such one. Level by level from the top: a
/// deeper scope counts only where no scope above it fits.
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
  // Packages, interfaces and tasks declare variables too, so modules come first.
  const std::uint32_t module = Outermost(declarations, [&](const DumpScope& scope) {
    return scope.kind == "module" && hasVariables(scope);
  });
  return module != Declarations::kDump ? module : Outermost(declarations, hasVariables);
}

}  // namespace orsa::kesncd
