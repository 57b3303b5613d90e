// Reads an activity database, which may be corrupt or made by somebody with bad intentions.
#ifndef KESNCD_DATABASE_DATABASE_READER_H_
#define KESNCD_DATABASE_DATABASE_READER_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "database/facts.h"
#include "database/sqlite.h"
#include "database/stored_run.h"
#include "database/table_reader.h"

namespace orsa::kesncd {

/// Whether a file that begins so is an SQLite database, of whatever.
bool IsSqlite(std::string_view firstBytes);

/// Calling order: construct; facts and the readings as often as wanted. All throw Failure with
/// Unusable where the file is no activity database, one of another version, or corrupt.
class ActivityDatabase {
 public:
  /// Messages call the file `name`.
  ActivityDatabase(const std::string& path, const std::string& name);

  const StoredFacts& facts() const { return facts_; }
  ActivityResult ReadExact();
  /// Throws too where there are no figures of hosts.
  HostRun ReadHost();
  /// Both, as they were written.
  StoredRun ReadAll();
  /// What is held of a part of a dump.
  StoredRun ReadPart();
  /// Equal for parts of the same declarations.
  std::uint64_t DeclarationsSum() const;

 private:
  void CheckKind();
  void CheckTables();
  void RefusePart() const;
  std::int64_t Number(const char* sql);
  void ReadFacts();
  const Fact& FactOf(const std::string& name) const;
  std::uint64_t CountOf(const std::string& name, std::uint64_t most = UINT64_MAX) const;
  std::optional<std::uint64_t> OptionalCountOf(const std::string& name) const;
  std::string TextOf(const std::string& name) const;
  void CheckSum(const TableReader& rows, const std::string& table) const;

  void ReadCodes(std::vector<std::uint64_t>& firstBit, std::vector<std::uint32_t>& changes);
  void ReadScopes(Declarations& declarations);
  void ReadSignals(const std::vector<std::uint64_t>& firstBit, Declarations& declarations);
  void CountCodes(ActivityResult& result) const;
  void ReadTallies(ActivityResult& result);
  void ReadBits(ActivityResult& result);
  void ReadHostRemarks(HostRun& run);
  void SetHost(HostRun& run);
  void SetExact(ActivityResult& result);

  const std::string name_;
  Connection connection_;
  std::uint64_t budget_;  // bytes of texts that the file can still hold
  FactsByName byName_;
  StoredFacts facts_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_DATABASE_DATABASE_READER_H_
