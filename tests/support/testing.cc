// What tests share: dumps as temporary files, and results as texts.
#include "tests/support/testing.h"

#include <unistd.h>

#include <array>
#include <charconv>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <regex>

namespace orsa::kesncd {

TempDir::TempDir() {
  std::string pattern = (std::filesystem::temp_directory_path() / "kesncd-XXXXXX").string();
  path_ = mkdtemp(pattern.data());
}

TempDir::~TempDir() {
  std::filesystem::remove_all(path_);
}

std::string TempDir::Write(const std::string& name, const std::string& text) const {
  std::ofstream(Path(name), std::ios::binary) << text;
  return Path(name);
}

std::string ReadAll(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> DumpsIn(const std::string& folder) {
  std::vector<std::string> dumps;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() == ".vcd") dumps.push_back(entry.path().string());
  }
  EXPECT_FALSE(dumps.empty()) << folder;
  return dumps;
}

std::string Times(int count, const std::string& text) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

std::string TextOf(const std::map<std::string, double>& frequencies) {
  std::string text;
  for (const auto& [name, mhz] : frequencies) {
    std::array<char, 32> digits{};  // a stream would swallow a failing allocation
    std::to_chars(digits.begin(), digits.end(), mhz, std::chars_format::general, 6);
    text += " " + name + "=" + digits.data();
  }
  return text;
}

std::vector<std::string> Cut(const std::string& text, const std::string& separator) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  for (std::size_t end = 0; end != std::string::npos; start = end + separator.size()) {
    end = text.find(separator, start);
    parts.push_back(text.substr(start, end - start));
  }
  return parts;
}

std::string Dump(const std::string& lines) {
  static const std::map<std::string, std::string> kLines = {{"SCALE", "$timescale~1ns~$end"},
                                                            {"TOP", "$scope module top $end"},
                                                            {"U", "$scope module u $end"},
                                                            {"CLK", "$var wire 1 ! clk $end"},
                                                            {"QU", "$var wire 1 # u_q $end"},
                                                            {"BUS", "$var wire 8 \" d [7:0] $end"},
                                                            {"UP", "$upscope $end"},
                                                            {"END", "$enddefinitions $end"},
                                                            {"HEAD", "SCALE~TOP~CLK~BUS~UP~END"}};
  std::string text;
  for (const std::string& line : Cut(lines, "~")) {
    const auto known = kLines.find(line);
    text += (text.empty() ? "" : "\n") + (known == kLines.end() ? line : Dump(known->second));
  }
  return text;
}

std::vector<std::vector<std::string>> Rows(const std::string& table, const std::string& separator) {
  std::vector<std::vector<std::string>> rows;
  const std::string joined = std::regex_replace(table, std::regex("\n    "), "");
  for (const std::string& row : Cut(joined, separator)) rows.push_back(Cut(row, " => "));
  return rows;
}

}  // namespace orsa::kesncd
