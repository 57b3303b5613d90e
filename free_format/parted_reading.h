// Reads a dump's body in stretches, each in a thread of its own, as if it had been read in one.
//
// A stretch is read without knowing what comes before it. Whether that was right shows when all are
// read: the one before has to end between two items, and its taker has to say that the next one's
// adds up. Where that is not so (a cut lies inside a comment, or time does not grow there), the
// reader of the one before goes on through the next stretch, and what was read of that is dropped.
#ifndef KESNCD_FREE_FORMAT_PARTED_READING_H_
#define KESNCD_FREE_FORMAT_PARTED_READING_H_

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "free_format/body_reader.h"
#include "free_format/body_stretch.h"
#include "free_format/dump_items.h"
#include "free_format/dump_words.h"
#include "vcd/declarations.h"

namespace orsa::kesncd {

/// A dump in a plain file. Calling order: construct, `words` up to the body, Cut, the rest. Source
/// and words are one reader of the file's start; the other stretches have theirs.
class FileDump {
 public:
  // A quarter of a block of each word is kept, so that a block holds whole words.
  FileDump(ByteFile& file, std::size_t block)
      : block_(block), source_(file), words_(source_, block, block / 4) {}

  DumpWords& words() { return words_; }
  StretchSource& source() { return source_; }
  ByteFile& file() const { return source_.file(); }
  std::size_t block() const { return block_; }

  /// Cuts the body into up to so many stretches; `words` then ends with the first of them. Called
  /// once, after the declarations were read.
  std::vector<StretchRange> Cut(std::uint32_t parts);
  /// Lets `words` end with a stretch that begins the body.
  void EndAt(const std::vector<std::uint64_t>& ends);

 private:
  // Bytes that are read at a time, also by the other stretches' readers.
  const std::size_t block_;
  StretchSource source_;
  DumpWords words_;
};

/// One stretch with its reader. Construct and Read, each in its thread; then GoOn, if need be, in
/// the thread that adds up.
template <class Taker>
class StretchReader {
 public:
  /// Of the stretch that begins the body.
  StretchReader(FileDump& dump, const Declarations& declarations, Taker& taker)
      : source_(&dump.source()),
        words_(&dump.words()),
        items_(*words_, declarations, *source_, true),
        taker_(taker) {}
  /// Of one that begins with a stamp; it goes up to the first of `ends`.
  StretchReader(FileDump& dump, const Declarations& declarations, Taker& taker, std::uint64_t begin,
                std::vector<std::uint64_t> ends)
      // Owned here: threads share nothing but the file, the declarations and the flag that stops
      // them.
      : ownSource_(std::make_unique<StretchSource>(dump.file(), begin, std::move(ends))),
        ownWords_(std::make_unique<DumpWords>(*ownSource_, dump.block(), dump.block() / 4)),
        source_(ownSource_.get()),
        words_(ownWords_.get()),
        items_(*words_, declarations, *source_, false),
        taker_(taker) {}
  StretchReader(const StretchReader&) = delete;
  StretchReader& operator=(const StretchReader&) = delete;

  /// Reads to the end of the stretch, or of an item that does not end there.
  void Read() { ReadBody(items_, taker_); }
  /// Reads on, up to the next stretch's end.
  void GoOn() {
    items_.GoOn();
    Read();
  }

  Taker& taker() const { return taker_; }
  StretchSource& source() const { return *source_; }
  const DumpWords& words() const { return *words_; }
  const ItemTallies& tallies() const { return items_.tallies(); }
  /// Newlines that were read. Joined tallies count their lines from these.
  std::uint64_t Lines() const { return words_->Line() - 1; }
  /// Whether the stretch ended between two items.
  bool EndsClean() const { return !items_.IsOverEnd(); }
  /// Whether nothing that comes after the stretch matters.
  bool IsLast() const { return taker_.IsDone() || (EndsClean() && source_->IsAtFileEnd()); }

