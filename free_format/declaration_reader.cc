// Section by section: words are kept up to the $end, then the section is understood as a whole.
#include "free_format/declaration_reader.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <string_view>

#include "free_format/findings/dump_format.h"
#include "text/failure.h"
#include "vcd/time_text.h"

namespace orsa::kesncd {

namespace {

// The longest name that the line readers surely take whole: of the 4095 characters of their lines,
// some are for the rest of the declaration.
constexpr std::size_t kLongestRead = 4000;
// Of texts that say where a dump comes from; what they hold is of no use to anybody beyond that.
constexpr std::size_t kTextKept = 4096;

/// The decimal number at the start of a text, limited to 32 bits; 0 where there is none. Signs are
/// taken, so "[-1:0]" has two bits.
std::int64_t NumberOfSize(std::string_view text) {
  constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
  const bool isNegative = !text.empty() && text.front() == '-';
  if (!text.empty() && (isNegative || text.front() == '+')) text.remove_prefix(1);
  std::int64_t number = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') break;
    number = std::min(10 * number + (c - '0'), kMost);
  }
  return isNegative ? -number : number;
}

/// The bits of a range such as "[7:0]", or of a plain width. "[7:0]" has 8, "[3]" has 1; "8" is 8,
/// and "-3" or a word is 0.
std::uint32_t WidthOf(std::string_view size) {
  constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
  if (size.front() != '[') {
    return static_cast<std::uint32_t>(std::max<std::int64_t>(NumberOfSize(size), 0));
  }
  const std::int64_t left = NumberOfSize(size.substr(1));
  const std::size_t colon = size.find(':');
  const std::int64_t right =
      colon != std::string_view::npos ? NumberOfSize(size.substr(colon + 1)) : left;
  return static_cast<std::uint32_t>(std::min(std::abs(left - right) + 1, kMost));
}

/// Where a scope has a single word, that tells a kind ("begin") from a name.
bool IsScopeKind(std::string_view word) {
  static constexpr std::array<std::string_view, 12> kKinds{
      "module", "task",  "function", "begin",     "fork",    "generate",
      "struct", "union", "class",    "interface", "package", "program"};
  return std::find(kKinds.begin(), kKinds.end(), word) != kKinds.end();
}

/// The comment "$comment st is not handled $end", which GHDL writes in the place of a record, or of
/// an array of records, called st. Take each word of a comment, then ask IsWhole.
struct NotHandled {
  std::string name;
  std::size_t words = 0;

  void Take(std::string_view word) {
    // The words that follow the name.
    static constexpr std::string_view kText[] = {"is", "not", "handled"};
    if (words == 0) {
      // The word goes when the next one is taken; a hundred characters are enough for a message.
      name = word.substr(0, 100);
    } else if (words > std::size(kText) || word != kText[words - 1]) {
      // One of the words is another one, or there are too many: the count passes 4 and stays wrong.
      words = std::size(kText) + 1;
    }
    ++words;
  }
  bool IsWhole() const { return words == 4; }
};

/// "#" alone, or before another character, may be an identifier code.
bool IsStamp(std::string_view word) {
  return word.size() > 1 && word[0] == '#' && word[1] >= '0' && word[1] <= '9';
}

/// "10ps" as the line readers take it: digits and a unit in small letters. "1ps" is one; "1PS",
/// "1.5ns" and "ps" are not.
bool IsPlainTimescale(const std::string& text) {
  const std::size_t unit = text.find_first_not_of("0123456789");
  return unit != 0 && unit != std::string::npos &&
         text.find_first_not_of("fmnpsu", unit) == std::string::npos;
}

}  // namespace

std::string_view DeclarationReader::Section::Word(std::size_t index) const {
  const std::size_t start = index == 0 ? 0 : ends[index - 1];
  return std::string_view(text).substr(start, ends[index] - start);
}

