// The hand-over of the frequencies to the host's design database.
#include <map>
#include <utility>

#include "host/design_data.h"
#include "kesncd/kesncd.h"

namespace orsa::kesncd {

namespace {

/// The host's number for "loaded from the sources as they are now". The host gives states of its
/// data by numbers; this is the one that matters here.
constexpr int kSourceIsCurrent = 0x200;
/// Stands for no preferences: the host wants some text in their place.
constexpr char kNoPreferences[] = ".";

using Frequencies = std::map<std::string, double>;

/// What the extraction is run on.
struct LoadedDesign {
  NC_DESIGN* design;
  std::string name;
};

/// Empty where the host has no name.
std::string NameOf(const NcdData* database) {
  return database != nullptr && database->name != nullptr ? database->name : "";
}

/// Nothing is loaded: the design is the one that the host shows.
LoadedDesign CurrentDesign(CommonData& registry) {
  std::string name = NameOf(registry.findNcdObject());
  return {registry.findNcdPtr(), std::move(name)};
}

/// Loads the design afresh, also when it is loaded already. False when the host cannot.
bool LoadDesign(CommonData& registry, const std::string& source, const std::string& preferences,
                LoadedDesign& loaded) {
  registry.setNcdSource(source.c_str(), preferences.empty() ? kNoPreferences : preferences.c_str());
  NcdData* const database = registry.findNcdObject();
  // Released first, or the host would go on with what it has.
  if (database == nullptr || database->releaseData() == 0 || database->loadData() == 0) {
    return false;
  }
  loaded.design = database->findData();
  loaded.name = NameOf(database);
  return true;
}

}  // namespace

NC_DESIGN* KesNCD::isNcdAvailable(CommonData* registry) {
  if (registry == nullptr || registry->isNcdAvailable() == 0) return nullptr;
  NcdData* const database = registry->findNcdObject();
  if (database == nullptr || database->findData() == nullptr) return nullptr;
  if (database->getIsSourceUpdated(kSourceIsCurrent) == 0) return nullptr;
  return database->findData();
}

std::intptr_t KesNCD::ExtractNCD() {
  NCD_EXTRACTION extraction;
  CommonData* const registry = CommonData::getGlobalInstance();
  // 0 is what hosts take for a failure.
  if (registry == nullptr) return 0;
  // A copy: signalFreqs stays for the host.
  Frequencies frequencies = signalFreqs;
  // What the dump shows of a net goes before what the report promises.
  if (twrFileOn) frequencies.insert(clockFreqs.begin(), clockFreqs.end());
  extraction.option = extractOption;

  // Without sources named the design at hand will do, if it is current.
  LoadedDesign loaded{};
  if (ncdFile.empty() && prfFile.empty() && isNcdAvailable(registry) != nullptr) {
    loaded = CurrentDesign(*registry);
  } else if (!LoadDesign(*registry, ncdFile, prfFile, loaded)) {
    return 0;
  }
  ncdName = loaded.name;
  return extraction.extractNCD(loaded.design, std::move(loaded.name), extractName,
                               std::move(frequencies));
}

}  // namespace orsa::kesncd
