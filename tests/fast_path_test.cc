// The fast path against the plain one: whatever the lines are, both leave the same counts, span and
// stream position.
#include <filesystem>
#include <random>

#include "kesncd/vcd/change_scanner.h"
#include "tests/line_readers.h"
#include "tests/support.h"

namespace orsa::kesncd {
namespace {

const std::string kScale = Dump("SCALE~");
const std::string kScope = Dump("TOP~");
const std::string kVars = Dump(
    "$var wire 1 ! a[0] $end~$var wire 1 !! b[0] $end~$var wire 1 0! c[0] $end~"
    "$var wire 1 1234 d[0] $end~$var wire 1 long-code-1 e[0] $end~$var wire 1 \xC3\xA4 f[0] $end~");
const std::string kEnd = Dump("UP~END~");
const std::string kHeader = kScale + kScope + kVars + kEnd;

constexpr char kBytes[] = {'0', '1', 'b', 'x', '#', '$', '!', ' ', '\t', '\0', '\n'};

/// All strings of `length` of the bytes, in order.
template <class Take>
void EachString(std::size_t length, Take take) {
  std::string text(length, kBytes[0]);
  std::vector<std::size_t> digits(length, 0);
  for (;;) {
    take(text);
    std::size_t at = length;
    while (at > 0 && ++digits[at - 1] == std::size(kBytes)) digits[--at] = 0;
    if (at == 0) return;
    for (std::size_t i = at - 1; i < length; ++i) text[i] = kBytes[digits[i]];
  }
}

using FastPath = FreshState;

TEST_F(FastPath, TakesEveryShortLineAsThePlainPathDoes) {
  const std::string stamps = "#0\nb1 1234\n#123456\n";
  // Longer lines share a dump with all that differ in the last byte or two.
  for (const auto& [length, bundled] :
       {std::pair(1U, 1U), {2, 1}, {3, 1}, {4, 11}, {5, 121}, {6, 1331}}) {
    std::string bundle;
    std::size_t held = 0;
    int number = 0;
    EachString(length, [&](const std::string& line) {
      bundle += line;
      if (bundled > 1) bundle += held % 4 == 0 ? "\n#9\n" : held % 7 == 0 ? "\nb1 !\n" : "\n";
      if (++held % bundled != 0) return;
      if (++number % kShare == 0) {
        ExpectSamePaths(kReaders[number % 3], kHeader + bundle);
        for (const Reader reader : kReaders) {
          if (bundled > 1 && reader != kReaders[(number + 1) % 3]) continue;
          ExpectSamePaths(reader, kHeader + stamps + bundle + "\n#77\n");
        }
      }
      bundle.clear();
    });
  }
}

TEST_F(FastPath, LeavesTheOtherStatesAlone) {
  const std::string body = "#0\n1!\n#10\n0!\nb1 !!\n1?\n";
  const auto check = [&](const std::string& text) {
    const std::string line = text + "\n";
    for (const std::string& dump : {line + kHeader + body, "$timescale\n" + line + kHeader + body,
                                    kScale + kScope + line + kVars + kEnd + body,
                                    kHeader + body + "$timescale\n" + line + body,
                                    kHeader + body + "$timescale\n1ps\n" + line + kScope + kVars +
                                        Dump("$var wire 1 ? g[0] $end~END~") + body,
                                    kHeader + "$dumpoff\n" + line + body + "$dumpon\n" + body}) {
      for (const Reader reader : kReaders) ExpectSamePaths(reader, dump);
    }
  };
  for (const std::size_t length : {1U, 2U}) EachString(length, check);
}

TEST_F(FastPath, AgreesOnTheInputsOfItsFuzzTarget) {
  std::string body;
  for (const auto& input : std::filesystem::directory_iterator(KESNCD_TEST_CORPUS "/fast_path")) {
    const std::string dump = ReadAll(input.path().string());
    for (const Reader reader : kReaders) ExpectSamePaths(reader, dump);
    for (const std::string& line : Cut(dump, "\n")) {
      if (line[0] != '$') body += line + "\n";
    }
  }
  // Longer than several blocks, so that lines of all kinds are cut at their ends.
  for (int shift = 0; shift < 12; ++shift) {
    ExpectSamePaths(kReaders[shift % 3], kHeader + std::string(shift, 'x') + "\n" + Times(2, body));
  }
}

TEST_F(FastPath, CutsLongLinesWhereverABlockEnds) {
  constexpr std::size_t kLineBytes = 256;
  for (std::size_t first = 0; first < kLineBytes; ++first) {
    const std::string text = std::string(first, 'a') + "\n" + std::string(140000, 'b');
    const TextStream plain(text), blocks(text);
    LineSource expected(plain, kLineBytes), lines(blocks, kLineBytes);
    lines.ReadBlocks();
    const char* line = nullptr;
    do {
      line = lines.Next();
      ASSERT_STREQ(line, expected.Next()) << first;
    } while (line != nullptr);
  }
}

TEST_F(FastPath, MarksTheSameBytes) {
  std::mt19937 random(8);
  for (int i = 0; i < 10000; ++i) {
    char bytes[64];
    for (char& byte : bytes) byte = static_cast<char>(random() % (i % 2 == 0 ? 256 : 130));
    ASSERT_EQ(MarkOddBytes(bytes), MarkOddBytesPlainly(bytes));
  }
}

}  // namespace
}  // namespace orsa::kesncd