/// Words are glued: "count [7:0]" is "count[7:0]", and "1 ns" is "1ns".
std::string_view DeclarationReader::Section::From(std::size_t first) const {
  if (first >= count()) return {};
  return std::string_view(text).substr(first == 0 ? 0 : ends[first - 1]);
}

/// A word that ended a section without its $end is taken twice.
bool DeclarationReader::Advance() {
  if (repeat_) {
    repeat_ = false;
    return true;
  }
  return words_.Next();
}

Declarations DeclarationReader::Read() {
  // The scope that stands for the dump itself.
  result_.scopes.emplace_back();
  while (!result_.ended && Advance() && TakeWord()) {
  }
  // Where the definitions have no end, the first word of the body has been taken already.
  result_.hasWord = result_.hasWord || repeat_;
  return std::move(result_);
}

/// Takes a word outside sections; false when it is the body's first. Where the definitions have no
/// end, a stamp or a dump command after a variable is their end.
bool DeclarationReader::TakeWord() {
  // The section before shares its line with this word, which the line readers do not forgive.
  if (!words_.StartsLine() && lineTally_ != nullptr) lineTally_->Add(lineNumber_, "");
  lineTally_ = nullptr;
  const Keyword keyword = KeywordOf(words_.Word());
  // Only after a variable: a header may hold odd words before.
  if ((IsDumpCommand(keyword) || IsStamp(words_.Word())) && !result_.variables.empty()) {
    result_.hasWord = true;
    return false;
  }
  NoteSwitch(keyword);
  if (keyword != Keyword::None && keyword != Keyword::End && !IsDumpCommand(keyword)) {
    TakeSection(keyword);
  }
  return true;
}

/// Line readers stop counting at a line "$dumpoff" anywhere, be it in a comment of the header. Here
/// nothing has been dumped yet that could be switched off.
void DeclarationReader::NoteSwitch(Keyword keyword) {
  if (keyword != Keyword::DumpOff || !words_.StartsLine()) return;
  result_.lines.switchedOff.Add(words_.Line(), words_.Word());
}

void DeclarationReader::TakeSection(Keyword keyword) {
  section_.line = words_.Line();
  section_.firstLine = section_.lastLine = section_.endLine = 0;
  section_.startsLine = words_.StartsLine();
  section_.isPlain = IsPlainKeyword(words_.Word());
  section_.text.clear();
  section_.ends.clear();
  // Such as $attrbegin. The grammar reader stops there with an error.
  if (keyword == Keyword::Section || keyword == Keyword::Close) {
    result_.lines.attributes.Add(section_.line, words_.Word());
  }
  // Asked now, while the keyword is still the last word.
  const bool isDate = (words_.Word()[1] | 0x20) == 'd';  // else $version
  // These two have no words of their own, so a missing $end is seen at the next word.
  if (keyword == Keyword::EndDefinitions || keyword == Keyword::Upscope) {
    ReadEnd();
  } else {
    ReadSection(keyword);
  }
  const bool isDeclaration =
      StartsSection(keyword) && keyword != Keyword::Comment && keyword != Keyword::Text;
  // A keyword that line readers do not know, by its case, leaves its section unread by them.
  if (isDeclaration && !section_.isPlain) result_.lines.keywords.Add(section_.line, "");
  if (keyword == Keyword::Text) TakeText(isDate ? result_.date : result_.version);
  if (keyword == Keyword::Timescale) TakeTimescale();
  if (keyword == Keyword::Scope) OpenScope();
  if (keyword == Keyword::Upscope) CloseScope();
  if (keyword == Keyword::Var) Declare();
  if (keyword == Keyword::EndDefinitions) EndDefinitions();
}

/// Keeps the first text of its kind. Joined dumps have further ones; the first is the dump's own.
void DeclarationReader::TakeText(std::string& text) {
  if (!text.empty()) return;
  for (std::size_t i = 0; i < section_.count(); ++i) {
    text += (i == 0 ? "" : " ");
    text += section_.Word(i);
  }
}

