// The one table of keywords, for all readers of a dump.
#include "vcd/dump_keywords.h"

#include <strings.h>

#include <algorithm>
#include <iterator>

namespace orsa::kesncd {

namespace {

struct Row {
  std::string_view word;
  Keyword keyword;
};

/// Port dumps have commands of their own, which mean the same: "$dumpports" stands where
/// "$dumpvars" does, and so on.
constexpr Row kRows[] = {
    {"$end", Keyword::End},
    {"$var", Keyword::Var},
    {"$scope", Keyword::Scope},
    {"$upscope", Keyword::Upscope},
    {"$comment", Keyword::Comment},
    {"$date", Keyword::Text},
    {"$version", Keyword::Text},
    {"$timescale", Keyword::Timescale},
    {"$enddefinitions", Keyword::EndDefinitions},
    {"$dumpvars", Keyword::DumpVars},
    {"$dumpall", Keyword::DumpAll},
    {"$dumpon", Keyword::DumpOn},
    {"$dumpoff", Keyword::DumpOff},
    {"$dumpports", Keyword::DumpVars},
    {"$dumpportsall", Keyword::DumpAll},
    {"$dumpportson", Keyword::DumpOn},
    {"$dumpportsoff", Keyword::DumpOff},
    {"$vcdclose", Keyword::Close},
};

/// A "$" before anything else begins an identifier code, not a keyword. Codes are made of any
/// printable characters, so "$" or "$1" may well be one.
bool IsAnyLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

}  // namespace

Keyword KeywordOf(std::string_view word) {
  if (word.size() < 2 || word.front() != '$') return Keyword::None;
  // A walk over the rows costs nothing: words that begin with "$" are rare in a body. First
  // as keywords are usually spelt, which is the quicker comparison: a header may have millions.
  for (const Row& row : kRows) {
    if (word == row.word) return row.keyword;
  }
  for (const Row& row : kRows) {
    if (word.size() == row.word.size() &&
        strncasecmp(word.data(), row.word.data(), word.size()) == 0) {
      return row.keyword;
    }
  }
  return IsAnyLetter(word[1]) ? Keyword::Section : Keyword::None;
}

bool IsPlainKeyword(std::string_view word) {
  // By their spelling: what a port dump calls its commands is unknown to the line readers.
  return !word.starts_with("$dumpports") &&
         std::any_of(std::begin(kRows), std::end(kRows),
                     [word](const Row& row) { return row.word == word; });
}

bool IsDumpCommand(Keyword keyword) {
  // The four are neighbours in the enumeration.
  return keyword >= Keyword::DumpVars && keyword <= Keyword::DumpOff;
}

bool StartsSection(Keyword keyword) {
  // A missing $end is found so: "$date today $version ..." has two sections.
  return keyword != Keyword::None && keyword != Keyword::End && keyword != Keyword::Section;
}

}  // namespace orsa::kesncd
