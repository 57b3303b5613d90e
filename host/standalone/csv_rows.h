// Rows of a CSV file.
#ifndef KESNCD_HOST_STANDALONE_CSV_ROWS_H_
#define KESNCD_HOST_STANDALONE_CSV_ROWS_H_

#include <string>
#include <vector>

namespace orsa::kesncd::standalone {

using Rows = std::vector<std::vector<std::string>>;

/// Reads the rows of `path`, each of `fewest` to `most` cells. False with `message` set to
/// "FILE:LINE: what is wrong", LINE being the last of the row, or to "FILE: what is wrong". What
/// was read before an error stays in `rows`: whoever needs all or nothing gives an empty list of
/// its own.
bool ReadCsvRows(const std::string& path, std::size_t fewest, std::size_t most, Rows& rows,
                 std::string& message);

}  // namespace orsa::kesncd::standalone

#endif  // KESNCD_HOST_STANDALONE_CSV_ROWS_H_
