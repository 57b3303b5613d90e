// The parts' own tables. Times are sums of differences there (see activity/activity_part.h), which
// wrap around: they are kept as signed numbers.
#include "database/part_tables.h"

#include <array>
#include <type_traits>

#include "database/table_reader.h"
#include "database/table_writer.h"

namespace orsa::kesncd {

namespace {

/// Calls `visit(name, value)` for all of a part that is one number. One list for writing and
/// reading, so that neither can forget a member. The names are part of the format: none may change
/// or go without a new version of it.
template <class Part, class Visit>
void ForEachPartNumber(Part& part, Visit visit) {
  // The stretch: which part of how many it is, and where in the file.
  visit("part_first", part.choice.first);
  visit("part_last", part.choice.last);
  visit("part_count", part.choice.parts);
  visit("part_dump_bytes", part.dumpBytes);
  visit("part_begin", part.begin);
  visit("part_end", part.end);
  visit("part_lines", part.lines);
  // Its ends, by which CanPrecede tells whether a neighbour adds up.
  visit("part_begins_body", part.beginsBody);
  visit("part_ends_cleanly", part.endsCleanly);
  visit("part_ends_dump", part.endsDump);
  // See ActivityPart.
  auto& activity = part.activity;
  visit("part_has_stamps", activity.hasStamps);
  visit("part_first_stamp", activity.first);
  visit("part_last_stamp", activity.last);
  visit("part_backward", activity.backward);
  visit("part_first_switch", activity.firstSwitch);
  visit("part_switch_time", activity.switchTime);
  visit("part_is_middle_open", activity.isMiddleOpen);
  visit("part_middle_end", activity.middleEnd);
  visit("part_is_tail_open", activity.isTailOpen);
  visit("part_tail_observed", activity.tailObserved);
  visit("part_tail_pauses", activity.tailPauses);
  // See HostPart.
  auto& host = part.host;
  visit("part_host_repeated", host.repeated);
  visit("part_host_opens_off", host.opensOff);
  visit("part_host_dumping_on", host.dumping.isOn);
  visit("part_host_dumping_stamp", host.dumping.hasStamp);
  visit("part_host_dumping_now", host.dumping.now);
  visit("part_host_dumping_since", host.dumping.offSince);
  visit("part_host_dumping_off", host.dumping.offTicks);
  // See WindowState.
  auto& window = host.window;
  visit("part_host_stamps", window.time.stamps);
  visit("part_host_open", window.time.isOpen);
  visit("part_host_end_cut", window.time.isEndCut);
  visit("part_host_first", window.time.first);
  visit("part_host_last", window.time.last);
  visit("part_host_first_stamp", window.firstStamp);
  visit("part_host_now", window.now);
  visit("part_host_dumping", window.isDumping);
  visit("part_host_begun", window.hasBegun);
  visit("part_host_done", window.isDone);
}

/// The largest number that a value may come from. A file may hold any number; what does not fit the
/// type is corrupt.
template <class Value>
constexpr std::uint64_t MostOf() {
  if constexpr (std::is_same_v<Value, bool>) return 1;
  // None, Off and On.
  if constexpr (std::is_same_v<Value, ActivityPart::Switch>) return 2;
  if constexpr (std::is_same_v<Value, std::uint32_t>) return UINT32_MAX;
  return UINT64_MAX;
}

/// In this order `piece` counts them: 0, 1 and 2.
template <class Activity>
auto PiecesOf(Activity& activity) {
  return std::array{&activity.front, &activity.middle, &activity.tail};
}

/// Rows of all bits that were given a value in a piece.
void WriteBits(const ActivityPart& activity, Connection& to, FactsByName& facts) {
  // The columns are piece, bit, the six figures and edge.
  TableWriter rows(to, "part_bit", 9);
  std::uint64_t number = 0;
  for (const ObservedPiece* piece : PiecesOf(activity)) {
    for (std::size_t bit = 0; bit < piece->figures.size(); ++bit) {
      const BitFigures& figures = piece->figures[bit];
      const BitEdge edge = piece->edges[bit];
      // Nothing in it: the same as a bit that is not there.
      if (!edge.IsSeen() && figures == BitFigures()) continue;
      rows.Count(number);
      // The bit's place, as CodeBits counts.
      rows.Count(std::uint64_t{bit});
      for (const std::uint64_t sum :
           {figures.t0, figures.t1, figures.tx, figures.tz, figures.tc, figures.ig}) {
        // Differences may be below 0; see ActivityPart.
        rows.Signed(sum);
      }
      rows.Count(std::uint64_t{edge.ToByte()});
      rows.EndRow();
    }
    ++number;
  }
  facts["checksum_part_bit"] = rows.Finish();
}

/// Rows of all codes that have a value or a count.
void WriteCodes(const HostPart& host, Connection& to, FactsByName& facts) {
  // The columns are id, changes, last, first_value and first_kind.
  TableWriter rows(to, "part_code", 5);
  for (std::size_t id = 0; id < host.codes.size(); ++id) {
    const HostPart::Code& code = host.codes[id];
    const HostPart::First& first = host.first[id];
    // A code may have a value that does not count, x of a scalar say.
    if (code.last == 0 && code.changes == 0 && first.value == 0) continue;
    rows.Count(std::uint64_t{id});
    rows.Count(std::uint64_t{code.changes});
    rows.Count(std::uint64_t{code.last});
    rows.Count(std::uint64_t{first.value});
    rows.Count(static_cast<std::uint64_t>(first.kind));
    rows.EndRow();
  }
  facts["checksum_part_code"] = rows.Finish();
}

/// Calling order: construct, Read once.
class PartReader {
 public:
  PartReader(Connection& from, const CodeBits& codes, const FactReader& facts,
             std::uint64_t& budget)
      : from_(from), codes_(codes), facts_(facts), budget_(budget) {}

