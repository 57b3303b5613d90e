// Reads a dump's declarations, up to the first word of its body.
//
// Sections may stand on one line or many and may lack their $end; attributes and texts are passed
// over. Memory is in proportion to the declarations.
#ifndef KESNCD_FREE_FORMAT_DECLARATION_READER_H_
#define KESNCD_FREE_FORMAT_DECLARATION_READER_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "free_format/dump_words.h"
#include "vcd/declarations.h"
#include "vcd/dump_keywords.h"

namespace orsa::kesncd {

/// Construct it with words at the dump's start, then Read once. `words` then stands at the body;
/// with `hasWord` its last word is the body's first.
class DeclarationReader {
 public:
  explicit DeclarationReader(DumpWords& words) : words_(words) {}

  Declarations Read();

 private:
  /// A keyword with its words, and how they stand on lines.
  struct Section {
    // Words are kept in one text, so that a section costs no allocation once its room is there.
    std::string text;               // of all words, one after the other
    std::vector<std::size_t> ends;  // of each word in the text
    // The line of the keyword; lines count from 1.
    std::uint64_t line = 0;
    // 0 where there are no words.
    std::uint64_t firstLine = 0;  // of its words
    std::uint64_t lastLine = 0;
    std::uint64_t endLine = 0;  // 0: it has no $end
    // No other word stands before the keyword on its line.
    bool startsLine = false;
    bool isPlain = true;  // readers know its keyword and its $end

    std::size_t count() const { return ends.size(); }
    std::string_view Word(std::size_t index) const;
    /// The words from `first` on as one: a range belongs to its name, blanks in it to nothing.
    std::string_view From(std::size_t first) const;
  };
  /// A scope for which the hierarchical reader has a node open.
  struct LineScope {
    std::uint32_t scope;
    // The node hangs on the tree's root.
    bool reachable;
  };

  // Takes the next word, or the last one again.
  bool Advance();
  bool TakeWord();
  void NoteSwitch(Keyword keyword);
  // How a section is collected.
  void TakeSection(Keyword keyword);
  void ReadSection(Keyword keyword);
  bool EndsSection(Keyword keyword, Keyword next);
  void KeepWord(Keyword keyword);
  void ReadEnd();
  void TakeEnd();
  // What each kind of section declares.
  void TakeTimescale();
  void OpenScope();
  void CloseScope();
  std::uint32_t RangeWord(std::size_t first, std::size_t nameSize) const;
  void Declare();
  void EndDefinitions();
  void TakeText(std::string& text);
  std::string NewName();
  std::uint32_t TypeId(std::string_view type);
  std::uint32_t ScopeOf(std::string_view name, bool& isNew);
  // What the line readers would make of it; see LineReading.
  void FollowScope(std::uint32_t scope, const std::string& kind);
  void FollowVariable(const DumpVariable& variable, char codeStart);
  void CheckLine(Tally& tally, bool fits);

  DumpWords& words_;
  bool repeat_ = false;  // the last word is to be taken again
  Section section_;
  Declarations result_;
  // The innermost open scope.
  std::uint32_t current_ = Declarations::kDump;
  // How many names were made up so far.
  std::uint32_t unnamed_ = 0;
  std::unordered_map<std::string, std::uint32_t> scopeByPath_;  // parent's number and name
  std::unordered_map<std::string, std::uint32_t> typeIds_;

  // The nodes that the hierarchical reader has open, the innermost last.
  std::vector<LineScope> lineScopes_;
  // The hierarchical reader has a root.
  bool lineRoot_ = false;
  Tally* lineTally_ = nullptr;  // of the last section, unless it counted there
  // The line of that section.
  std::uint64_t lineNumber_ = 0;
};

/// Reads the declarations from a dump's start. Throws Failure with Unusable for what is no VCD file
/// or declares no variable; messages call the dump `name`.
Declarations ReadDeclarations(DumpWords& words, const std::string& name);

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_DECLARATION_READER_H_
