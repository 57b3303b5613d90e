// The texts about what could not be read.
#include "free_format/remarks.h"

namespace orsa::kesncd {

std::string RemarkOn(const std::string& text, const Tally& tally) {
  std::string remark = text + ": " + std::to_string(tally.count);
  // What has no line is about the dump as a whole.
  if (tally.line == 0) return remark;
  remark += " (first at line " + std::to_string(tally.line);
  if (!tally.example.empty()) remark += ": " + tally.example;
  return remark + ")";
}

std::vector<std::string> ReadingRemarks(const Declarations& declarations,
                                        const ItemTallies& items) {
  struct Row {
    const Tally& tally;
    const char* text;
  };
  const Row rows[] = {
      {items.unended, "section without $end, after which nothing was read"},
      {items.torn, "value without a code at the end, where the dump is cut off"},
      {items.cutStamp, "time stamp cut off at the end of the dump, not taken"},
      {items.backward, "time stamps that go back, which do not move time"},
      {items.badStamps, "time stamps that are no whole number below 2^64, not taken"},
      {declarations.malformed, "declarations without a code, left out"},
      {items.late, "declarations after the definitions, left out"},
      {declarations.unbalanced, "$upscope with no scope open"},
      {items.undeclared, "changes of codes that no variable has, left out"},
      {items.strings, "changes to strings, which do not count, left out"},
      {items.strays, "words that are not understood, left out"},
      {items.fractions, "time stamps that lose their fractions"},
  };
  std::vector<std::string> remarks;
  // Neither an end of the definitions nor a word of the body.
  if (!declarations.ended && !declarations.hasWord) {
    remarks.emplace_back("it ends inside its declarations and holds no change");
  }
  for (const Row& row : rows) {
    if (row.tally) remarks.push_back(RemarkOn(row.text, row.tally));
  }
  return remarks;
}

}  // namespace orsa::kesncd
