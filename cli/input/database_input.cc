// Telling a database from a dump, and what it cannot answer.
#include "cli/input/database_input.h"

#include <array>
#include <filesystem>

#include "text/failure.h"
#include "vcd/time_text.h"

namespace orsa::kesncd::cli {

namespace {

/// Only what has a name can be opened by SQLite. So a database that comes through a pipe is not
/// known as one here; OpenDump then refuses it.
bool IsDatabaseFile(const std::string& path) {
  std::error_code ignored;
  if (path == "-" || !std::filesystem::is_regular_file(path, ignored)) return false;
  // The first 16 bytes are "SQLite format 3" and a NUL.
  std::array<char, 16> start{};
  FileSource file(path);
  return IsSqlite({start.data(), ReadFully(file, start.data(), start.size())});
}

/// "the dump from 1us to its end", for the message below.
std::string WindowText(const TimeWindow& window) {
  if (!window.begin && !window.end) return "all of the dump";
  return "the dump from " + (window.begin ? TimeText(*window.begin) : "its begin") + " to " +
         (window.end ? TimeText(*window.end) : "its end");
}

}  // namespace

std::unique_ptr<ActivityDatabase> OpenDatabase(const InputOptions& options,
                                               const TimeWindow& window) {
  if (!IsDatabaseFile(options.dump)) return nullptr;
  auto database = std::make_unique<ActivityDatabase>(options.dump, NameOf(options));
  // What was counted in a window cannot be cut again: a database keeps sums, not changes.
  const TimeWindow& held = database->facts().window;
  // The same window may be named again, so a script need not know whether it has a dump.
  const bool isAsked = window.begin || window.end;
  if (isAsked && (window.begin != held.begin || window.end != held.end)) {
    throw Failure(FailureKind::Unusable, NameOf(options) + ": holds the figures of " +
                                             WindowText(held) +
                                             ", not of another window, which needs the dump");
  }
  return database;
}

}  // namespace orsa::kesncd::cli
