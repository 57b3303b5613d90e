// The change counters of a dump's identifier codes.
//
// Add a counter for each declared code, Count or CountPlain the changes with a Settle in between
// now and then, and Get or Take the results. Only added codes give results.
#ifndef KESNCD_LINE_READERS_CODE_COUNTS_H_
#define KESNCD_LINE_READERS_CODE_COUNTS_H_

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "vcd/code_table.h"

namespace orsa::kesncd {

/// Counts stop at 2147483647, since hosts see them as int.
class CodeCounts {
 public:
  static constexpr std::size_t kReadAhead = CodeCells::kReadAhead;

  explicit CodeCounts(std::size_t longestDirect = CodeCells::kLongestDirect)
      : cells_(longestDirect) {}

  /// Gives a code a counter, unless it has one. A code that holds a NUL, which no dump can name,
  /// gets none. Changes before it count nothing.
  void Add(std::string_view code);
  /// Fetches what Add or Get of a code will look at: in a large header each waits for memory.
  void Fetch(std::string_view code) const { cells_.Fetch(code); }
  /// Adds one change to a code; nothing for a code without a counter.
  void Count(std::string_view code);
  /// The same for a code of plain characters only: above a blank, below 128. kReadAhead bytes are
  /// read. Changes of a code that has no counter yet go nowhere.
  void CountPlain(const char* code, std::size_t length) {
    std::uint32_t* const count = cells_.LookPlain(code, length);
    if (count != nullptr) [[likely]]
      ++*count;
  }
  /// The changes of a code since they were last taken, 2147483647 at most.
  std::uint32_t Get(std::string_view code);
  /// The same, and takes them: the code starts again from 0. The flat readers add what is taken to
  /// a module's own counts, so a second reading goes on there.
  std::uint32_t Take(std::string_view code);
  /// To be called at least once in every kMostBetween calls of CountPlain, so that no counter
  /// overflows.
  void Settle();
  // 2^31 changes on top of a settled counter, 2^31 - 1 at most, still fit into 32 bits.
  static constexpr std::uint32_t kMostBetween = 1U << 31;

 private:
  // A change is counted first and asked for later, so the cells of codes that were not added may
  // hold changes too.
  CodeCells cells_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_LINE_READERS_CODE_COUNTS_H_
