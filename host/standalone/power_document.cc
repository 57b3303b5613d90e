// The power-data document.
#include <utility>

#include "host/standalone/csv_rows.h"
#include "host/standalone/standalone_host.h"

namespace orsa::kesncd::standalone {

namespace {

// The name that the library asks for.
constexpr char kConnections[] = "Hierarchical Connections";

/// A table section that owns its table. The public pointer leads to the member, which goes with the
/// section.
class OwnedTable : public PD_TBLSECT {
 public:
  explicit OwnedTable(Rows rows) {
    cells_.rows = std::move(rows);
    table = &cells_;
  }

 private:
  PD_TABLE cells_;
};

}  // namespace

PowerDocument::PowerDocument() = default;
PowerDocument::~PowerDocument() = default;

bool PowerDocument::ReadConnections(const std::string& path, std::string& message) {
  // Read apart, so that a file with an error leaves the document as it was.
  Rows rows;
  // Kind and column 1; column 2 where the kind has one.
  if (!ReadCsvRows(path, 2, 3, rows, message)) return false;
  AddTable(kConnections, std::move(rows));
  return true;
}

void PowerDocument::AddTable(const std::string& name, std::vector<std::vector<std::string>> rows) {
  sections_[name] = std::make_unique<OwnedTable>(std::move(rows));
}

/// For tests of what the library does with a section that is no table.
void PowerDocument::AddOtherSection(const std::string& name) {
  sections_[name] = std::make_unique<PD_SECTION>();
}

}  // namespace orsa::kesncd::standalone

PD_SECTION::~PD_SECTION() = default;

PD_SECTION* PD_DATA::GetSection(const char* name) {
  // Every document of this host is one.
  const auto* document = static_cast<orsa::kesncd::standalone::PowerDocument*>(this);
  const auto section = document->sections_.find(name);
  return section == document->sections_.end() ? nullptr : section->second.get();
}

// Empty for a cell that a short row lacks: the library wants a text in any case.
const char* PD_TABLE::GetValueAt(int row, int column) {
  const auto r = static_cast<std::size_t>(row);
  const auto c = static_cast<std::size_t>(column);
  return r < rows.size() && c < rows[r].size() ? rows[r][c].c_str() : "";
}
