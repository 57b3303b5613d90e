#include <memory>
#include <string>
#include <vector>

#include "tests/support.h"

namespace orsa::kesncd {
namespace {

using Words = std::vector<std::string>;

Words Tokens(Mem& mem, const std::string& line, const char* delims = " \n\r\t") {
  int count = -1;
  char** slots = mem.GetArrayOfTokens(line.c_str(), delims, &count);
  return {slots, slots + count};
}

Words Pieces(Mem& mem, const std::string& text) {
  int count = -1;
  char** slots = mem.GetArrayOfPieces(text.c_str(), &count);
  return {slots, slots + count};
}

std::string ManyWords(int count) {
  std::string line;
  for (int i = 0; i < count; ++i) line += "w ";
  return line;
}

TEST(Splitter, CutsLinesIntoWords) {
  const struct {
    const char* line;
    const char* delims;
    Words words;
  } rows[] = {
      {"", " \n", {}},
      {" \t\r\n", " \n\r\t", {}},
      {"$var wire 1 ! clk $end\n", " \n\r\t", {"$var", "wire", "1", "!", "clk", "$end"}},
      {"\ta  b\t\tc \r\n", " \n\r\t", {"a", "b", "c"}},
      {"a|b c\n", "|", {"a", "b c"}},  // a newline that ends a word goes, delimiter or not
      {"a|\n", "|", {"a", ""}},
      {"||x", "|", {"x"}},
  };
  for (const auto& row : rows) {
    Mem mem;
    EXPECT_EQ(Tokens(mem, row.line, row.delims), row.words) << row.line;
  }
}

TEST(Splitter, GrowsAsItsFieldsSay) {
  const struct {
    const char* why;
    std::string line;
    int words, slotCount, slotLength;
  } rows[] = {
      {"a new splitter", "a", 1, 32, 256},
      {"31 words", ManyWords(31), 31, 32, 256},
      {"exactly 32 words double already", ManyWords(32), 32, 64, 256},
      {"a line of 300", std::string(300, 'x'), 1, 32, 300},
      {"both", ManyWords(200), 200, 256, 400},
  };
  for (const auto& row : rows) {
    Mem mem;
    EXPECT_EQ(Tokens(mem, row.line).size(), static_cast<std::size_t>(row.words)) << row.why;
    EXPECT_EQ(mem.slotCount, row.slotCount) << row.why;
    EXPECT_EQ(mem.slotLength, row.slotLength) << row.why;
    Tokens(mem, "short");
    EXPECT_EQ(mem.slotLength, row.slotLength) << row.why << ": stays";
  }
}

TEST(Splitter, CutsTextIntoPieces) {
  const struct {
    const char* text;
    Words pieces;
  } rows[] = {
      {"", {}},
      {"data_out[12]", {"data", "_", "out", "[", "12", "]"}},
      {"#1200", {"#", "1200"}},
      {"1.5ns", {"1", ".", "5", "ns"}},
      {"a--\xC3\xA4--9", {"a", "--\xC3\xA4--", "9"}},
  };
  for (const auto& row : rows) {
    Mem mem;
    EXPECT_EQ(Pieces(mem, row.text), row.pieces) << row.text;
  }
}

// The tail of a longer string shows behind a shorter piece; a word's terminator hides it until a
// piece runs over that terminator.
TEST(Splitter, PiecesKeepTails) {
  Mem mem;
  EXPECT_EQ(Pieces(mem, "abcdef"), Words({"abcdef"}));
  EXPECT_EQ(Pieces(mem, "xy"), Words({"xycdef"}));
  EXPECT_EQ(Tokens(mem, "Z"), Words({"Z"}));
  EXPECT_EQ(Pieces(mem, "1"), Words({"1"}));
  EXPECT_EQ(Pieces(mem, "12"), Words({"12cdef"}));
  // Growth moves strings only: what stood behind a terminator is gone.
  Tokens(mem, "Z");
  Tokens(mem, ManyWords(32));
  EXPECT_EQ(Pieces(mem, "12"), Words({"12"}));
}

TEST(Splitter, KeepsItsOdditiesInsideItsMemory) {
  std::string alternating;
  for (int i = 0; i < 350; ++i) alternating += "a1";
  const std::string longPiece(300, 'p');
  Mem mem;
  Tokens(mem, "stale");
  EXPECT_EQ(Pieces(mem, alternating.substr(0, 32)).size(), 32U);
  EXPECT_EQ(mem.slotCount, 32) << "as many as there are";
  EXPECT_EQ(Pieces(mem, alternating).size(), 700U);
  EXPECT_EQ(mem.slotCount, 64) << "doubled once, though 700 pieces need more";
  EXPECT_EQ(Pieces(mem, "1" + longPiece), Words({"1", longPiece}));
  EXPECT_EQ(mem.slotCount, 600) << "the doubled length lands in the count, fewer than are held";
  EXPECT_EQ(mem.slotLength, 256) << "and never in the length";
  EXPECT_EQ(Pieces(mem, "x"), Words({"x"}));
  EXPECT_EQ(Pieces(mem, alternating).size(), 700U);
  EXPECT_EQ(mem.slotCount, 1200);
  EXPECT_EQ(Pieces(mem, longPiece), Words({longPiece}));
  EXPECT_EQ(Tokens(mem, ManyWords(2000)).size(), 2000U);
  EXPECT_EQ(mem.slotCount, 2400);
  std::string longer;
  for (int i = 0; i < 350; ++i) longer += "aaa111";
  Mem other;
  Pieces(other, longer);
  Tokens(other, ManyWords(64));
  EXPECT_EQ(Pieces(other, alternating.substr(0, 100))[99], "1") << "emptied beyond those reported";
}

TEST(Splitter, CutsItsOwnSlots) {
  Mem mem;
  int count = 0;
  char** slots = mem.GetArrayOfTokens("ab12[cd]", " ", &count);
  slots = mem.GetArrayOfPieces(slots[0], &count);
  ASSERT_EQ(count, 5);
  EXPECT_STREQ(slots[1], "12");
  EXPECT_STREQ(slots[4], "]");
  const std::string line = std::string(200, 'x') + "1" + std::string(400, 'y');
  mem.GetArrayOfPieces(line.c_str(), &count);
  slots = mem.GetArrayOfTokens(mem.slots[2], "q", &count);
  EXPECT_EQ(std::string(slots[0]), std::string(400, 'y'));
}

}  // namespace
}  // namespace orsa::kesncd
