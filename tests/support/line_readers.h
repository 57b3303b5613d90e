// The readers under one call, and what they leave as a text.
#ifndef KESNCD_TESTS_SUPPORT_LINE_READERS_H_
#define KESNCD_TESTS_SUPPORT_LINE_READERS_H_

#include <cstdio>
#include <string>

#include "kesncd/kesncd.h"
#include "line_readers/dump_lines.h"

namespace orsa::kesncd {

enum class Reader { Unfiltered, Filtered, Hierarchical, Grammar };
inline constexpr Reader kReaders[] = {Reader::Unfiltered, Reader::Filtered, Reader::Hierarchical};
inline constexpr Reader kAllReaders[] = {Reader::Unfiltered, Reader::Filtered, Reader::Hierarchical,
                                         Reader::Grammar};

#if defined(__SANITIZE_ADDRESS__) || defined(KESNCD_QUICK_TESTS)
inline constexpr int kShare = 11;  // a sanitizer makes each reading ten times as dear
#else
inline constexpr int kShare = 1;
#endif

/// What a reader makes of a stream, from fresh reader state with the top module "top". The filtered
/// one takes "clk" and "u/q".
struct Reading {
  std::string text;       ///< "0.1ns 0-500 top(clk=1 u(q=0))"
  bool complete = true;   ///< as far as the reader says
  long long changes = 0;  ///< all counts together
};
Reading ReadDump(Reader reader, std::FILE* stream, const ReadingOptions& options = {});

/// An analyser's scopes with their counts: "top(clk=1 u(q=0))", after " +" those that hang nowhere.
std::string TreeText(const KesNCD& analyser);

/// Reads a dump by the fast path, by the plain one, and with small blocks and tables, which must
/// agree, also in where they leave the stream.
Reading ExpectSamePaths(Reader reader, const std::string& dump);

}  // namespace orsa::kesncd

#endif  // KESNCD_TESTS_SUPPORT_LINE_READERS_H_
