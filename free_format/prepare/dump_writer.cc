// The lines of a prepared dump, in the one shape that all readers take alike.
#include "free_format/prepare/dump_writer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>
#include <unordered_set>

#include "vcd/time_text.h"

namespace orsa::kesncd {

namespace {

// Longer names do not fit on a line that every reader takes whole. Such a name would be cut by the
// reader, or take its $end off the line.
constexpr std::size_t kLongestName = 800;
// Longer than any type of the language.
constexpr std::size_t kLongestType = 20;
// A line of the header, with room to spare.
constexpr std::size_t kLongestLine = 2000;
// 2^64 - 1 has twenty digits.
constexpr std::size_t kTickDigits = 20;

/// A type as it can stand in a prepared dump. Readers keep it in memory that a number may stand
/// before, so it holds no digit ("supply0"), and what a port dump holds is no port any more. In the
/// filtered flat reader a line's second word, the type, lies in the slot of a stamp's digits.
std::string_view TypeText(const std::string& type) {
  const bool isWord =
      !type.empty() && type.find_first_not_of("abcdefghijklmnopqrstuvwxyz_") == std::string::npos;
  return isWord && type != "port" ? std::string_view(type).substr(0, kLongestType) : "wire";
}

/// Others than the four do not come here; a port dump's commands are the plain ones by now.
std::string_view CommandText(Keyword command) {
  switch (command) {
    case Keyword::DumpAll:
      return "$dumpall\n";
    case Keyword::DumpOn:
      return "$dumpon\n";
    case Keyword::DumpOff:
      return "$dumpoff\n";
    case Keyword::DumpVars:
    case Keyword::None:
    case Keyword::Comment:
    case Keyword::Text:
    case Keyword::Timescale:
    case Keyword::Scope:
    case Keyword::Upscope:
    case Keyword::Var:
    case Keyword::EndDefinitions:
    case Keyword::Close:
    case Keyword::Section:
    case Keyword::End:
      break;
  }
  return "$dumpvars\n";
}

}  // namespace

/// A variable outside every scope needs one as well.
std::string AddedRootOf(const Declarations& declarations) {
  const DumpScope& dump = declarations.scopes[Declarations::kDump];
  const auto tops = std::count_if(dump.scopes.begin(), dump.scopes.end(), [&](std::uint32_t scope) {
    return declarations.scopes[scope].populated;
  });
  // One scope with variables, and none outside: it is the root.
  if (tops == 1 && dump.variables.empty()) return "";
  // Compared with all names, so that paths stay unambiguous.
  std::unordered_set<std::string_view> names;
  for (const DumpScope& scope : declarations.scopes) names.insert(scope.name);
  std::string name = "all_scopes";
  while (names.contains(name)) name += '_';
  return name;
}

DumpWriter::DumpWriter(ByteSink& sink, const Declarations& declarations, std::size_t block)
    : sink_(sink),
      declarations_(declarations),
      shares_(ShareCodes(declarations)),
      codes_(declarations, shares_),
      held_(std::max(block, kLongestLine)) {}

void DumpWriter::Flush() {
  sink_.Write({held_.data(), used_});
  used_ = 0;
}

/// Each line has the one shape that line readers take, such as "$scope module dut $end".
void DumpWriter::WriteHeader(std::optional<std::uint64_t> tick) {
  if (tick) Put("$timescale\n" + TimeText(*tick) + "\n$end\n");
  const std::string root = AddedRootOf(declarations_);
  if (!root.empty()) OpenScope(Declarations::kDump, root);
  for (const std::uint32_t top : declarations_.scopes[Declarations::kDump].scopes) {
    if (declarations_.scopes[top].populated) WriteScopes(top);
  }
  if (!root.empty()) Put("$upscope $end\n");
  Put("$enddefinitions $end\n");
}

/// Without recursion: scopes may nest deeper than calls can.
void DumpWriter::WriteScopes(std::uint32_t top) {
  struct Open {
    std::uint32_t scope;
    // `next` is the scope below that comes next.
    std::size_t next;
  };
  OpenScope(top, declarations_.scopes[top].name);
  std::vector<Open> open{{top, 0}};
  while (!open.empty()) {
    const auto& below = declarations_.scopes[open.back().scope].scopes;
    if (open.back().next == below.size()) {
      Put("$upscope $end\n");
      open.pop_back();
      continue;
    }
    const std::uint32_t scope = below[open.back().next++];
    OpenScope(scope, declarations_.scopes[scope].name);
    open.push_back({scope, 0});
  }
}

/// Opens a scope and declares its variables. Of kind module, whatever it was: the flat readers know
/// no other kind.
void DumpWriter::OpenScope(std::uint32_t scope, const std::string& name) {
  Put("$scope module ");
  Put(FittingName(name, scope, declarations_.scopes[scope].line));
  Put(" $end\n");
  for (const std::uint32_t index : declarations_.scopes[scope].variables) {
    const DumpVariable& variable = declarations_.variables[index];
    // Without a line of its own its changes are those of the names before.
    if (shares_[index].isLeftOut) leftOut_.Add(variable.line, variable.name);
    if (shares_[index].isRepeated || shares_[index].isLeftOut) continue;
    // $var wire 8 AAC data[7:0] $end
    Put("$var ");
    Put(TypeText(declarations_.TypeOf(variable)));
    Put(" ");
    Put(std::to_string(variable.width));
    Put(" ");
    Put(codes_.CodeOf(variable, shares_[index]));
    Put(" ");
    Put(FittingName(variable.name, index, variable.line));
    Put(" $end\n");
  }
}

/// A name as every reader can take it: not too long for a line, and no keyword. "end" is harmless,
/// "$end" would end the line's section.
std::string DumpWriter::FittingName(const std::string& name, std::uint32_t number,
                                    std::uint64_t line) {
  const Keyword keyword = KeywordOf(name);
  const bool isKeyword = StartsSection(keyword) || keyword == Keyword::End;
  // A "_" in front makes it a name.
  std::string fitting = isKeyword ? "_" + name : name;
  const bool isLong = fitting.size() > kLongestName;
  if (isKeyword || isLong) renamed_.Add(line, fitting);
  if (!isLong) return fitting;
  // The number differs for all scopes, and for all variables.
  const std::string suffix = "_" + std::to_string(number);
  fitting.resize(kLongestName - suffix.size());
  return fitting + suffix;
}

/// A section that is still open ends first: no reader knows nested ones.
void DumpWriter::WriteCommand(Keyword command) {
  EndSection();
  Put(CommandText(command));
  inSection_ = true;
}

void DumpWriter::EndSection() {
  if (inSection_) Put("$end\n");
  inSection_ = false;
}

/// Stamps grow, so none has fewer digits than one before: readers that keep a stamp's text in place
/// would take the longer one's last digits for its own.
void DumpWriter::WriteStamp(std::uint64_t ticks) {
  EndSection();
  std::array<char, kTickDigits> digits{};
  const char* const end = std::to_chars(digits.begin(), digits.end(), ticks).ptr;
  Put("#");
  Put({digits.data(), end});
  Put("\n");
}

/// A blank stands where a scalar has its value, so one copy writes blank, code and newline.
void DumpWriter::PutVector(std::string_view text, const char* code) {
  Put(text);
  PutScalar(' ', code);
}

void DumpWriter::WriteVector(std::string_view text, std::uint32_t code) {
  PutVector(text, codes_.First(code));
  for (std::uint32_t name = 0; name < codes_.FurtherNames(code); ++name) {
    PutVector(text, codes_.Further(code, name));
  }
}

}  // namespace orsa::kesncd