/// Takes the $end of a section without words only where it follows at once.
void DeclarationReader::ReadEnd() {
  if (!Advance()) return;
  if (KeywordOf(words_.Word()) == Keyword::End) {
    TakeEnd();
  } else {
    // What follows begins something else.
    repeat_ = true;
  }
}

void DeclarationReader::TakeEnd() {
  section_.endLine = words_.Line();
  section_.isPlain = section_.isPlain && IsPlainKeyword(words_.Word());
}

void DeclarationReader::ReadSection(Keyword keyword) {
  // Names, codes and widths are kept whole; what a comment holds is not worth the memory.
  const bool isKept = keyword == Keyword::Var || keyword == Keyword::Scope;
  // Where all words are kept, only the source's length limits a name: memory is in proportion.
  words_.SetLongest(isKept ? DumpWords::kNoLimit : 0);
  NotHandled said;
  // The end of the dump inside a section leaves it as far as it was read; it is understood all the
  // same.
  while (Advance()) {
    const Keyword next = KeywordOf(words_.Word());
    if (next == Keyword::End) {
      TakeEnd();
      if (said.IsWhole()) result_.notHandled.Add(section_.line, said.name);
      return;
    }
    if (keyword == Keyword::Comment) said.Take(words_.Word());
    if (EndsSection(keyword, next)) {
      repeat_ = true;
      return;
    }
    // Line readers would take it for a declaration: they do not know that a comment is open.
    if (words_.StartsLine() && StartsSection(next)) {
      result_.lines.quoted.Add(words_.Line(), words_.Word());
    }
    NoteSwitch(next);
    // These tell whether the words share lines with the keyword or with one another.
    if (section_.firstLine == 0) section_.firstLine = words_.Line();
    section_.lastLine = words_.Line();
    KeepWord(keyword);
  }
}

/// Whether the word begins something else than the section, which has no $end then. What a comment
/// holds is a comment's, be it a commented-out declaration.
bool DeclarationReader::EndsSection(Keyword keyword, Keyword next) {
  if (keyword == Keyword::Comment) return false;
  // The first words (type, width, code and a name; kind and a name) may look like anything, as
  // codes do: "$var wire 1 $var q $end" declares q with the code "$var".
  const std::size_t plain = keyword == Keyword::Var ? 4 : keyword == Keyword::Scope ? 2 : 0;
  // A stamp at the start of a line, where a $var or $scope has all it needs.
  const bool isBody = plain > 0 && words_.StartsLine() && IsStamp(words_.Word());
  return section_.count() >= plain && (StartsSection(next) || isBody);
}

void DeclarationReader::KeepWord(Keyword keyword) {
  // Their words are looked at and never used again.
  if (keyword == Keyword::Comment || keyword == Keyword::Section) return;
  // Past that the words only move the section to its end.
  if (keyword == Keyword::Text && section_.text.size() >= kTextKept) return;
  section_.text += words_.Word();
  section_.ends.push_back(section_.text.size());
}

/// Line readers see a time scale only on the line after a lone keyword.
void DeclarationReader::TakeTimescale() {
  const bool isRead = section_.startsLine && section_.firstLine > section_.line;
  const bool isLate = result_.scopes.size() > 1;  // the first one stands for the dump
  result_.timescale = section_.From(0);
  result_.timescaleLine = section_.line;
  result_.tick = Femtoseconds(result_.timescale);
  // "0ps" is no unit of time; it would make every time 0.
  if (result_.tick == 0U) result_.tick.reset();
  // Line readers go back to the header then, and lose the scope that is open.
  if (isRead && isLate) result_.lines.lateTimescale.Add(section_.line, result_.timescale);
  // One line with the number and the unit, and the $end on another one.
  result_.lines.timescale = isRead && section_.isPlain && section_.firstLine == section_.lastLine &&
                            section_.endLine != section_.lastLine && section_.count() <= 2 &&
                            IsPlainTimescale(result_.timescale);
}

