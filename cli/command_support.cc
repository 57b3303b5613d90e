// What several commands do alike.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <sstream>

#include "cli/commands.h"
#include "cli/dump_header.h"
#include "kesncd/kesncd.h"

namespace kesncd_cli {

namespace {

constexpr std::size_t kModulesShown = 12;

std::string ModulesText(const DumpHeader& header) {
  if (header.modules.empty()) return "it declares no module; is it a VCD file?";
  std::string text = "its modules are ";
  for (std::size_t i = 0; i < header.modules.size() && i < kModulesShown; ++i) {
    text += (i > 0 ? ", " : "") + header.modules[i];
  }
  if (header.modules.size() > kModulesShown) {
    text += " and " + std::to_string(header.modules.size() - kModulesShown) + " more";
  }
  return text + "; --top takes the last part of such a path";
}

std::string WithoutLastNewline(std::string text) {
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

}  // namespace

void Say(const std::string& subject, const std::string& text) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::cerr << "kesncd: " << (subject.empty() ? "" : subject + ": ") << line << "\n";
  }
}

void AddOutputOptions(CLI::App& command, OutputOptions& options) {
  const std::map<std::string, Format> formats{
      {"table", Format::Table}, {"csv", Format::Csv}, {"json", Format::Json}};
  command
      .add_option_function<std::string>(
          "--format",
          [&options, formats](const std::string& name) { options.format = formats.at(name); },
          "how the result is written, table unless said otherwise")
      ->check(CLI::IsMember(std::vector<std::string>{"table", "csv", "json"}))
      ->type_name("");
  command.add_option("-o,--output", options.path, "write the result to FILE")->type_name("FILE");
}

void CheckInput(const std::string& path) {
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) {
    throw Failure(ExitStatus::Unusable, path + ": is a directory");
  }
}

void CheckReadable(const std::string& path) {
  CheckInput(path);
  std::ifstream file(path);
  file.ignore(std::numeric_limits<std::streamsize>::max());
  if (!file.eof()) throw Failure(ExitStatus::Unusable, path + ": cannot be read");
}

void SayWhyZero(const std::string& dump) {
  using namespace orsa::kesncd;
  if (timeScale == 0.0) {
    Say(dump,
        "no time scale was read, so all frequencies are 0: it must stand on a line of its own "
        "behind a line that holds \"$timescale\" alone");
  } else if (endCycle == startCycle) {
    Say(dump, "the dump spans no time, so all frequencies are 0");
  }
}

void ReadTree(orsa::kesncd::KesNCD& analyser, const std::string& dump) {
  std::string message;
  if (!analyser.SetVCDFileHier(dump, {}, message)) throw RunFailure(dump, message);
  SayWhyZero(dump);
  std::set<const orsa::kesncd::VmodHier*> unreachable;
  for (const auto& [code, scopes] : analyser.codeIndex) {
    for (const orsa::kesncd::VmodHier* scope : scopes) {
      if (scope->parent == nullptr && scope != analyser.hierRoot) unreachable.insert(scope);
    }
  }
  if (unreachable.empty()) return;
  Say(dump, std::to_string(unreachable.size()) +
                " further top-level scopes with signals cannot be reached from the root " +
                analyser.hierRoot->name);
}

Failure RunFailure(const std::string& dump, const std::string& libraryMessage) {
  const std::string message = dump + ": " + WithoutLastNewline(libraryMessage);
  if (orsa::kesncd::isTopModNameEverMatched == 0 && std::ifstream(dump).is_open()) {
    return {ExitStatus::NothingMatched,
            message + "\n" + dump + ": " + ModulesText(ReadDumpHeader(dump))};
  }
  return {ExitStatus::Unusable, message};
}

std::vector<std::string> ReadNames(const std::string& path) {
  std::ifstream file(path);
  std::vector<std::string> names;
  for (std::string line; std::getline(file, line);) {
    const std::size_t start = line.find_first_not_of(" \t\r");
    if (start == std::string::npos || line[start] == '#') continue;
    names.push_back(line.substr(start, line.find_last_not_of(" \t\r") - start + 1));
  }
  if (!file.eof()) throw Failure(ExitStatus::Unusable, path + ": cannot be read");
  return names;
}

std::vector<std::pair<std::string, Cell>> RunFacts(const std::string& dump,
                                                   const std::string& top) {
  using namespace orsa::kesncd;
  return {{"dump", dump},
          {"top", top},
          {"timescale_ns", timeScale},
          {"start_tick", startCycle},
          {"end_tick", endCycle}};
}

}  // namespace kesncd_cli
