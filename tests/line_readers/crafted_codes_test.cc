// Dumps whose identifier codes are crafted to cost a reader dear: they end soon all the same.
#include <sys/resource.h>

#include <cstring>

#include "tests/support/line_readers.h"
#include "tests/support/testing.h"
#include "text/secret_hash.h"
#include "vcd/code_table.h"

namespace orsa::kesncd {
namespace {

using CraftedCodes = FreshState;

double ProcessorSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec) +
         1e-6 * static_cast<double>(usage.ru_utime.tv_usec);
}

constexpr double kSoon = 10;  // seconds, with sanitizers and all; crafted codes took 50

// The standard library's hash of texts (MurmurHash64A) multiplies, shifts and multiplies each eight
// bytes before it mixes them in. Both steps can be undone.
constexpr std::uint64_t kFactor = 0xC6A4A7935BD1E995U;

std::uint64_t Mixed(std::uint64_t block) {
  block *= kFactor;
  return (block ^ block >> 47) * kFactor;
}
std::uint64_t Unmixed(std::uint64_t block) {
  std::uint64_t inverse = kFactor;
  for (int i = 0; i < 6; ++i) inverse *= 2 - kFactor * inverse;
  block *= inverse;
  return (block ^ block >> 47) * inverse;
}
bool MayStandInACode(std::uint64_t block) {
  for (int shift = 0; shift < 64; shift += 8) {
    if (static_cast<unsigned char>(block >> shift) <= ' ') return false;
  }
  return true;
}

/// Two blocks of characters that codes may have, whose mixed values differ in the highest bit only.
/// That bit passes through the hash unchanged, so two such blocks in a row cancel it.
std::pair<std::string, std::string> Twins() {
  std::uint64_t random = 1;
  for (;;) {
    std::uint64_t block = 0;
    for (int shift = 0; shift < 64; shift += 8) {
      random = random * 6364136223846793005U + 1442695040888963407U;
      block |= (33 + (random >> 33) % 94) << shift;
    }
    const std::uint64_t twin = Unmixed(Mixed(block) ^ std::uint64_t{1} << 63);
    if (!MayStandInACode(twin)) continue;
    std::string texts[2] = {std::string(8, ' '), std::string(8, ' ')};
    std::memcpy(texts[0].data(), &block, 8);
    std::memcpy(texts[1].data(), &twin, 8);
    return {texts[0], texts[1]};
  }
}

TEST_F(CraftedCodes, ThatShareAHashCostNoMoreThanOthers) {
  const auto [block, twin] = Twins();
  std::string header = Dump("SCALE~TOP~");
  std::string body;
  std::size_t hash = 0;
  for (int i = 0; i < 32768; ++i) {
    std::string code;
    for (int bit = 0; bit < 15; ++bit) {
      code += (i >> bit & 1) == 0 ? block + block : twin + twin;
    }
    const std::size_t hashed = std::hash<std::string>{}(code);
    if (i == 0) hash = hashed;
    ASSERT_EQ(hashed, hash) << "else this test shows nothing";
    header += "$var wire 1 " + code + " s[" + std::to_string(i) + "] $end\n";
    body += "1" + code + "\n";
  }
  const std::string dump = header + Dump("UP~END~#0~") + body + "#1\n";
  const double start = ProcessorSeconds();
  for (const Reader reader : {Reader::Filtered, Reader::Hierarchical, Reader::Grammar}) {
    EXPECT_EQ(ReadDump(reader, TextStream(dump)).changes, 32768);
  }
  for (int i = 0; i < topMod.GetSignalSize(); ++i) {
    topMod.IncreaseChangeForSymbol(topMod.GetSignalSymb(i));
  }
  EXPECT_LT(ProcessorSeconds() - start, kSoon);
}

TEST_F(CraftedCodes, DeclaredAgainAndAgainGoToEachScopeFromThenOn) {
  constexpr int kTimes = 40000;
  std::string dump = "$scope module top $end\n";
  for (int i = 0; i < kTimes; ++i) {
    dump += "$scope module u" + std::to_string(i) + " $end\n";
    dump += "$var wire 1 ! s $end\n$upscope $end\n$enddefinitions $end\n1!\n";
  }
  KesNCD analyser;
  const double start = ProcessorSeconds();
  ASSERT_TRUE(analyser.ParseVcdFileHier(TextStream(dump), {}));
  EXPECT_LT(ProcessorSeconds() - start, kSoon);
  const std::vector<VmodHier*>& scopes = analyser.codeIndex["!"];
  ASSERT_EQ(scopes.size(), static_cast<std::size_t>(kTimes));
  for (const int i : {0, 1, 777, kTimes - 1}) {
    EXPECT_EQ(scopes[static_cast<std::size_t>(i)]->signals["!"].changes, kTimes - i) << i;
  }
}

TEST_F(CraftedCodes, CellsAreFoundHoweverLongTheCode) {
  for (const std::size_t longestDirect : {1U, 2U, 3U, 4U}) {
    CodeCells cells(longestDirect);
    std::vector<std::string> codes{""};
    for (std::size_t i = 0; codes.size() < 4000; ++i) {
      for (const char c : {'!', '~', '$', '\x7F', '\x80', '\xFF', '\x1'})
        codes.push_back(codes[i] + c);
    }
    for (std::uint32_t i = 0; i < codes.size(); ++i) {
      ASSERT_EQ(cells.Find(codes[i]), nullptr);
      const auto [cell, isNew] = cells.Add(codes[i]);
      ASSERT_TRUE(isNew);
      *cell = i;
      ASSERT_FALSE(cells.Add(codes[i]).isNew);
    }
    std::size_t found = 0;
    cells.ForEach([&found](std::uint32_t&) { ++found; });
    EXPECT_EQ(found, codes.size());
    for (std::uint32_t i = 0; i < codes.size(); ++i) {
      const std::string readAhead = codes[i] + "12345678";
      ASSERT_EQ(*cells.Find(codes[i]), i);
      ASSERT_EQ(cells.Look(readAhead.data(), codes[i].size()), cells.Find(codes[i]));
    }
  }
}

TEST_F(CraftedCodes, SettlingTouchesNoMemoryThatNoCodeUses) {
  CodeCells cells;
  *cells.Add("!!!").cell = 1;
  rusage before{}, after{};
  getrusage(RUSAGE_SELF, &before);
  cells.ForEach([](std::uint32_t& cell) { ++cell; });
  getrusage(RUSAGE_SELF, &after);
  EXPECT_EQ(*cells.Find("!!!"), 2U);
  EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 4096) << "kilobytes";
}

// The test vector of the hash's authors is for another number of rounds; here it must only tell
// texts and keys apart, also texts that differ in zeros at their end.
TEST_F(CraftedCodes, TheSecretHashTellsTextsAndKeysApart) {
  std::set<std::uint64_t> hashes;
  std::size_t made = 0;
  for (const SecretKey key : {SecretKey{1, 2}, SecretKey{1, 3}, SecretKey{2, 2}, ProcessKey()}) {
    for (std::size_t length = 0; length < 40; ++length) {
      for (const char c : {'\0', 'a'}) {
        if (length == 0 && c == 'a') continue;
        hashes.insert(KeyedHash(std::string(length, c), key));
        ++made;
      }
    }
  }
  EXPECT_EQ(hashes.size(), made);
}

}  // namespace
}  // namespace orsa::kesncd