void DeclarationReader::OpenScope() {
  const std::size_t count = section_.count();
  // A name alone is that of a module.
  const bool hasKind = count > 1 || (count == 1 && IsScopeKind(section_.Word(0)));
  const std::string kind(hasKind ? section_.Word(0) : "module");
  bool isNew = false;
  const std::uint32_t scope = ScopeOf(section_.From(hasKind ? 1 : 0), isNew);
  if (isNew) {
    // Of a scope that is opened again, kind and line are those of the first time.
    result_.scopes[scope].kind = kind;
    result_.scopes[scope].line = section_.line;
  } else {
    result_.lines.split.Add(section_.line, "");
  }
  current_ = scope;
  // More or fewer words are no scope line for the line readers.
  CheckLine(result_.lines.scopeLines, count == 2);
  FollowScope(scope, kind);
}

/// A name for what has none.
std::string DeclarationReader::NewName() {
  // Numbered through, over scopes and variables.
  std::string name = "unnamed_" + std::to_string(++unnamed_);
  result_.unnamed.Add(section_.line, name);
  return name;
}

std::uint32_t DeclarationReader::TypeId(std::string_view type) {
  // Most variables have the type of the one before.
  if (!result_.variables.empty()) {
    const DumpVariable& last = result_.variables.back();
    if (result_.TypeOf(last) == type) return last.typeId;
  }
  const auto [place, isNew] =
      typeIds_.try_emplace(std::string(type), static_cast<std::uint32_t>(result_.types.size()));
  if (isNew) result_.types.emplace_back(type);
  return place->second;
}

/// The scope of that name in the current one. Every scope without a name is one of its own.
std::uint32_t DeclarationReader::ScopeOf(std::string_view name, bool& isNew) {
  const auto number = static_cast<std::uint32_t>(result_.scopes.size());
  std::string given = name.empty() ? NewName() : std::string(name);
  // A number ends at the slash, so no two scopes have the same key.
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
  // Without anything open the dump itself stays the current scope.
  CheckLine(result_.lines.scopeLines, true);
  if (current_ == Declarations::kDump) result_.unbalanced.Add(section_.line, "$upscope");
  current_ = result_.scopes[current_].parent;
  // The hierarchical reader closes its innermost node at every $upscope, whatever scope ends.
  if (!lineScopes_.empty()) lineScopes_.pop_back();
}

/// Where in a name the last of its words begins that may be a range; the name's length if none is.
/// The name's first word, `first`, is never one. "data [7:0]" has its range word at 4; "data[7:0]"
/// has none.
std::uint32_t DeclarationReader::RangeWord(std::size_t first, std::size_t nameSize) const {
  // Searched from the last word back.
  for (std::size_t word = section_.count(); word-- > first + 1;) {
    if (section_.Word(word).front() != '[') continue;
    return static_cast<std::uint32_t>(nameSize - section_.From(word).size());
  }
  return static_cast<std::uint32_t>(nameSize);
}