 private:
  // Null for the stretch that begins the body, whose source and words are the dump's.
  std::unique_ptr<StretchSource> ownSource_;
  std::unique_ptr<DumpWords> ownWords_;
  StretchSource* source_;
  DumpWords* words_;
  DumpItems items_;
  Taker& taker_;
};

/// Runs jobs at the same time, the first one in this thread, and waits for all. The first failure
/// sets `isUnwanted` and is thrown when all have ended. Where the system gives no further thread,
/// jobs run one after the other.
void RunTogether(const std::vector<std::function<void()>>& jobs, std::atomic<bool>& isUnwanted);

/// Of this machine.
std::uint64_t MemoryBytes();
/// As many threads as may be used, at least one, but no more than take a quarter of the memory when
/// each has so many bytes.
unsigned ThreadsWithin(std::uint64_t bytesOfEach, unsigned jobs);

/// Where the stretches end, from one on.
std::vector<std::uint64_t> EndsFrom(const std::vector<StretchRange>& stretches, std::size_t first);

/// A taker for a stretch, of which `make` may want to know the number.
template <class Make>
auto MakeTaker(Make& make, std::size_t stretch) {
  if constexpr (std::is_invocable_v<Make&, std::size_t>) {
    return make(stretch);
  } else {
    return make();
  }
}

/// Reads the body in stretches as FileDump::Cut gave them. `make()`, or `make(stretch)` with 0 for
/// the one that begins the body, makes a taker (see ReadBody) that also has
///
///   bool Precedes(const Taker& next) const    what `next` took from a stretch that begins with a
///                                             stamp adds to what this one took right before it
///
/// and `take` gets a pointer to each one that counts, in the order of the dump, when all is read.
/// Returns what was passed over. `stretches` is not empty. All takers live at once, each with what
/// it keeps.
template <class Make, class Take>
ItemTallies ReadInParts(FileDump& dump, const Declarations& declarations,
                        const std::vector<StretchRange>& stretches, Make make, Take take) {
  using Pointer = decltype(MakeTaker(make, 0));
  using Reader = StretchReader<typename Pointer::element_type>;
  std::vector<Pointer> takers(stretches.size());
  std::vector<std::unique_ptr<Reader>> readers(stretches.size());
  std::vector<std::function<void()>> jobs;
  std::atomic<bool> isUnwanted{false};
  for (std::size_t i = 0; i < stretches.size(); ++i) {
    jobs.emplace_back([&, i] {
      takers[i] = MakeTaker(make, i);
      if (i == 0) {
        readers[i] = std::make_unique<Reader>(dump, declarations, *takers[i]);
      } else {
        readers[i] = std::make_unique<Reader>(dump, declarations, *takers[i], stretches[i].begin,
                                              EndsFrom(stretches, i));
      }
      readers[i]->source().StopFor(isUnwanted);
      readers[i]->Read();
    });
  }
  RunTogether(jobs, isUnwanted);

  // From here on only this thread works.
  ItemTallies tallies;
  std::uint64_t lines = 0;
  std::size_t next = 1;  // the stretch after those that were read
  // Each round takes one reader whose stretch is known to begin right.
  for (std::size_t i = 0; i < readers.size(); i = next++) {
    Reader& reader = *readers[i];
    while (!reader.IsLast()) {
      // Stretches that the reader has gone through are done.
      while (stretches[next - 1].end < reader.source().end()) ++next;
      // Both must agree: the words end between items, and time goes on.
      const bool isNextGood = next < readers.size() && reader.EndsClean() &&
                              reader.taker().Precedes(readers[next]->taker());
      if (isNextGood) break;
      // What the next stretch's own reader took is dropped.
      reader.GoOn();
    }
    tallies.Join(reader.tallies(), lines);
    lines += reader.Lines();
    const bool isLast = reader.IsLast();
    // Its block's memory goes before the taker's results are joined.
    readers[i].reset();
    take(std::move(takers[i]));
    if (isLast) break;
  }
  return tallies;
}

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_PARTED_READING_H_