  BodyPart Read() {
    BodyPart part;
    ForEachPartNumber(part, [&](const char* name, auto& value) {
      // Every member has to be there.
      using Value = std::remove_reference_t<decltype(value)>;
      value = static_cast<Value>(facts_.CountOf(name, MostOf<Value>()));
    });
    // What follows relies on these, also where a file was made to deceive.
    const PartChoice& choice = part.choice;
    if (choice.first > choice.last || choice.last >= choice.parts || part.begin > part.end) {
      from_.FailCorrupt();
    }
    ReadBits(part.activity);
    ReadCodes(part.host);
    return part;
  }

 private:
  void ReadBits(ActivityPart& activity) {
    // By rowid, the order in which rows were written and their sum was made. NOT INDEXED: an index
    // of a stranger's could say something else.
    TableReader rows(from_,
                     "SELECT piece, bit, t0, t1, tx, tz, tc, ig, edge FROM part_bit NOT INDEXED"
                     " ORDER BY rowid",
                     budget_);
    while (rows.Next()) {
      ObservedPiece& piece = *PiecesOf(activity)[rows.Small(2)];
      // A piece has all bits or none.
      if (piece.IsEmpty()) {
        piece.figures.resize(codes_.bits());
        piece.edges.resize(codes_.bits());
      }
      const std::uint64_t bit = rows.Count();
      // Looked at before it is followed.
      if (bit >= codes_.bits()) from_.FailCorrupt();
      BitFigures& figures = piece.figures[bit];
      for (std::uint64_t* sum :
           {&figures.t0, &figures.t1, &figures.tx, &figures.tz, &figures.tc, &figures.ig}) {
        *sum = rows.Signed();
      }
      piece.edges[bit] = BitEdge::FromByte(static_cast<std::uint8_t>(rows.Small(UINT8_MAX)));
    }
    facts_.CheckSum(rows, "part_bit");
  }

  void ReadCodes(HostPart& host) {
    // Codes without a row have nothing.
    host.codes.resize(codes_.codes());
    host.first.resize(codes_.codes());
    TableReader rows(from_,
                     "SELECT id, changes, last, first_value, first_kind FROM part_code NOT INDEXED"
                     " ORDER BY id",
                     budget_);
    while (rows.Next()) {
      const std::uint64_t id = rows.Count();
      if (id >= codes_.codes()) from_.FailCorrupt();
      // Bounds as the counting keeps them, so that sums of parts cannot overflow.
      host.codes[id].changes = rows.Small(kMostChanges);
      host.codes[id].last = rows.Small();
      host.first[id].value = rows.Small();
      host.first[id].kind = static_cast<HostPart::FirstValue>(rows.Small(2));
    }
    facts_.CheckSum(rows, "part_code");
  }

  Connection& from_;
  const CodeBits& codes_;
  const FactReader& facts_;
  std::uint64_t& budget_;
};

}  // namespace

void WritePartTables(const BodyPart& part, Connection& to, FactsByName& facts) {
  ForEachPartNumber(part, [&](const char* name, const auto& value) {
    // Truth values and enumerations too are numbers in the file.
    facts[name] = FactOfCount(static_cast<std::uint64_t>(value));
  });
  WriteBits(part.activity, to, facts);
  WriteCodes(part.host, to, facts);
}

BodyPart ReadPartTables(Connection& from, const CodeBits& codes, const FactReader& facts,
                        std::uint64_t& budget) {
  return PartReader(from, codes, facts, budget).Read();
}

}  // namespace orsa::kesncd
