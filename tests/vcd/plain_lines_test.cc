// The fast scan over lines and the table of identifier codes, against the plainest way to do the
// same: on any bytes, with and without a look ahead.
#include "vcd/plain_lines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "vcd/code_table.h"

namespace orsa::kesncd {
namespace {

/// Bytes of several tempers: dump lines, any byte at all, runs of one byte, short lines.
std::string RandomBytes(std::mt19937& random) {
  static constexpr std::string_view kRuns = "\n # \t\r0bx\x80";
  std::string bytes;
  const std::size_t length = random() % 700;
  while (bytes.size() < length) {
    switch (random() % 8) {
      case 0:
        bytes += static_cast<char>(random());
        break;
      case 1:
        bytes.append(random() % 150, kRuns[random() % kRuns.size()]);
        break;
      case 2:
        bytes += "b" + std::string(random() % 90, '1') + " ab\n";
        break;
      default:
        bytes += std::string(1, "01xz#"[random() % 5]) + "!abcd" + std::string(random() % 4, 'q');
        bytes.resize(bytes.size() - random() % 5);
        bytes += '\n';
    }
  }
  return bytes;
}

/// A text with bytes that may be read after its end, the worst ones there are.
struct Padded {
  explicit Padded(const std::string& text) : bytes(text + std::string(kScanPadding, '\n')) {}
  const char* begin() const { return bytes.data(); }
  const char* end() const { return bytes.data() + bytes.size() - kScanPadding; }
  const std::string bytes;
};

struct Line {
  std::string text;
  std::ptrdiff_t blank;  // its place, or -1
  bool isScalar;
  bool operator==(const Line&) const = default;
};

/// Notes what it gets, and refuses lines with a Q and one in some.
class Notes {
 public:
  explicit Notes(std::size_t most) : most_(most) {}
  bool Scalar(const char* line, const char* newline) { return Take(line, nullptr, newline, true); }
  bool Other(const char* line, const char* blank, const char* newline) {
    return Take(line, blank, newline, false);
  }
  std::vector<Line> lines;

 private:
  bool Take(const char* line, const char* blank, const char* newline, bool isScalar) {
    if (lines.size() == most_) return false;
    lines.push_back({{line, newline}, blank == nullptr ? -1 : blank - line, isScalar});
    return true;
  }
  const std::size_t most_;
};

/// The same, looking so many bytes ahead of what it takes.
class AheadNotes : public Notes {
 public:
  AheadNotes(std::size_t most, std::ptrdiff_t ahead) : Notes(most), ahead_(ahead) {}
  const char* LookAhead(const char* line, const char* chunk, const char* end) {
    const char* const stop = std::min(end, chunk + ahead_);
    EXPECT_TRUE(line <= chunk || line <= end);
    std::array<CodeInLine, kMostCodesFound> codes;
    for (; chunk < stop; chunk += 64) {
      const CodeInLine* const last = FindCodes(line, chunk, stop, codes.data());
      EXPECT_LE(last - codes.data(), static_cast<std::ptrdiff_t>(kMostCodesFound));
    }
    ++looks;
    return stop;
  }
  int looks = 0;