void DeclarationReader::Declare() {
  // Port dumps write a size as a range, which may stand in several words. Words of the type and the
  // size; the code is the next one.
  std::size_t sizeEnd = 2;
  if (section_.count() > 1 && section_.Word(1).front() == '[') {
    // "[7 : 0]" has three words.
    while (sizeEnd < section_.count() &&
           section_.Word(sizeEnd - 1).find(']') == std::string_view::npos) {
      ++sizeEnd;
    }
  }
  const std::size_t count = section_.count();
  // No code is left: nothing could ever change.
  if (count <= sizeEnd) {
    result_.malformed.Add(section_.line, "$var " + std::string(section_.From(0)));
    return;
  }
  // The size as one text, all its words glued.
  const std::string_view size =
      section_.From(1).substr(0, section_.ends[sizeEnd - 1] - section_.ends[0]);
  const std::string_view code = section_.Word(sizeEnd);
  const auto number = static_cast<std::uint32_t>(result_.variables.size());
  DumpVariable variable;
  variable.name = section_.From(sizeEnd + 1);
  if (variable.name.empty()) variable.name = NewName();
  // The range word is looked for before the size is glued to the name.
  variable.nameWord = RangeWord(sizeEnd + 1, variable.name.size());
  // "$var port [7:0] <0 data $end" declares data[7:0].
  if (size.front() == '[' && variable.name.back() != ']') {
    variable.nameWord = static_cast<std::uint32_t>(variable.name.size());
    variable.name += size;
  }
  variable.typeId = TypeId(section_.Word(0));
  variable.width = WidthOf(size);
  variable.codeId = result_.codes.Add(code);
  variable.scope = current_;
  variable.line = section_.line;
  result_.longestCode = std::max(result_.longestCode, code.size());
  result_.widest = std::max(result_.widest, variable.width);
  // Scopes around it have variables in them too; those above a marked one are marked already.
  for (std::uint32_t scope = current_; !result_.scopes[scope].populated;
       scope = result_.scopes[scope].parent) {
    result_.scopes[scope].populated = true;
  }
  // Six or seven words on a line, four or five of them the section's own.
  const bool isOneLine = (count == 4 || count == 5) && variable.name.size() <= kLongestRead;
  CheckLine(result_.lines.overlooked, isOneLine);
  FollowVariable(variable, code.front());
  result_.scopes[current_].variables.push_back(number);
  result_.variables.push_back(std::move(variable));
}

void DeclarationReader::EndDefinitions() {
  result_.ended = true;
  CheckLine(result_.lines.scopeLines, true);
}

/// Counts a section that does not stand alone on one line, as far as that is known before the next
/// section begins.
void DeclarationReader::CheckLine(Tally& tally, bool fits) {
  if (!fits || !section_.startsLine || section_.endLine != section_.line) {
    tally.Add(section_.line, section_.From(0));
    return;
  }
  // The next word on the line is not known yet; TakeWord adds the section then.
  lineTally_ = &tally;
  lineNumber_ = section_.line;
}

/// Follows the hierarchical reader: only its kinds of scopes open a node, and only the first
/// top-level scope is the root.
void DeclarationReader::FollowScope(std::uint32_t scope, const std::string& kind) {
  if (!IsTreeKind(kind)) return;
  lineScopes_.push_back(
      {scope, !lineRoot_ || (!lineScopes_.empty() && lineScopes_.back().reachable)});
  lineRoot_ = true;
}

/// Counts a variable for each thing that the library's readers would do wrong with it.
void DeclarationReader::FollowVariable(const DumpVariable& variable, char codeStart) {
  LineReading& lines = result_.lines;
  const auto add = [&](Tally& tally, bool applies) {
    // Only the first example is shown, so only its path is made.
    if (applies) tally.Add(variable.line, tally ? "" : result_.ShortPathOf(variable));
  };
  add(lines.unreachable, lineScopes_.empty() || !lineScopes_.back().reachable);
  // The reader has another scope open than the dump.
  add(lines.wrongScope, lineScopes_.empty() || lineScopes_.back().scope != variable.scope);
  // Only the code of a value with a blank before it is taken for something else.
  const bool isWord = variable.width > 1 || result_.TypeOf(variable) == "real";
  add(lines.grammarCodes, isWord && std::string_view("#bBrR").find(codeStart) != std::string::npos);
  // A flat run may stop at the scope's first sub-scope.
  add(lines.late, !result_.scopes[variable.scope].scopes.empty());
}

Declarations ReadDeclarations(DumpWords& words, const std::string& name) {
  if (words.FirstBytes().empty()) throw Failure(FailureKind::Unusable, name + ": is empty");
  // Told from the bytes, since other formats would give odd words and no clear message.
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
