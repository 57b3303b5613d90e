// The fast path against the plain one: whatever the lines are, both leave the same counts, span and
// stream position.
#include <random>

#include "line_readers/change_scanner.h"
#include "tests/support/line_readers.h"
#include "tests/support/testing.h"

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

/// A body of `lines` lines, mostly plain, some odd.
std::string RandomBody(std::mt19937& random, int lines) {
  static const auto kCodes = Cut("!/!!/0!/1234/long-code-1/\xC3\xA4/?/", "/");
  static const auto kOdd =
      Cut("$dumpoff/$dumpon/$end/$dumpvars// /#/# 5/#-3/#1e3/#12 1!/b1/b 1!/b1  !/b1\t!/b1 ! x/"
          "1! 0!!/ 1!/1!\r/b1 !\r/1!\x7F/r1.5 !/$timescale/1 ns/$scope module t $end/"
          "$enddefinitions $end/$var wire 1 ! z[0] $end/Z!/B1 0!",
          "/");
  std::string body;
  for (int i = 0; i < lines; ++i) {
    const std::string& code = kCodes[random() % kCodes.size()];
    const std::size_t length = random() % (random() % 40 == 0 ? 5000 : 70);
    const std::string plain[] = {"0" + code,
                                 "1" + code,
                                 "x" + code,
                                 "r0.5 " + code,
                                 "#" + std::to_string(random() >> random() % 32),
                                 "b" + std::string(length, '1') + " " + code};
    const std::size_t kind = random() % 12;
    body += kind == 11 ? kOdd[random() % kOdd.size()] : plain[kind < 6 ? kind : kind % 2];
    if (random() % 500 == 0) body.push_back('\0');
    body += '\n';
  }
  if (!body.empty() && random() % 4 == 0) body.pop_back();
  return body;
}

TEST_F(FastPath, AgreesOnGeneratedDumps) {
  std::mt19937 random(7);
  for (int i = 0; i < 100000 / kShare; ++i) {
    ExpectSamePaths(kReaders[i % 3], kHeader + RandomBody(random, static_cast<int>(random() % 30)));
  }
  // A long code that is gone when the slots double does not show after a long stamp.
  const std::string gone = std::string(1000, ' ') + "x\nb1 " + std::string(500, '2') + "\n";
  ExpectSamePaths(Reader::Filtered,
                  kHeader + "#0\n" + gone + Times(40, "x ") + "\n#" + std::string(290, '1'));
  // Longer than several blocks, so that lines are cut at their ends.
  for (int i = 0; i < 30; ++i)
    ExpectSamePaths(kReaders[i % 3], kHeader + RandomBody(random, 40000));
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
