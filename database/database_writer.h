// Writes an activity database.
//
// The file is SQLite, so it can be asked by `sqlite3 sim.kact` and by every language;
// docs/formats.md describes its tables and views. kesncd itself takes it in the place of the dump.
#ifndef KESNCD_DATABASE_DATABASE_WRITER_H_
#define KESNCD_DATABASE_DATABASE_WRITER_H_

#include "database/stored_run.h"
#include "text/byte_stream.h"

namespace orsa::kesncd {

/// Makes the database in memory, about as large as the figures themselves, and passes it on whole:
/// where it goes need not be a file. The same run gives the same bytes. Throws Failure with
/// OutputFailed. `run` is complete or a part (see StoredRun). Bytes go to `out` at the very end, so
/// nothing is written where something fails before.
void WriteDatabase(const StoredRun& run, ByteSink& out);

}  // namespace orsa::kesncd

#endif  // KESNCD_DATABASE_DATABASE_WRITER_H_
