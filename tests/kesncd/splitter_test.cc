// Cutting lines into words in reused slots, with the tails that longer words leave there.
#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

/// Slots joined by "|".
std::string Joined(char** slots, int count) {
  std::string text = std::to_string(count);
  for (int i = 0; i < count; ++i) text += std::string("|") + slots[i];
  return text;
}

std::string Tokens(Mem& mem, const std::string& line, const char* delims = " \n\r\t") {
  int count = -1;
  char** const slots = mem.GetArrayOfTokens(line.c_str(), delims, &count);
  return Joined(slots, count);
}

std::string Pieces(Mem& mem, const std::string& text) {
  int count = -1;
  char** const slots = mem.GetArrayOfPieces(text.c_str(), &count);
  return Joined(slots, count);
}

TEST(Splitter, CutsLinesIntoWordsAndPieces) {
  const char* const rows[][3] = {{"", " \n", "0"},
                                 {" \t\r\n", " \n\r\t", "0"},
                                 {"\ta  b\t\tc \r\n", " \n\r\t", "3|a|b|c"},
                                 {"a|b c\n", "|", "2|a|b c"},  // a newline that ends a word goes
                                 {"a|\n", "|", "2|a|"},
                                 {"||x", "|", "1|x"}};
  for (const auto& [line, delims, words] : rows) {
    Mem mem;
    EXPECT_EQ(Tokens(mem, line, delims), words) << line;
  }
  const char* const table =
      " => 0;data_out[12] => 6|data|_|out|[|12|];#1200 => 2|#|1200;a--\xC3\xA4--9zZ => "
      "4|a|--\xC3\xA4--|9|zZ";
  for (const auto& row : Rows(table, ";")) {
    Mem mem;
    EXPECT_EQ(Pieces(mem, row[0]), row[1]);
  }
}

TEST(Splitter, GrowsAsItsFieldsSay) {
  // Exactly 32 words double the count already.
  const std::tuple<std::string, int, int> rows[] = {{Times(31, "w "), 32, 256},
                                                    {Times(32, "w "), 64, 256},
                                                    {std::string(300, 'x'), 32, 300},
                                                    {Times(200, "w "), 256, 400}};
  for (const auto& [line, slotCount, slotLength] : rows) {
    Mem mem;
    Tokens(mem, line);
    Tokens(mem, "short");  // what has grown stays
    EXPECT_EQ(std::pair(mem.slotCount, mem.slotLength), std::pair(slotCount, slotLength)) << line;
  }
}

// The tail of a longer string shows after a shorter piece; a word's terminator hides it until a
// piece runs over that terminator.
TEST(Splitter, PiecesKeepTails) {
  Mem mem;
  EXPECT_EQ(Pieces(mem, "abcdef"), "1|abcdef");
  EXPECT_EQ(Pieces(mem, "xy"), "1|xycdef");
  EXPECT_EQ(Tokens(mem, "Z"), "1|Z");
  EXPECT_EQ(Pieces(mem, "1"), "1|1");
  EXPECT_EQ(Pieces(mem, "12"), "1|12cdef");
  // Growth moves strings only: what stood after a terminator is gone.
  for (const bool byLength : {false, true}) {
    Pieces(mem, "abcdef");
    Tokens(mem, "Z");
    byLength ? Pieces(mem, "1" + std::string(300, 'p')) : Tokens(mem, Times(32, "w "));
    EXPECT_EQ(Pieces(mem, "12"), "1|12");
  }
}

TEST(Splitter, KeepsItsOdditiesInsideItsMemory) {
  const std::string alternating = Times(350, "a1");
  const std::string longPiece(300, 'p');
  Mem mem;
  Tokens(mem, "stale");
  EXPECT_EQ(Pieces(mem, alternating.substr(0, 32)), "32|atale|1" + Times(15, "|a|1"));
  EXPECT_EQ(mem.slotCount, 32) << "as many as there are";
  EXPECT_EQ(Pieces(mem, alternating), "700" + Times(350, "|a|1"));
  EXPECT_EQ(mem.slotCount, 64) << "doubled once, though 700 pieces need more";
  EXPECT_EQ(Pieces(mem, "1" + longPiece), "2|1|" + longPiece);
  EXPECT_EQ(mem.slotCount, 600) << "the doubled length lands in the count, fewer than are held";
  EXPECT_EQ(mem.slotLength, 256) << "and never in the length";
  EXPECT_EQ(Pieces(mem, "x"), "1|x");
  EXPECT_EQ(Pieces(mem, alternating), "700" + Times(350, "|a|1"));
  EXPECT_EQ(mem.slotCount, 1200);
  EXPECT_EQ(Tokens(mem, Times(2000, "w ")), "2000" + Times(2000, "|w"));
  EXPECT_EQ(mem.slotCount, 2400);
  Mem fresh;
  EXPECT_EQ(Pieces(fresh, longPiece), "1|" + longPiece);
  EXPECT_EQ(Pieces(fresh, alternating.substr(0, 100)).substr(0, 3), "100");
  Mem other;
  Pieces(other, Times(350, "aaa111"));
  Tokens(other, Times(64, "w "));
  const std::string pieces = Pieces(other, alternating.substr(0, 100));
  EXPECT_EQ(pieces.substr(pieces.size() - 4), "|a|1") << "emptied beyond those reported";
}

TEST(Splitter, CutsItsOwnSlots) {
  Mem mem;
  Tokens(mem, "ab12[cd]");
  int count = 0;
  EXPECT_EQ(Joined(mem.GetArrayOfPieces(mem.slots[0], &count), 5), "5|ab12[cd]|12|[|cd|]");
  Pieces(mem, std::string(200, 'x') + "1" + std::string(400, 'y'));
  EXPECT_EQ(mem.GetArrayOfTokens(mem.slots[2], "q", &count)[0], std::string(400, 'y'));
}

}  // namespace
}  // namespace orsa::kesncd
