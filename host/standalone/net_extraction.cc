// The extraction: it keeps what it is given and reports it net by net.
#include <utility>

#include "host/standalone/design_database.h"
#include "host/standalone/standalone_host.h"

namespace orsa::kesncd::standalone {

namespace {

// Kept after the operation: the library's caller is told a status only, not the frequencies.
Extraction lastExtraction;

/// In the order of the design's list, also the nets that nothing is known of. Names are compared as
/// they stand: the library's are design names already.
std::vector<NetFrequency> FrequenciesOf(const NC_DESIGN& design,
                                        const std::map<std::string, double>& frequencies) {
  std::vector<NetFrequency> nets;
  for (const std::string& name : design.nets) {
    const auto known = frequencies.find(name);
    const bool isKnown = known != frequencies.end();
    nets.push_back({name, isKnown, isKnown ? known->second : 0.0});
  }
  return nets;
}

}  // namespace

const Extraction& LastExtraction() {
  return lastExtraction;
}

}  // namespace orsa::kesncd::standalone

/// The field is the host's to use; here it leads to the report.
NCD_EXTRACTION::NCD_EXTRACTION() : state(&orsa::kesncd::standalone::lastExtraction) {}

NCD_EXTRACTION::~NCD_EXTRACTION() = default;

std::intptr_t NCD_EXTRACTION::extractNCD(NC_DESIGN* design, std::string designName,
                                         std::string scope,
                                         std::map<std::string, double> frequencies) {
  // 0 tells the library that nothing was extracted, and the last report stays.
  if (design == nullptr) return 0;
  auto nets = orsa::kesncd::standalone::FrequenciesOf(*design, frequencies);
  auto& report = *static_cast<orsa::kesncd::standalone::Extraction*>(state);
  report = {std::move(designName), std::move(scope), option, std::move(frequencies),
            std::move(nets)};
  return 1;
}
