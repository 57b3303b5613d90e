// Packed dumps that were cut, changed in one bit or followed by something else: what is read is
// what was packed, or the failure is said. A dump that is read wrongly gives figures that look
// right.
#include "cli/input/unpack.h"

#include <random>

#include "tests/support/sanitizer_share.h"
#include "tests/support/shell.h"
#include "tests/support/testing.h"
#include "tests/support/text_stream.h"
#include "text/failure.h"

namespace orsa::kesncd {
namespace {

struct Packing {
  const char* name;
  const char* command;
};
void PrintTo(const Packing& packing, std::ostream* out) {
  *out << packing.name;
}
constexpr Packing kPackings[] = {
    {"gzip", "gzip -nc"}, {"zstd", "zstd -qc --check"}, {"xz", "xz -c"}, {"bzip2", "bzip2 -c"}};

/// A dump that no packing makes so short that all of it is a header.
std::string SomeDump() {
  std::mt19937 random(1);
  std::string dump = "$timescale 1ns $end\n$var wire 8 ! d $end\n$enddefinitions $end\n";
  for (int time = 0; time < 60; ++time) {
    dump += "#" + std::to_string(time) + "\nb";
    for (int bit = 0; bit < 8; ++bit) dump += "01xz"[random() % 4];
    dump += " !\n";
  }
  return dump;
}

/// What is read of packed bytes that come in pieces, or why nothing is.
struct Unpacked {
  std::string text, packing, failure;
};
Unpacked UnpackAll(const std::string& packed, std::size_t piece) {
  Unpacked unpacked;
  try {
    const cli::UnpackedSource source =
        cli::Unpack(std::make_unique<TextSource>(packed, piece), "d");
    unpacked.packing = source.packing;
    TextSink all;
    CopyBytes(*source.bytes, all);
    unpacked.text = all.text;
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.kind(), FailureKind::Unusable);
    unpacked.failure = failure.what();
  }
  return unpacked;
}

class Unpacking : public testing::TestWithParam<Packing> {
 protected:
  Unpacking() : dump_(SomeDump()) {
    dir_.Write("d", dump_);
    packed_ = Shell(dir_.Path("."), std::string(GetParam().command) + " d").out;
    EXPECT_FALSE(packed_.empty());
  }
  std::string Packed(const std::string& text) const {
    dir_.Write("part", text);
    return Shell(dir_.Path("."), std::string(GetParam().command) + " part").out;
  }

  const TempDir dir_;
  const std::string dump_;
  std::string packed_;
};

TEST_P(Unpacking, GivesTheSameHoweverItComes) {
  for (const std::size_t piece : {std::size_t{1}, std::size_t{7}, SIZE_MAX}) {
    const Unpacked whole = UnpackAll(packed_, piece);
    EXPECT_EQ(whole.packing, GetParam().name);
    EXPECT_EQ(whole.text, dump_);
    EXPECT_EQ(whole.failure, "");
    // As tools that append to a packed file leave it, an empty piece among them.
    const Unpacked several =
        UnpackAll(Packed(dump_.substr(0, 100)) + Packed("") + Packed(dump_.substr(100)), piece);
    EXPECT_EQ(several.text, dump_);
    EXPECT_EQ(several.failure, "");
    EXPECT_EQ(UnpackAll(Packed(""), piece).text, "");
  }
}

TEST_P(Unpacking, SaysWhereverItIsCut) {
  for (std::size_t size = 1; size < packed_.size(); ++size) {
    for (const std::size_t piece : {std::size_t{5}, SIZE_MAX}) {
      const Unpacked cut = UnpackAll(packed_.substr(0, size), piece);
      if (cut.packing.empty() && cut.failure.empty()) {  // too short to be known for what it is
        EXPECT_LT(size, 10U);
        EXPECT_EQ(cut.text, packed_.substr(0, size));
        continue;
      }
      EXPECT_EQ(cut.failure, "d: it is cut off inside its packed bytes") << size;
    }
  }
}

TEST_P(Unpacking, NeverGivesAnotherDumpWhereABitIsWrong) {
  std::size_t refused = 0;
  std::size_t tried = 0;
  for (std::size_t at = 0; at < packed_.size(); at += kSanitizerShare) {
    ++tried;
    for (int bit = 0; bit < 8; ++bit) {
      std::string wrong = packed_;
      wrong[at] = static_cast<char>(wrong[at] ^ 1 << bit);
      const Unpacked read = UnpackAll(wrong, SIZE_MAX);
      if (read.packing.empty()) {
        EXPECT_LT(at, 10U);  // its first bytes no longer say that it is packed
        continue;
      }
      refused += read.failure.empty() ? 0 : 1;
      EXPECT_TRUE(!read.failure.empty() || read.text == dump_) << "byte " << at << " bit " << bit;
    }
  }
  EXPECT_GT(refused, tried * 7);
}

TEST_P(Unpacking, RefusesWhatFollowsThatIsNotPacked) {
  for (const std::string& after : {std::string("#60\n"), std::string(1, '\0'),
                                   std::string(3, '\xff'), packed_.substr(0, 20)}) {
    const Unpacked read = UnpackAll(packed_ + after, SIZE_MAX);
    const bool isPadding = after.front() == '\0';  // as tapes and some copies add it
    EXPECT_TRUE(!read.failure.empty() || (isPadding && read.text == dump_)) << after;
  }
}

INSTANTIATE_TEST_SUITE_P(Packings, Unpacking, testing::ValuesIn(kPackings),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace orsa::kesncd
