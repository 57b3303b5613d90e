#include "free_format/declaration_reader.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <string_view>

#include "free_format/dump_format.h"
#include "text/failure.h"
#include "vcd/time_text.h"

namespace orsa::kesncd {

namespace {

constexpr std::size_t kWordsKept = 16;  // of a section; a declaration has eight at most
// Longer names do not fit on a line that every reader takes whole.
constexpr std::size_t kLongestName = 800;
constexpr std::size_t kLongestRead = 4000;  // on a line of the readers that take whole dumps
constexpr std::size_t kLongestType = 20;

/// The words from `first` on as one: a range belongs to its name, blanks in it to nothing.
std::string Glued(const std::vector<std::string>& words, std::size_t first) {
  std::string glued;
  for (std::size_t i = first; i < words.size(); ++i) glued += words[i];
  return glued;
}

/// The bits of a range such as "[7:0]", or of a plain width.
std::uint32_t WidthOf(const std::string& size) {
  const bool isRange = size.front() == '[';
  const long long left = std::strtoll(size.c_str() + (isRange ? 1 : 0), nullptr, 10);
  const std::size_t colon = size.find(':');
  const long long right =
      colon != std::string::npos ? std::strtoll(size.c_str() + colon + 1, nullptr, 10) : left;
  const double width = isRange
                           ? std::abs(static_cast<double>(left) - static_cast<double>(right)) + 1
                           : static_cast<double>(left);
  return static_cast<std::uint32_t>(
      std::clamp<double>(width, 0, std::numeric_limits<std::int32_t>::max()));
}

/// A size that is a range in several words, as port dumps have it, becomes one word.
void JoinSize(std::vector<std::string>& words) {
  while (words.size() > 2 && words[1].front() == '[' && words[1].find(']') == std::string::npos) {
    words[1] += words[2];
    words.erase(words.begin() + 2);
  }
}

bool IsScopeKind(const std::string& word) {
  static constexpr std::array<std::string_view, 12> kKinds{
      "module", "task",  "function", "begin",     "fork",    "generate",
      "struct", "union", "class",    "interface", "package", "program"};
  return std::find(kKinds.begin(), kKinds.end(), word) != kKinds.end();
}

/// Whether the line readers take the scope for one of the tree.
bool IsTreeKind(const std::string& kind) {
  return kind == "module" || kind == "function" || kind == "task";
}

bool IsStamp(std::string_view word) {
  return word.size() > 1 && word[0] == '#' && word[1] >= '0' && word[1] <= '9';
}

/// "10ps" as the line readers take it: digits and a unit in small letters.
bool IsPlainTimescale(const std::string& text) {
  const std::size_t unit = text.find_first_not_of("0123456789");
  return unit != 0 && unit != std::string::npos &&
         text.find_first_not_of("fmnpsu", unit) == std::string::npos;
}

}  // namespace

bool DeclarationReader::Advance() {
  if (repeat_) {
    repeat_ = false;
    return true;
  }
  return words_.Next();
}

Declarations DeclarationReader::Read() {
  result_.scopes.emplace_back();
  while (!result_.ended && Advance() && TakeWord()) {
  }
  result_.hasWord = result_.hasWord || repeat_;
  return std::move(result_);
}

/// Takes a word outside sections; false when it is the body's first. Where the definitions have no
/// end, a stamp or a dump command behind a variable is their end.
bool DeclarationReader::TakeWord() {
  if (!words_.StartsLine() && lineTally_ != nullptr) lineTally_->Add(lineNumber_, lineWhat_);
  lineTally_ = nullptr;
  const Keyword keyword = KeywordOf(words_.Word());
  if ((IsDumpCommand(keyword) || IsStamp(words_.Word())) && !result_.variables.empty()) {
    result_.hasWord = true;
    return false;
  }
  if (keyword != Keyword::None && keyword != Keyword::End && !IsDumpCommand(keyword)) {
    TakeSection(keyword);
  }
  return true;
}

void DeclarationReader::TakeSection(Keyword keyword) {
  section_ = {std::move(section_.words),    words_.Line(), 0, 0, 0, words_.StartsLine(),
              IsPlainKeyword(words_.Word())};
  if (keyword == Keyword::Section || keyword == Keyword::Close) {
    result_.lines.attributes.Add(section_.line, words_.Word());
  }
  if (keyword == Keyword::EndDefinitions || keyword == Keyword::Upscope) {
    ReadEnd();
  } else {
    ReadSection(keyword);
  }
  const bool isDeclaration =
      StartsSection(keyword) && keyword != Keyword::Comment && keyword != Keyword::Text;
  if (isDeclaration && !section_.isPlain) result_.lines.keywords.Add(section_.line, "");
  if (keyword == Keyword::Timescale) TakeTimescale();
  if (keyword == Keyword::Scope) OpenScope();
  if (keyword == Keyword::Upscope) CloseScope();
  if (keyword == Keyword::Var) Declare();
  if (keyword == Keyword::EndDefinitions) EndDefinitions();
}

/// Takes the $end of a section without words only where it follows at once.
void DeclarationReader::ReadEnd() {
  section_.words.clear();
  if (!Advance()) return;
  if (KeywordOf(words_.Word()) == Keyword::End) {
    TakeEnd();
  } else {
    repeat_ = true;
  }
}

void DeclarationReader::TakeEnd() {
  section_.endLine = words_.Line();
  section_.isPlain = section_.isPlain && IsPlainKeyword(words_.Word());
}

void DeclarationReader::ReadSection(Keyword keyword) {
  // The words before may look like anything: codes do.
  const std::size_t plain = keyword == Keyword::Var ? 4 : keyword == Keyword::Scope ? 2 : 0;
  section_.words.clear();
  while (Advance()) {
    const Keyword next = KeywordOf(words_.Word());
    if (next == Keyword::End) {
      TakeEnd();
      return;
    }
    // What a comment holds is a comment's, be it a commented-out declaration.
    const bool isBody = plain > 0 && words_.StartsLine() && IsStamp(words_.Word());
    if (keyword != Keyword::Comment && section_.words.size() >= plain &&
        (StartsSection(next) || isBody)) {
      repeat_ = true;
      return;
    }
    if (words_.StartsLine() && StartsSection(next)) {
      result_.lines.quoted.Add(words_.Line(), words_.Word());
    }
    if (section_.words.empty()) section_.firstLine = words_.Line();
    section_.lastLine = words_.Line();
    if (section_.words.size() < kWordsKept) section_.words.emplace_back(words_.Word());
  }
}

void DeclarationReader::TakeTimescale() {
  const bool isRead = section_.startsLine && section_.firstLine > section_.line;
  const bool isLate = result_.scopes.size() > 1;  // the first one stands for the dump
  result_.timescale = Glued(section_.words, 0);
  result_.timescaleLine = section_.line;
  result_.tick = Femtoseconds(result_.timescale);
  if (result_.tick == 0U) result_.tick.reset();
  if (isRead && isLate) result_.lines.lateTimescale.Add(section_.line, result_.timescale);
  result_.lines.timescale = isRead && section_.isPlain && section_.firstLine == section_.lastLine &&
                            section_.endLine != section_.lastLine && section_.words.size() <= 2 &&
                            IsPlainTimescale(result_.timescale);
}

void DeclarationReader::OpenScope() {
  std::vector<std::string>& words = section_.words;
  const std::size_t count = words.size();
  if (count == 1 && !IsScopeKind(words[0])) words.insert(words.begin(), "module");
  const std::string kind = words.empty() ? "module" : words[0];
  bool isNew = false;
  const std::uint32_t scope = ScopeOf(Glued(words, 1), isNew);
  if (isNew) {
    result_.scopes[scope].kind = kind;
    result_.scopes[scope].line = section_.line;
  } else {
    result_.lines.split.Add(section_.line, result_.PathOf(scope));
  }
  current_ = scope;
  CheckLine(result_.lines.scopeLines, count == 2, result_.PathOf(scope));
  FollowScope(scope, kind);
}

/// A name for what has none.
std::string DeclarationReader::NewName() {
  std::string name = "unnamed_" + std::to_string(++unnamed_);
  result_.renamed.Add(section_.line, name);
  return name;
}

/// A name as every reader can take it: not too long for a line, and no keyword.
std::string DeclarationReader::Fitting(std::string name, std::uint32_t number) {
  const Keyword keyword = KeywordOf(name);
  const bool isKeyword = StartsSection(keyword) || keyword == Keyword::End;
  if (isKeyword) name.insert(name.begin(), '_');
  const bool isLong = name.size() > kLongestName;
  if (isKeyword || isLong) result_.renamed.Add(section_.line, name);
  if (!isLong) return name;
  std::string suffix(1, '_');
  suffix += std::to_string(number);
  return name.substr(0, kLongestName - suffix.size()) + suffix;
}

/// The scope of that name in the current one. Every scope without a name is one of its own.
std::uint32_t DeclarationReader::ScopeOf(const std::string& name, bool& isNew) {
  const auto number = static_cast<std::uint32_t>(result_.scopes.size());
  std::string given = Fitting(name, number);
  if (given.empty()) given = NewName();
  const auto [place, added] =
      scopeByPath_.try_emplace(std::to_string(current_) + "/" + given, number);
  isNew = added;
  if (!isNew) return place->second;
  result_.scopes[current_].scopes.push_back(number);
  result_.scopes.emplace_back();
  result_.scopes.back().name = std::move(given);
  result_.scopes.back().parent = current_;
  return number;
}

void DeclarationReader::CloseScope() {
  CheckLine(result_.lines.scopeLines, true, result_.PathOf(current_));
  if (current_ == Declarations::kDump) result_.unbalanced.Add(section_.line, "$upscope");
  current_ = result_.scopes[current_].parent;
  if (!lineScopes_.empty()) lineScopes_.pop_back();
}

void DeclarationReader::Declare() {
  std::vector<std::string>& words = section_.words;
  const std::size_t count = words.size();
  if (count > 1) JoinSize(words);
  if (words.size() < 3) {
    result_.malformed.Add(section_.line, "$var " + Glued(words, 0));
    return;
  }
  const auto number = static_cast<std::uint32_t>(result_.variables.size());
  DumpVariable variable;
  variable.name = Glued(words, 3);
  if (variable.name.empty()) variable.name = NewName();
  if (words[1].front() == '[' && variable.name.back() != ']') variable.name += words[1];
  const bool isOneLine = (count == 4 || count == 5) && variable.name.size() <= kLongestRead;
  variable.name = Fitting(std::move(variable.name), number);
  variable.type = words[0].substr(0, kLongestType);
  variable.width = WidthOf(words[1]);
  variable.code = result_.codes.Add(words[2]);
  result_.longestCode = std::max(result_.longestCode, words[2].size());
  variable.scope = current_;
  variable.line = section_.line;
  for (std::uint32_t scope = current_; !result_.scopes[scope].populated;
       scope = result_.scopes[scope].parent) {
    result_.scopes[scope].populated = true;
  }
  CheckLine(result_.lines.overlooked, isOneLine, variable.name);
  FollowVariable(variable, words[2].front());
  result_.scopes[current_].variables.push_back(number);
  result_.variables.push_back(std::move(variable));
}

void DeclarationReader::EndDefinitions() {
  result_.ended = true;
  CheckLine(result_.lines.scopeLines, true, "$enddefinitions");
}

/// Counts a section that does not stand alone on one line, as far as that is known before the next
/// section begins.
void DeclarationReader::CheckLine(Tally& tally, bool fits, const std::string& what) {
  if (!fits || !section_.startsLine || section_.endLine != section_.line) {
    tally.Add(section_.line, what);
    return;
  }
  lineTally_ = &tally;
  lineNumber_ = section_.line;
  lineWhat_ = what;
}

void DeclarationReader::FollowScope(std::uint32_t scope, const std::string& kind) {
  if (!IsTreeKind(kind)) {
    result_.lines.foreign.Add(section_.line, kind + " " + result_.PathOf(scope));
    return;
  }
  lineScopes_.push_back(
      {scope, !lineRoot_ || (!lineScopes_.empty() && lineScopes_.back().reachable)});
  lineRoot_ = true;
}

void DeclarationReader::FollowVariable(const DumpVariable& variable, char codeStart) {
  LineReading& lines = result_.lines;
  const auto add = [&](Tally& tally, bool applies) {
    if (applies) tally.Add(variable.line, tally ? "" : result_.PathOf(variable));
  };
  add(lines.unreachable, lineScopes_.empty() || !lineScopes_.back().reachable);
  add(lines.wrongScope, lineScopes_.empty() || lineScopes_.back().scope != variable.scope);
  const bool isWord = variable.width > 1 || variable.type == "real";
  add(lines.grammarCodes, isWord && std::string_view("#bBrR").find(codeStart) != std::string::npos);
  add(lines.late, !result_.scopes[variable.scope].scopes.empty());
}

Declarations ReadDeclarations(DumpWords& words, const std::string& name) {
  if (words.FirstBytes().empty()) throw Failure(FailureKind::Unusable, name + ": is empty");
  const ForeignFormat format = ForeignFormatOf(words.FirstBytes());
  if (!format.name.empty()) {
    throw Failure(FailureKind::Unusable, name + ": " + ForeignText(format));
  }
  Declarations declarations = DeclarationReader(words).Read();
  if (declarations.variables.empty()) {
    throw Failure(FailureKind::Unusable, name + ": declares no variable; is it a VCD file?");
  }
  return declarations;
}

}  // namespace orsa::kesncd