 private:
  const std::ptrdiff_t ahead_;
};

/// What a scan is to hand on, line by line, and where it is to stop.
std::size_t PlainLines(const std::string& text, std::size_t tooLong, Notes& taker) {
  std::size_t at = 0;
  for (std::size_t end = 0; (end = text.find('\n', at)) != std::string::npos; at = end + 1) {
    const std::string_view line = std::string_view(text).substr(at, end - at);
    const auto isOdd = [](char c) { return c < ' ' || static_cast<unsigned char>(c) >= 0x80; };
    const std::size_t blank = line.find(' ');
    if (std::any_of(line.begin(), line.end(), isOdd) || blank != line.rfind(' ')) break;
    // Whole chunks of 64 bytes are looked at, so a line that may be too long need not be.
    if (line.size() >= tooLong) break;
    const char* const start = text.data() + at;
    const bool hasBlank = blank != std::string_view::npos;
    const bool isScalar = !hasBlank && (line.starts_with('0') || line.starts_with('1'));
    const char* const newline = start + line.size();
    if (!(isScalar ? taker.Scalar(start, newline)
                   : taker.Other(start, hasBlank ? start + blank : nullptr, newline)))
      break;
  }
  return at;
}

TEST(PlainLines, HandOnWhatAPlainReaderFindsWithAndWithoutALookAhead) {
  std::mt19937 random(1);
  std::size_t taken = 0;
  for (int trial = 0; trial < 20000; ++trial) {
    const Padded bytes(RandomBytes(random));
    const std::string text(bytes.begin(), bytes.end());
    const std::size_t most = trial % 3 == 0 ? random() % 10 : SIZE_MAX;
    const std::size_t tooLong = trial % 5 == 0 ? 100 + random() % 300 : SIZE_MAX;
    Notes expected(most);
    const std::size_t stop = PlainLines(text, tooLong, expected);
    Notes notes(most);
    const char* const end = ScanPlainLines(bytes.begin(), bytes.end(), tooLong, notes);
    const auto ended = static_cast<std::size_t>(end - bytes.begin());
    if (tooLong == SIZE_MAX) {
      ASSERT_EQ(notes.lines, expected.lines) << trial;
      ASSERT_EQ(ended, stop) << trial;
    } else {  // it may stop earlier, but never at a line that is short with its whole chunk
      ASSERT_LE(notes.lines.size(), expected.lines.size());
      ASSERT_TRUE(std::equal(notes.lines.begin(), notes.lines.end(), expected.lines.begin()));
      const std::size_t length = text.find('\n', ended) - ended;
      ASSERT_TRUE(ended == stop || length + 64 >= tooLong) << trial;
    }
    AheadNotes ahead(most, 64 << trial % 4);
    ASSERT_EQ(ScanPlainLines(bytes.begin(), bytes.end(), tooLong, ahead), end) << trial;
    ASSERT_EQ(ahead.lines, notes.lines) << trial;
    ASSERT_EQ(ahead.looks > 0, !text.empty());
    taken += notes.lines.size();
  }
  EXPECT_GT(taken, 100000U);
}

// In a chunk, and over its edges, of all that a step of looking ahead writes.
TEST(PlainLines, MoreCodesThanThereIsRoomForAreNeverFound) {
  std::mt19937 random(2);
  constexpr CodeInLine kUntouched{nullptr, 77};
  std::size_t mostFound = 0;
  for (int trial = 0; trial < 20000; ++trial) {
    std::string text = trial % 2 == 0 ? RandomBytes(random) : "";
    while (text.size() < 300) text += "0!\n";
    text.erase(0, random() % 3);
    const Padded bytes(text);
    const char* line = bytes.begin();
    for (const char* chunk = bytes.begin(); chunk < bytes.end(); chunk += 64) {
      std::array<CodeInLine, 80> codes;
      codes.fill(kUntouched);
      const CodeInLine* const last = FindCodes(line, chunk, bytes.end(), codes.data());
      const auto found = static_cast<std::size_t>(last - codes.data());
      mostFound = std::max(mostFound, found);
      ASSERT_LE(found, kMostCodesFound) << trial;
      for (std::size_t i = 0; i < codes.size(); ++i) {
        const bool isWritten = codes[i].length != kUntouched.length || codes[i].code != nullptr;
        ASSERT_FALSE(i >= kMostCodesFound && isWritten) << trial << " " << i;
        if (i >= found) continue;
        ASSERT_GE(codes[i].code, bytes.begin());
        ASSERT_LE(codes[i].code + codes[i].length, bytes.end());
      }
    }
  }
  EXPECT_EQ(mostFound, kMostCodesFound);
}

TEST(PlainLines, FindTheCodesOfPlainChanges) {
  struct Row {
    std::string text;
    std::vector<std::string> codes;
  };
  const std::string wide = "b" + std::string(100, '1');
  for (const Row& row : {Row{"0!\n1ab\nx$\nb01 cd\nr1.5 e\n", {"!", "ab", "$", "cd", "e"}},
                         {"#120\n1!\n\n\n0\"\n", {"!", "\""}},
                         {"1a\n" + wide + " w\n0b\n", {"a", "w", "b"}},
                         {"b1\tt\n1unended", {"t"}},
                         {"", {}}}) {
    const Padded bytes(row.text);
    std::vector<std::string> found;
    const char* line = bytes.begin();
    for (const char* chunk = bytes.begin(); chunk < bytes.end(); chunk += 64) {
      std::array<CodeInLine, kMostCodesFound> codes;
      const CodeInLine* const last = FindCodes(line, chunk, bytes.end(), codes.data());
      for (const CodeInLine* at = codes.data(); at != last; ++at)
        found.emplace_back(at->code, at->length);
    }
    EXPECT_EQ(found, row.codes) << row.text;
  }
}

TEST(PlainLines, OddBytesAreMarkedAlikeInBothWays) {
  std::array<char, 64> bytes;
  for (int byte = 0; byte < 256; ++byte) {
    for (std::size_t at = 0; at < bytes.size(); ++at) {
      bytes.fill('!');
      bytes[at] = static_cast<char>(byte);
      const std::uint64_t mark = byte > ' ' && byte < 128 ? 0 : std::uint64_t{1} << at;
      ASSERT_EQ(MarkOddBytes(bytes.data()), mark) << byte << " " << at;
      ASSERT_EQ(MarkOddBytesPlainly(bytes.data()), mark) << byte << " " << at;
    }
  }
}

// Codes of all lengths, of which many begin alike or are others' beginnings, looked up where a dump
// has them: among other bytes.
TEST(CodeTable, NumbersCodesAsAMapDoes) {
  std::mt19937 random(3);
  for (const std::string alphabet : {"!~", "!\"#$%&'()*+", "a\x80\xff\x7f"}) {
    CodeTable table;
    std::map<std::string, std::uint32_t> expected;
    for (int step = 0; step < 20000; ++step) {
      std::string code;
      for (std::size_t length = 1 + random() % 12; length > 0; --length)
        code += alphabet[random() % alphabet.size()];
      const std::string inDump = code + "\n1!zzzzzzzz";
      const std::string_view found(inDump.data(), code.size());
      table.Fetch(inDump.data(), code.size());
      const auto known = expected.find(code);
      ASSERT_EQ(table.Find(found), known == expected.end() ? CodeTable::kNone : known->second);
      if (step % 2 == 0) continue;
      const auto number = static_cast<std::uint32_t>(expected.size());
      ASSERT_EQ(table.Add(found), expected.try_emplace(code, number).first->second);
      ASSERT_EQ(table.size(), expected.size());
    }
    for (const auto& [code, number] : expected) ASSERT_EQ(table.Find(code + "\0       "), number);
  }
}

/// The code that simulators give after so many others.
std::string CodeInOrder(std::uint32_t number) {
  std::string code;
  for (std::int64_t left = number; left >= 0; left = left / 94 - 1) {
    code += static_cast<char>('!' + left % 94);
  }
  return code;
}

// Numbers that are computed are those that a table would give, also of codes that were not added,
// and after the first code that breaks the order.
TEST(CodeTable, NumbersCodesInOrderAsAnyOthers) {
  const std::uint32_t fours = 94 + 94 * 94 + 94 * 94 * 94;
  for (const std::uint32_t first : {0U, 1U, 93U, 94 * 95 - 2U, fours - 3, 2 * fours}) {
    CodeTable table(100);
    std::map<std::string, std::uint32_t> expected;
    const auto check = [&](const std::string& code) {
      const std::string inDump = code + "\n1!zzzzzzzz";
      const auto known = expected.find(code);
      ASSERT_EQ(table.Find({inDump.data(), code.size()}),
                known == expected.end() ? CodeTable::kNone : known->second)
          << code;
    };
    const auto add = [&](const std::string& code) {
      const auto number = static_cast<std::uint32_t>(expected.size());
      ASSERT_EQ(table.Add(code), expected.try_emplace(code, number).first->second);
    };
    const auto checkAll = [&] {
      for (std::uint32_t i = first > 5 ? first - 5 : 0; i < first + 400; ++i) {
        const std::string code = CodeInOrder(i);
        check(code);
        check(code + "!");
        // Characters that simulators do not give must not pass for others.
        for (const char odd : {'\x1', '\x7F', '\x80', '\xFF'}) {
          for (std::size_t at = 0; at < code.size(); ++at)
            check(std::string(code).replace(at, 1, 1, odd));
        }
      }
      check("");
      check("!!!!!");
    };
    checkAll();
    for (std::uint32_t i = 0; i < 200; ++i) add(CodeInOrder(first + i));
    add(CodeInOrder(first + 7));
    checkAll();
    add(CodeInOrder(first + 300));
    checkAll();
    add("\x7F");
    add(CodeInOrder(first + 200));
    checkAll();
  }
}

}  // namespace
}  // namespace orsa::kesncd
