// Loads a design from its file, and answers the host's operations with it.
#include "host/standalone/design_database.h"

#include <filesystem>
#include <fstream>

#include "host/standalone/standalone_host.h"

namespace orsa::kesncd::standalone {

namespace {

constexpr char kNoPreferences[] = ".";
constexpr char kBlanks[] = " \t\r";
/// The one state of its sources that the library asks for: loaded from them as they are now.
constexpr int kSourceIsCurrent = 0x200;

/// To say why nothing is read, before anything is dropped.
bool CanRead(const std::string& path) {
  std::ifstream file(path);
  file.peek();  // a folder opens, but nothing can be read from it
  return file.is_open() && !file.bad();
}

/// One net a line, blanks around it and blank lines left out. A carriage return counts as a blank,
/// for files of other systems.
std::unique_ptr<NC_DESIGN> ReadDesign(const std::string& path) {
  auto design = std::make_unique<NC_DESIGN>();
  std::ifstream file(path, std::ios::binary);
  for (std::string line; std::getline(file, line);) {
    const std::size_t start = line.find_first_not_of(kBlanks);
    if (start == std::string::npos) continue;
    const std::size_t end = line.find_last_not_of(kBlanks) + 1;
    design->nets.push_back(line.substr(start, end - start));
  }
  return design;
}

}  // namespace

/// Made when it is first asked for: a library's globals may be constructed in any order.
DesignDatabase& Database() {
  static DesignDatabase database;
  return database;
}

void DesignDatabase::SetSource(const std::string& database, const std::string& preferences) {
  database_ = database;
  preferences_ = preferences;
  // Even where the sources are the same as before: their files may have changed.
  isCurrent_ = false;
}

/// A loading that fails leaves what was loaded before.
bool DesignDatabase::Load() {
  message_.clear();
  if (!CanRead(database_)) {
    message_ = database_ + ": cannot be read";
  } else if (preferences_ != kNoPreferences && !CanRead(preferences_)) {
    message_ = preferences_ + ": cannot be read";
  }
  // The first source that cannot be read is named.
  if (!message_.empty()) return false;
  design_ = ReadDesign(database_);
  designName_ = std::filesystem::path(database_).stem().string();
  // Public data of the host's class, so it points into this object.
  name = designName_.c_str();
  isCurrent_ = true;
  return true;
}

const std::string& DesignMessage() {
  return Database().Message();
}

}  // namespace orsa::kesncd::standalone

// The operations that the library calls. Each only passes on: what they mean is the class's.

// The state is in Database(); the objects that hosts pass around hold no data of their own.
using orsa::kesncd::standalone::Database;

FileData::~FileData() = default;

/// No other state is known here.
int FileData::getIsSourceUpdated(int which) {
  return which == orsa::kesncd::standalone::kSourceIsCurrent && Database().IsCurrent() ? 1 : 0;
}

NC_DESIGN* NcdData::findData() {
  return Database().Design();
}

/// Releasing cannot fail.
int NcdData::releaseData() {
  Database().Release();
  return 1;
}

int NcdData::loadData() {
  return Database().Load() ? 1 : 0;
}

/// Without data: its operations ask Database().
CommonData* CommonData::getGlobalInstance() {
  static CommonData registry;
  return &registry;
}

int CommonData::isNcdAvailable() {
  return Database().Design() != nullptr ? 1 : 0;
}

NcdData* CommonData::findNcdObject() {
  return &Database();
}

NC_DESIGN* CommonData::findNcdPtr() {
  return Database().Design();
}

void CommonData::setNcdSource(const char* database, const char* preferences) {
  Database().SetSource(database, preferences);
}
