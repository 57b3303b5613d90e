// Reads an activity database, which may be corrupt or made by somebody with bad intentions.
//
// How it is kept from doing harm: views and triggers are off, tables must be this program's own to
// the letter, each table's rows must give the sum that was written, every number is checked before
// it leads anywhere, and texts together may not be longer than the file.
#ifndef KESNCD_DATABASE_DATABASE_READER_H_
#define KESNCD_DATABASE_DATABASE_READER_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "activity/code_bits.h"
#include "database/fact_reader.h"
#include "database/facts.h"
#include "database/sqlite.h"
#include "database/stored_run.h"

namespace orsa::kesncd {

/// Whether a file that begins so is an SQLite database, whatever it holds. 16 bytes are enough.
bool IsSqlite(std::string_view firstBytes);

/// Calling order: construct; facts and the readings as often as wanted. All throw Failure with
/// Unusable where the file is no activity database, one of another version, or corrupt. Memory is
/// that of what is read.
class ActivityDatabase {
 public:
  /// Opens a regular file and reads its facts. Messages call it `name`.
  ActivityDatabase(const std::string& path, const std::string& name);

  /// Known from construction on.
  const StoredFacts& facts() const { return facts_; }
  /// Throws too where there are no figures of hosts. For `flat`, `tree` and `find`: a merged
  /// database has none.
  HostRun ReadHost();
  /// Both, as they were written. `host` has figures only if facts().hasHost says so.
  StoredRun ReadAll();
  /// What is held of a part of a dump. `known` are the codes of another part with the same
  /// DeclarationsSum: declarations are not read again then, the result has none.
  StoredRun ReadPart(const CodeBits* known = nullptr);
  /// Equal for parts that were counted in dumps with the same declarations, as all parts that are
  /// merged must have been.
  std::uint64_t DeclarationsSum() const;

 private:
  void CheckKind();
  void CheckTables();
  void RefusePart() const;
  /// The one number that a statement gives.
  std::int64_t Number(const char* sql);
  void ReadFacts();
  void ReadCodes(std::vector<std::uint64_t>& firstBit, std::vector<std::uint32_t>& changes);
  void ReadScopes(Declarations& declarations);
  void ReadSignals(const std::vector<std::uint64_t>& firstBit, Declarations& declarations);
  void ReadPartDeclarations(StoredRun& run);
  void ReadTallies(ActivityResult& result);
  void ReadBits(ActivityResult& result);
  void ReadHostRemarks(HostRun& run);
  void SetHost(HostRun& run);
  void SetExact(ActivityResult& result);

  const std::string name_;  // for messages
  Connection connection_;
  // Bytes of texts that the file can still hold, its size at first; see TableReader.
  std::uint64_t budget_;
  FactsByName byName_;
  const FactReader named_{connection_, byName_};
  StoredFacts facts_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_DATABASE_DATABASE_READER_H_
