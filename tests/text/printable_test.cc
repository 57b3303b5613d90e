// What of a dump's names may reach a terminal, against a plain account of UTF-8: every character
// there is, bytes that are none, and texts that arrive in pieces.
#include "text/printable.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/support/text_stream.h"

namespace orsa::kesncd {
namespace {

/// A character as UTF-8 writes it, also where it may not: in so many bytes.
std::string Utf8(char32_t code, int bytes) {
  if (bytes == 1) return std::string(1, static_cast<char>(code));
  std::string text;
  for (int i = 1; i < bytes; ++i, code >>= 6) {
    text.insert(text.begin(), static_cast<char>(0x80 | (code & 0x3f)));
  }
  text.insert(text.begin(), static_cast<char>((0xf00 >> bytes & 0xff) | code));
  return text;
}

int BytesOf(char32_t code) {
  return code < 0x80 ? 1 : code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
}

TEST(Printable, KnowsEveryCharacter) {
  for (char32_t code = 0; code < 0x110000; ++code) {
    const int bytes = BytesOf(code);
    const std::string text = Utf8(code, bytes);
    const bool isSurrogate = code >= 0xd800 && code <= 0xdfff;
    const Utf8Character found = FirstCharacter(text + "\x80");
    ASSERT_EQ(found.isValid, !isSurrogate) << static_cast<unsigned>(code);
    ASSERT_EQ(found.bytes, isSurrogate ? 1U : text.size()) << static_cast<unsigned>(code);
    if (found.isValid) {
      ASSERT_EQ(found.code, code);
      ASSERT_EQ(Printable(text), IsSteering(code) ? "?" : text) << static_cast<unsigned>(code);
    }
    for (std::size_t cut = 1; cut < text.size(); ++cut) {
      ASSERT_FALSE(FirstCharacter(text.substr(0, cut)).isValid);
      ASSERT_FALSE(FirstCharacter(text.substr(0, cut) + "a").isValid);
    }
    if (bytes < 4) {
      ASSERT_FALSE(FirstCharacter(Utf8(code, bytes + 1)).isValid) << "longer than needed";
    }
  }
  for (int byte = 0x80; byte < 0x100; ++byte) {
    ASSERT_FALSE(FirstCharacter(std::string(1, static_cast<char>(byte))).isValid);
  }
  EXPECT_FALSE(FirstCharacter(Utf8(0x110000, 4)).isValid);
}

TEST(Printable, IsShortenedByCharacters) {
  struct Row {
    std::string text;
    std::size_t most;
    std::string shown;
  };
  const std::string umlauts = "\xc3\xa4\xc3\xb6\xc3\xbc\xc3\x9f\xc3\xa4\xc3\xb6";
  const Row rows[] = {
      {"abcdef", 6, "abcdef"},     {"abcdefg", 6, "a...fg"},
      {"abcdefgh", 4, "...h"},     {"abcdefgh", 7, "ab...gh"},
      {umlauts, 6, umlauts},       {umlauts, 5, "\xc3\xa4...\xc3\xb6"},
      {umlauts, 4, "...\xc3\xb6"}, {"", 4, ""},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Shortened(row.text, row.most), row.shown);
    EXPECT_LE(CharacterCount(Shortened(row.text, row.most)), row.most);
  }
}

TEST(Printable, KeepsTheEndsOfLinesWhereThereAreSeveral) {
  EXPECT_EQ(Printable("a\r\nb\tc\x9b"), "a??b?c?");
  EXPECT_EQ(PrintableLines("a\r\nb\tc\x9b\n"), "a?\nb?c?\n");
}

/// Bytes as dumps and hostile names mix them.
std::string RandomText(std::mt19937& random) {
  static const std::string kPieces[] = {"a",
                                        "top/u",
                                        "\r\n",
                                        "\r",
                                        "\n",
                                        "\t",
                                        "\x1b",
                                        "\xc3\xbc",
                                        "\xc3",
                                        "\x80",
                                        "\xe2\x82\xac",
                                        "\xe2\x82",
                                        "\xf0\x9f\x98\x80",
                                        "\xf0\x9f",
                                        "\xff"};
  std::string text;
  for (std::size_t pieces = random() % 12; pieces > 0; --pieces) {
    text += kPieces[random() % std::size(kPieces)];
  }
  return text;
}

TEST(TerminalSink, ShowsTheSameHoweverATextIsCut) {
  std::mt19937 random(1);
  for (int trial = 0; trial < 5000; ++trial) {
    const std::string text = RandomText(random);
    TextSink whole;
    TerminalSink one(whole);
    one.Write(text);
    one.Finish();
    TextSink pieces;
    TerminalSink many(pieces);
    for (std::size_t at = 0, size = 0; at < text.size(); at += size) {
      size = 1 + random() % 3;
      many.Write(std::string_view(text).substr(at, size));
    }
    many.Finish();
    ASSERT_EQ(pieces.text, whole.text) << trial;
    // What is shown is plain lines and tabs; a return stands before a newline only.
    std::string expected;
    for (std::size_t at = 0; at < text.size();) {
      if (text.compare(at, 2, "\r\n") == 0) {
        expected += "\r\n";
        at += 2;
        continue;
      }
      const Utf8Character character = FirstCharacter(text.substr(at));
      const bool isKept = text[at] == '\n' || text[at] == '\t' ||
                          (character.isValid && !IsSteering(character.code));
      expected += isKept ? text.substr(at, character.bytes) : "?";
      at += character.bytes;
    }
    ASSERT_EQ(whole.text, expected) << trial;
  }
}

}  // namespace
}  // namespace orsa::kesncd
