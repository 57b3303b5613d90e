// A host whose answers a test sets, and which notes what it is asked.
#include "tests/support/test_host.h"

#include <sstream>
#include <stdexcept>

orsa::kesncd::TestHost orsa::kesncd::testHost;
using orsa::kesncd::testHost;

namespace {

CommonData registry;
NcdData database;

/// Writes a call down; false when it is to fail.
bool Called(const std::string& call) {
  testHost.calls += call + "; ";
  const std::string operation = call.substr(0, call.find(' '));
  if (testHost.throwing == operation) throw std::runtime_error(operation);
  return testHost.failing != operation;
}

}  // namespace

FileData::~FileData() = default;
int FileData::getIsSourceUpdated(int which) {
  return Called("getIsSourceUpdated " + std::to_string(which)) ? 7 : 0;
}
NC_DESIGN* NcdData::findData() {
  return Called("findData") ? &testHost.loaded : nullptr;
}
int NcdData::releaseData() {
  return Called("releaseData") ? -1 : 0;
}
int NcdData::loadData() {
  return Called("loadData") ? 1 : 0;
}
CommonData* CommonData::getGlobalInstance() {
  return Called("getGlobalInstance") ? &registry : nullptr;
}
int CommonData::isNcdAvailable() {
  return Called("isNcdAvailable") ? 1 : 0;
}
NcdData* CommonData::findNcdObject() {
  database.name = testHost.designName;
  return Called("findNcdObject") ? &database : nullptr;
}
NC_DESIGN* CommonData::findNcdPtr() {
  return Called("findNcdPtr") ? &testHost.current : nullptr;
}
void CommonData::setNcdSource(const char* source, const char* preferences) {
  Called(std::string("setNcdSource '") + source + "' '" + preferences + "'");
}

NCD_EXTRACTION::NCD_EXTRACTION() : state(&testHost) {
  Called("NCD_EXTRACTION");
  ++testHost.extractions;
}
NCD_EXTRACTION::~NCD_EXTRACTION() {
  --static_cast<orsa::kesncd::TestHost*>(state)->extractions;
}
std::intptr_t NCD_EXTRACTION::extractNCD(NC_DESIGN* design, std::string designName,
                                         std::string scope,
                                         std::map<std::string, double> frequencies) {
  std::ostringstream given;
  given.exceptions(std::ios::badbit);
  given << "extractNCD " << design->name << ' ' << designName << ' ' << scope << ' ' << option;
  for (const auto& [net, frequency] : frequencies) given << ' ' << net << '=' << frequency;
  return Called(given.str()) ? std::intptr_t{-42} : 0;
}

PD_SECTION::~PD_SECTION() = default;
PD_SECTION* PD_DATA::GetSection(const char* name) {
  return Called(std::string("GetSection ") + name) ? testHost.section : nullptr;
}
const char* PD_TABLE::GetValueAt(int row, int column) {
  if (testHost.cell) return testHost.cell(*this, row, column);
  static std::string buffer;  // one for all cells, as hosts may have it
  buffer = rows.at(static_cast<std::size_t>(row)).at(static_cast<std::size_t>(column));
  return buffer.c_str();
}
