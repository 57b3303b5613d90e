// The host's operations for the tests: calls are written down as text, results set by each case.
#ifndef KESNCD_TESTS_SUPPORT_TEST_HOST_H_
#define KESNCD_TESTS_SUPPORT_TEST_HOST_H_

#include <functional>
#include <string>

#include "host/design_data.h"
#include "host/power_data.h"

class NC_DESIGN {
 public:
  std::string name;
};

namespace orsa::kesncd {

/// One host for all; a test starts by assigning it a fresh one.
struct TestHost {
  std::string calls;             ///< "findNcdObject; releaseData; ..."
  std::string failing;           ///< operation that gives null or zero
  std::string throwing;          ///< operation that throws std::runtime_error
  int extractions = 0;           ///< extraction objects alive
  NC_DESIGN current{"current"};  ///< what findNcdPtr gives
  NC_DESIGN loaded{"loaded"};    ///< what findData gives
  const char* designName = "soc";
  PD_SECTION* section = nullptr;  ///< what GetSection gives
  /// Gives the text of a cell; the table's own where there is no such function.
  std::function<const char*(PD_TABLE& table, int row, int column)> cell;
};

extern TestHost testHost;

}  // namespace orsa::kesncd

#endif  // KESNCD_TESTS_SUPPORT_TEST_HOST_H_
