// The analyser: construction, settings, and the operations that only call a stage.
#include <cstdio>
#include <cstring>
#include <memory>
#include <set>
#include <utility>

#include "kesncd/kesncd.h"
#include "kesncd/readings.h"
#include "line_readers/header_probe.h"
#include "line_readers/timescale.h"
#include "text/file.h"

namespace orsa::kesncd {

namespace {

// What topModName points to, if SetTopModule made it. Analysers come and go in any order and the
// name is one for all of them, so it is released only when the next one is set or at unload. What a
// host itself puts there is the host's.
std::unique_ptr<char[]> ownedTopModName;

}  // namespace

KesNCD::KesNCD() : twrFileOn(false), hierRoot(nullptr), unlinkedScopes_(nullptr) {
  // Also for analysers that exist already: the name is one for all.
  topModName = nullptr;
}

KesNCD::~KesNCD() {
  DeleteHierarchy();
}

/// The copy is made first: where memory ends the old name stays.
void KesNCD::SetTopModule(const std::string& name) {
  auto copy = std::make_unique<char[]>(name.size() + 1);
  std::memcpy(copy.get(), name.c_str(), name.size() + 1);
  topModName = copy.get();
  ownedTopModName = std::move(copy);
}

void KesNCD::SetTWRFileOn(bool on) {
  twrFileOn = on;
}

void KesNCD::SetTWRFile(const std::string& path, int mode) {
  if (path.empty()) return;
  twrFile = path;
  ReadTWR2(mode);
}

bool KesNCD::SetVCDFile(const std::string& path, const std::set<std::string>& signals,
                        std::string& message) {
  vcdFile = path;
  return ReadVCD(signals, message);
}

bool KesNCD::SetVCDFileHier(std::string path, const std::set<std::string>& signals,
                            std::string& message) {
  vcdFile = std::move(path);
  return ReadVCDHier(signals, message);
}

bool KesNCD::ParseVcdFile(std::FILE* file) {
  return ReadFlat(file, nullptr);
}

/// Its result has always been 0; hosts look at what was matched.
int KesNCD::ParseVcdFile2(std::FILE* file, const std::set<std::string>& signals) {
  ReadFlat(file, &signals);
  return 0;
}

bool KesNCD::ParseVcdFileHier(std::FILE* file, const std::set<std::string>& /*signals*/) {
  return ReadTree(file, {codeIndex, hierRoot, unlinkedScopes_});
}

// cppcheck-suppress passedByValue ; the public interface says so
bool KesNCD::GetTopModuleNameInVCD(std::string path, std::string& topModule, std::string& message) {
  const File dump = OpenForReading(path);
  if (dump == nullptr) {
    message = "ERROR: Can not open '" + path + "' to read.\n";
    return false;
  }
  topModule = ProbeTopModule(dump.get());
  return true;
}

double KesNCD::GetTimeInVCD(char** tokens, int count) {
  return ReadTimescale(tokens, count, timeScale);
}

}  // namespace orsa::kesncd
