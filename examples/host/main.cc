// A small host: it defines the operations that the library leaves to a design application, and
// drives an analyser through the whole calling order.
//
//   tiny_host DUMP TOP TIMING_REPORT
#include <cstdint>
#include <iostream>
#include <map>
#include <string>

#include "host/design_data.h"
#include "host/power_data.h"
#include "kesncd/kesncd.h"

// The host's side: one design, always loaded, and one power table.

class NC_DESIGN {};

namespace {

NC_DESIGN design;

NcdData& Database() {
  static NcdData database;
  database.name = "tiny";
  return database;
}

PD_TBLSECT& Connections() {
  static PD_TABLE table;
  static PD_TBLSECT section;
  table.rows = {{"SIGNAL", "txd", ""},
                {"INPUT", "txd_reg", "IOLOGIC"},
                {"OUTPORT", "txd", "DO"},
                {"SIGNAL", "fault", ""},
                {"OUTPUT", "fault", "PIO"}};
  section.table = &table;
  return section;
}

}  // namespace

FileData::~FileData() = default;
int FileData::getIsSourceUpdated(int) {
  return 1;
}

NC_DESIGN* NcdData::findData() {
  return &design;
}
int NcdData::releaseData() {
  return 1;
}
int NcdData::loadData() {
  return 1;
}

CommonData* CommonData::getGlobalInstance() {
  static CommonData registry;
  return &registry;
}
int CommonData::isNcdAvailable() {
  return 1;
}
NcdData* CommonData::findNcdObject() {
  return &Database();
}
NC_DESIGN* CommonData::findNcdPtr() {
  return &design;
}
void CommonData::setNcdSource(const char*, const char*) {}

NCD_EXTRACTION::NCD_EXTRACTION() : state(nullptr) {}
NCD_EXTRACTION::~NCD_EXTRACTION() = default;
std::intptr_t NCD_EXTRACTION::extractNCD(NC_DESIGN*, std::string designName, std::string scope,
                                         std::map<std::string, double> frequencies) {
  std::cout << "design " << designName << " in " << scope << ": " << frequencies.size()
            << " frequencies, clk " << frequencies["clk"] << " MHz, clk_in "
            << frequencies["clk_in"] << " MHz\n";
  return 1;
}

PD_SECTION::~PD_SECTION() = default;
PD_SECTION* PD_DATA::GetSection(const char* name) {
  return std::string(name) == "Hierarchical Connections" ? &Connections() : nullptr;
}
const char* PD_TABLE::GetValueAt(int row, int column) {
  return rows[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)].c_str();
}

// The program.

int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "tiny_host DUMP TOP TIMING_REPORT\n";
    return 2;
  }
  orsa::kesncd::KesNCD analyser;
  analyser.SetTopModule(argv[2]);
  analyser.SetTWRFileOn(true);
  analyser.SetTWRFile(argv[3], 0);
  std::string message;
  if (!analyser.SetVCDFile(argv[1], {"clk", "txd"}, message) ||
      !analyser.SetVCDFileHier(argv[1], {}, message)) {
    std::cerr << message << "\n";
    return 1;
  }
  analyser.extractName = "top";
  if (analyser.ExtractNCD() == 0) return 1;
  PD_DATA document;
  for (const orsa::kesncd::KesSigFreq& signal : analyser.CreateKesSigFreq(&document, 0.0, true)) {
    std::cout << signal.name << " " << signal.freq << " MHz, " << signal.inputs.size()
              << " inputs, " << signal.outputs.size() << " outputs\n";
  }
  return 0;
}
