// Lines of a stream as fgets cuts them, from the stream's buffer and from blocks of any size, and
// the place where a reader that stops leaves the stream.
#include "text/line_source.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace orsa::kesncd {
namespace {

struct Closed {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using Stream = std::unique_ptr<std::FILE, Closed>;

Stream StreamOf(const std::string& text) {
  Stream stream(std::tmpfile());
  std::fwrite(text.data(), 1, text.size(), stream.get());
  std::rewind(stream.get());
  return stream;
}

/// Lines, newlines, bytes without any meaning and long runs without a newline.
std::string RandomText(std::mt19937& random) {
  std::string text;
  for (std::size_t pieces = random() % 20; pieces > 0; --pieces) {
    switch (random() % 5) {
      case 0:
        text += '\n';
        break;
      case 1:
        text += std::string(random() % 90, 'x');
        break;
      case 2:
        text += std::string("a\0b\r", 4).substr(random() % 4, 1 + random() % 3);
        break;
      default:
        text += "1!" + std::string(random() % 6, 'q') + "\n";
    }
  }
  return text;
}

TEST(LineSource, CutsLinesAsFgetsDoesAndLeavesTheStreamThere) {
  std::mt19937 random(1);
  for (int trial = 0; trial < 3000; ++trial) {
    const std::string text = RandomText(random);
    const std::size_t buffer = 2 + random() % 40;
    const std::size_t block = buffer + random() % 60;
    const std::size_t inBlocksFrom = random() % 5;
    const std::size_t stop = random() % 3 == 0 ? random() % 8 : SIZE_MAX;
    const Stream plain = StreamOf(text);
    const Stream stream = StreamOf(text);
    std::vector<char> line(buffer);
    {
      LineSource source(stream.get(), buffer, block);
      for (std::size_t i = 0; i < stop; ++i) {
        if (i == inBlocksFrom) source.ReadBlocks();
        const char* const expected = std::fgets(line.data(), static_cast<int>(buffer), plain.get());
        const char* const next = source.Next();
        ASSERT_EQ(next == nullptr, expected == nullptr) << trial << " line " << i;
        if (next == nullptr) break;
        ASSERT_STREQ(next, expected) << trial << " line " << i;
      }
      EXPECT_FALSE(source.Failed());
    }
    ASSERT_EQ(std::ftell(stream.get()), std::ftell(plain.get())) << trial;
  }
}

TEST(LineSource, TakesWhatWasSkippedForRead) {
  const std::string text = "one\ntwo\nthree\nfour\n";
  const Stream stream = StreamOf(text);
  {
    LineSource source(stream.get(), 10, 12);
    EXPECT_EQ(source.Block(), "");
    source.ReadBlocks();
    EXPECT_STREQ(source.Next(), "one\n");
    EXPECT_EQ(source.Block(), "two\nthre");
    source.Skip(4);
    EXPECT_STREQ(source.Next(), "three\n");
  }
  EXPECT_EQ(std::ftell(stream.get()), 14);
}

TEST(LineSource, OfNoStreamIsEmpty) {
  LineSource source(nullptr, 10);
  EXPECT_EQ(source.Next(), nullptr);
  EXPECT_FALSE(source.Failed());
}

}  // namespace
}  // namespace orsa::kesncd
