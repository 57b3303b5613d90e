// Dumps read in parts: the result is that of one reading, wherever the cuts fall.
#include <cstdlib>
#include <random>

#include "free_format/body_stretch.h"
#include "tests/support/case_files.h"
#include "tests/support/reading_rules.h"
#include "tests/support/require.h"
#include "tests/support/sanitizer_share.h"
#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

void ExpectSame(const std::string& text, const std::string& what) {
  for (const char* const window : support::kWindows) {
    EXPECT_NO_THROW(support::CheckReadingInParts(support::Input(text + window))) << what << window;
  }
}

TEST(PartedReading, SaysOfCasesWhatOneReadingSays) {
  for (const char* const page : {"cuts.txt", "free_format", "line_readers", "activity.txt"}) {
    for (const Case& of : CasesIn(std::string("tests/cases/") + page)) ExpectSame(of.dump, of.name);
  }
}

TEST(PartedReading, SaysOfRealDumpsWhatOneReadingSays) {
  const char* const folder = std::getenv("KESNCD_REAL_DUMPS");
  if (folder == nullptr) GTEST_SKIP() << "KESNCD_REAL_DUMPS names no folder of dumps";
  for (const std::string& dump : DumpsIn(folder)) {
    const std::string text = ReadAll(dump);
    // Long ones are read some hundred times; under a sanitizer other tests read them once.
    if (text.size() < 1000000 / kSanitizerShare) ExpectSame(text, dump);
  }
}

// Bodies of all that makes a cut wrong, in any order.
TEST(PartedReading, SaysOfRandomBodiesWhatOneReadingSays) {
  static constexpr const char* kPieces[] = {
      "1!\n",
      "0!\n",
      "x!\n",
      "b10x1 \"\n",
      "bz \"\n",
      "b1\n#%\n\"\n",
      "b11\n",
      "r0.5 #\n",
      "r1\n",
      "1\n#%\n!\n",
      "$dumpoff\n",
      "$dumpon\n",
      "$dumpall\n",
      "$end\n",
      "$dumpoff\nx!\nbx \"\n$end\n",
      "$comment\n",
      "$end ",
      "$comment a\n#%\n1!\n$end\n",
      "$section\n",
      "$attrend $end ",
      "stray ",
      "1! 0!\n",
      "s#% !\n",
      "1nobody\n",
      "#%\n",
      "#%\n",
      "#%\n",
      "#%\n",
      "#%\n",
      "#%\r\n",
      "#% 1!\n",
      " #%\n",
      "#%.5\n",
      "#7\n",
      "#\n",
      "#x\n",
      "p1 6 0 !\n",
      "$var wire 1 & late $end\n",
  };
  std::mt19937 random(1);
  const auto below = [&](std::size_t limit) { return random() % limit; };
  for (int body = 0; body < 300 / kSanitizerShare; ++body) {
    std::string text =
        "$timescale 1 ps $end $scope module m $end $var wire 1 ! a $end $var wire 4 \" b $end\n"
        "$var real 64 # r $end $upscope $end $enddefinitions $end\n";
    std::size_t now = 0;
    const std::size_t odd = 1 + below(20);
    for (std::size_t i = below(400); i > 0; --i) {
      // Mostly plain lines, or nothing but the first pieces would count.
      std::string piece = below(odd) == 0 ? kPieces[below(std::size(kPieces))] : kPieces[below(4)];
      if (below(4) == 0) piece = "#%\n";
      const std::size_t at = piece.find('%');
      if (at != std::string::npos) piece.replace(at, 1, std::to_string(now += below(4)));
      text += piece;
    }
    if (below(4) == 0) text.resize(text.size() - below(20));
    const std::string window = below(2) == 0 ? ""
                                             : "\xFF" + std::to_string(below(99)) + "ps\n" +
                                                   std::to_string(99 + below(99)) + "ps\n";
    ASSERT_NO_THROW(support::CheckReadingInParts(support::Input(text + window))) << text << window;
  }
}

class Letters : public ByteFile {
 public:
  explicit Letters(std::string text) : text_(std::move(text)) {}
  std::uint64_t size() const override { return text_.size(); }
  std::size_t ReadAt(std::uint64_t offset, char* to, std::size_t most) override {
    return offset < text_.size() ? text_.copy(to, most, offset) : 0;
  }

 private:
  const std::string text_;
};

// The first stamp that has a line to itself begins a part; parts leave nothing out.
TEST(BodyCuts, StandBeforeStampLines) {
  struct Row {
    std::string body;
    std::uint32_t parts;
    std::vector<std::uint64_t> cuts;
  };
  const std::string filler(70000, 'x');
  const Row rows[] = {
      {"\n#1\n1!\n#2\n1!\n#3\n", 3, {0, 7, 13}},
      {"\n#1\n1!\n#2\n1!\n#3", 3, {0, 7}},  // the last stamp may be cut off
      {"\n#1\r\n#2\r\n", 2, {0, 5}},
      {"\n1!\n #1\n#2x\n#3.5\n#\n#12345678901234567890\n##4\n", 5, {0}},
      {"\n" + filler + "\n#5\n", 2, {0, filler.size() + 2}},  // after the block that is searched
      {"\n#1\n" + filler + filler + filler + "\n#5\n", 16, {0, 3 * filler.size() + 5}},
      {"", 4, {0}},
  };
  for (const Row& row : rows) {
    Letters file(row.body);
    const BodyCuts cuts(file, 0, row.parts);
    std::vector<std::uint64_t> begins;
    std::uint64_t end = 0;
    for (std::uint32_t part = 0; part < row.parts; ++part) {
      const StretchRange stretch = cuts.Stretch(part);
      if (stretch.IsEmpty()) continue;
      EXPECT_EQ(stretch.begin, end) << "gap";
      begins.push_back(stretch.begin);
      end = stretch.end;
    }
    EXPECT_EQ(end, StretchSource::kFileEnd);
    EXPECT_EQ(begins, row.cuts) << row.body.substr(0, 100);
    EXPECT_EQ(cuts.Stretches().size(), row.cuts.size());
  }
}

}  // namespace
}  // namespace orsa::kesncd
