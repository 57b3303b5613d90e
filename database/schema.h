// The tables and views of an activity database, which docs/formats.md describes. All of a schema's
// statements are here, so that reader and writer cannot know different ones.
//
// How the tables hang together:
//
//   scope.id <- signal.scope      signal.code -> code.id      code.first_bit .. + code.bits ->
//   bit.id
//
// so `SELECT path, toggles FROM module_activity ORDER BY toggles DESC` needs no knowledge of codes.
#ifndef KESNCD_DATABASE_SCHEMA_H_
#define KESNCD_DATABASE_SCHEMA_H_

#include <cstdint>
#include <span>
#include <string_view>

namespace orsa::kesncd {

/// "KNcd" in the header of the SQLite file, where `file` and other tools look for what it is.
inline constexpr std::int32_t kApplicationId = 0x4B4E6364;
// A program reads its own version only: see ActivityDatabase::CheckKind.
inline constexpr std::int32_t kSchemaVersion = 1;

/// A table or view with the statement that makes it, letter by letter as SQLite keeps it.
struct SchemaPart {
  std::string_view name;
  const char* sql;
};
/// Tables that the program reads back: a file in which one of them says something else is foreign.
std::span<const SchemaPart> SchemaTables();
/// Further tables, of a file that holds a part of a dump.
std::span<const SchemaPart> SchemaPartTables();
/// And where the part was counted over time.
std::span<const SchemaPart> SchemaPartProfileTables();
/// Further tables, of a file with a profile.
std::span<const SchemaPart> SchemaProfileTables();
/// Views for those who ask in SQL.
std::span<const SchemaPart> SchemaViews();
/// And of a file with a profile.
std::span<const SchemaPart> SchemaProfileViews();

}  // namespace orsa::kesncd

#endif  // KESNCD_DATABASE_SCHEMA_H_
