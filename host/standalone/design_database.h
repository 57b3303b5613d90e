// The design database of the process.
#ifndef KESNCD_HOST_STANDALONE_DESIGN_DATABASE_H_
#define KESNCD_HOST_STANDALONE_DESIGN_DATABASE_H_

#include <memory>
#include <string>
#include <vector>

#include "host/design_data.h"

/// A design is the names of its nets.
class NC_DESIGN {
 public:
  // Names in the order of the file.
  std::vector<std::string> nets;
};

namespace orsa::kesncd::standalone {

/// The database object that the registry hands out, with what it holds.
///
/// Calling order, which is the library's: SetSource, Load, then Design; Release at any time.
/// Without SetSource there is nothing to load from.
class DesignDatabase : public NcdData {
 public:
  DesignDatabase() { name = ""; }

  /// Sources to load from. What is loaded is out of date from now on.
  void SetSource(const std::string& database, const std::string& preferences);
  /// Reads the design; false, with Message, when one of the sources cannot be read.
  bool Load();
  void Release() { design_.reset(); }

  /// The loaded design, or null.
  NC_DESIGN* Design() const { return design_.get(); }
  /// Whether a design is loaded from the sources set last.
  bool IsCurrent() const { return design_ != nullptr && isCurrent_; }
  /// Why the last loading failed.
  const std::string& Message() const { return message_; }

 private:
  // Both as SetSource was given them.
  std::string database_;
  std::string preferences_;
  // The public `name` points to its text.
  std::string designName_;
  std::string message_;
  std::unique_ptr<NC_DESIGN> design_;
  // The sources have not been set again since the last loading.
  bool isCurrent_ = false;
};

/// The one database of the process.
DesignDatabase& Database();

}  // namespace orsa::kesncd::standalone

#endif  // KESNCD_HOST_STANDALONE_DESIGN_DATABASE_H_
