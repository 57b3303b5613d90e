// The look at a dump's beginning that decides whether its readers need it prepared.
#include "free_format/dump_look.h"
#include "tests/support/testing.h"
#include "tests/support/text_stream.h"

namespace orsa::kesncd {
namespace {

using enum FindingKind;

TEST(Look, FindsWhatPreparingFixes) {
  const std::string clean = Dump("HEAD~#0~");
  std::string body;  // longer than the look
  for (int i = 0; i < 60000; ++i) body += "0!\n1!\nb1 \"\n#" + std::to_string(i) + "\n";
  const auto declare = [](const std::string& line) {
    return Dump("SCALE~TOP~CLK~BUS~" + line + "~UP~END~#0~");
  };
  using Kinds = std::vector<FindingKind>;
  const std::tuple<std::string, Kinds, Kinds> rows[] = {
      {clean + body, {}, {}},
      {clean + body + "0! 1!\n", {}, {}},
      {clean + "0! 1!\n" + body, {ChangesInLine}, {ChangesInLine}},
      {clean + "0 !\n" + body, {ChangesInLine}, {ChangesInLine}},
      {clean + "0! H!", {ChangesInLine, Weak}, {ChangesInLine, Weak}},
      {declare("$var wire 1 # z $end") + body, {}, {}},
      {declare("$var wire 2 # z $end") + body, {}, {GrammarCodes}},
      {declare("$attrbegin misc 02 e 1 $end") + body, {}, {Attributes}},
      {declare("$comment~$upscope~$end") + body, {QuotedDeclarations}, {QuotedDeclarations}},
      {clean + "$comment\n1!\n$end\n", {QuotedItems}, {QuotedItems}},
      {declare("$VAR wire 1 # z $end") + body, {Keywords}, {Keywords}},
      {declare("$var port 1 # z $end") + body, {Ports}, {Ports}},
      {declare("$var wire 1000 % z $end") + body, {}, {LongValues}},
      {declare("$var wire 5000 % z $end") + body, {LongValues}, {LongValues}},
      {declare("$var wire 2 lo0000000000 z $end") + body, {MisreadSpan}, {MisreadSpan}},
      // A word that stood in the place of a stamp's digits goes on behind one of seven digits.
      {"$comment letters9 $end\n" + clean + body, {MisreadSpan}, {MisreadSpan}},
      {"$comment letters9 $end\n" + clean, {}, {}},
      {"$comment lettersx $end\n" + clean + body, {}, {}}};
  for (const auto& [dump, lines, grammar] : rows) {
    for (const Reader reader : {Reader::Lines, Reader::Grammar}) {
      TextSource source(dump, 10000);
      KeptSource kept(source);
      Kinds reasons;
      for (const Finding& finding : LookAtDump(kept, "", reader).reasons) {
        reasons.push_back(finding.kind);
      }
      EXPECT_EQ(reasons, reader == Reader::Lines ? lines : grammar) << dump.substr(0, 300);
      EXPECT_LT(kept.TakeKept().size(), 600000U);
    }
  }
}

}  // namespace
}  // namespace orsa::kesncd
