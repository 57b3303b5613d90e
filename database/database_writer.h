// Writes an activity database.
#ifndef KESNCD_DATABASE_DATABASE_WRITER_H_
#define KESNCD_DATABASE_DATABASE_WRITER_H_

#include "database/stored_run.h"
#include "text/byte_stream.h"

namespace orsa::kesncd {

/// Makes the database in memory, about as large as the figures themselves, and passes it on whole:
/// where it goes need not be a file. The same run gives the same bytes. Throws Failure with
/// OutputFailed.
void WriteDatabase(const StoredRun& run, ByteSink& out);

}  // namespace orsa::kesncd

#endif  // KESNCD_DATABASE_DATABASE_WRITER_H_
