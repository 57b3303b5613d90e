// What several commands do alike.
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <sstream>

#include "cli/commands/commands.h"
#include "cli/process/terminal.h"
#include "kesncd/kesncd.h"

namespace orsa::kesncd::cli {

namespace {

/// The modules that --top can name.
std::string ModulesText(const DumpInput& input) {
  const Declarations& declarations = input.declarations();
  std::vector<std::string> modules;
  for (std::uint32_t i = 1; i < declarations.scopes.size(); ++i) {
    const DumpScope& scope = declarations.scopes[i];
    if (scope.kind != "module" && !input.isPrepared()) continue;
    modules.push_back(declarations.PathOf(i));
  }
  return "its modules are " + ShortList(modules) + "; --top takes the last part of such a path";
}

/// The flat run goes by the name alone.
void SayWhetherAmbiguous(const DumpInput& input, const std::string& top) {
  const auto& scopes = input.declarations().scopes;
  const auto isMeant = [&](const DumpScope& scope) {
    return scope.name == top && !scope.variables.empty() &&
           (scope.kind == "module" || input.isPrepared());
  };
  const auto meant = std::count_if(scopes.begin(), scopes.end(), isMeant);
  if (meant < 2) return;
  Say(input.name(),
      std::to_string(meant) + " modules are called " + top + "; their signals are taken together");
}

std::string WithoutLastNewline(std::string text) {
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

void AddDump(Command& command, InputOptions& options) {
  command
      .AddFileOperand("DUMP", options.dump,
                      "value change dump, plain or packed; - for standard input")
      .Required();
}

void AddQuiet(Command& command, InputOptions& options) {
  command.AddFlag("-q,--quiet", options.quiet, "show no progress");
}

}  // namespace

void Say(const std::string& subject, const std::string& text) {
  const std::string program = Bold(STDERR_FILENO, "kesncd:");
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::cerr << program << " " << (subject.empty() ? "" : subject + ": ") << line << "\n";
  }
}

std::string ShortList(const std::vector<std::string>& names) {
  constexpr std::size_t kShown = 12;
  std::string text;
  for (std::size_t i = 0; i < std::min(names.size(), kShown); ++i) {
    text += (i == 0 ? "" : ", ") + names[i];
  }
  if (names.size() <= kShown) return text;
  return text + " and " + std::to_string(names.size() - kShown) + " more";
}

void AddOutputOptions(Command& command, OutputOptions& options) {
  command.AddChoice("--format",
                    {{"table", Format::Table}, {"csv", Format::Csv}, {"json", Format::Json}},
                    options.format, "how the result is written");
  command.AddFile("-o,--output", "FILE", options.path, "write the result to FILE");
}

void AddDumpOptions(Command& command, InputOptions& options) {
  AddDump(command, options);
  AddQuiet(command, options);
}

void AddReadingFlags(Command& command, InputOptions& options) {
  command.AddFlag("--as-is", options.asIs,
                  "read the dump untouched, as a host does, also where that gives wrong figures");
  AddQuiet(command, options);
}

void AddInputOptions(Command& command, InputOptions& options) {
  AddDump(command, options);
  AddReadingFlags(command, options);
}

void CheckReadable(const std::string& path) {
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) {
    throw Failure(FailureKind::Unusable, path + ": is a directory");
  }
  std::ifstream file(path);
  file.ignore(std::numeric_limits<std::streamsize>::max());
  if (!file.eof()) throw Failure(FailureKind::Unusable, path + ": cannot be read");
}

void SayWhyZero(const DumpInput& input) {
  using namespace orsa::kesncd;
  if (timeScale == 0.0) {
    Say(input.name(), "no time scale was read, so all frequencies are 0; kesncd check says why");
  } else if (endCycle == startCycle) {
    Say(input.name(), "the dump spans no time, so all frequencies are 0");
  }
}

void ReadTree(orsa::kesncd::KesNCD& analyser, DumpInput& input) {
  std::string message;
  const bool isRead = input.Read(
      [&](const std::string& path) { return analyser.SetVCDFileHier(path, {}, message); });
  if (!isRead) throw RunFailure(input, message);
  SayWhyZero(input);
  std::set<const orsa::kesncd::VmodHier*> unreachable;
  for (const auto& [code, scopes] : analyser.codeIndex) {
    for (const orsa::kesncd::VmodHier* scope : scopes) {
      if (scope->parent == nullptr && scope != analyser.hierRoot) unreachable.insert(scope);
    }
  }
  if (unreachable.empty()) return;
  Say(input.name(), std::to_string(unreachable.size()) +
                        " further top-level scopes with signals cannot be reached from the root " +
                        analyser.hierRoot->name);
}

void ReadFlat(orsa::kesncd::KesNCD& analyser, DumpInput& input,
              const std::set<std::string>& signals, const std::string& top) {
  SayWhetherAmbiguous(input, top);
  analyser.SetTopModule(top);
  std::string message;
  const bool isRead = input.Read(
      [&](const std::string& path) { return analyser.SetVCDFile(path, signals, message); });
  if (!isRead) throw RunFailure(input, message);
}

std::set<std::string> AllNames(const DumpInput& input) {
  std::set<std::string> names;
  for (const DumpVariable& variable : input.declarations().variables) names.insert(variable.name);
  return names;
}

Failure RunFailure(const DumpInput& input, const std::string& libraryMessage) {
  const std::string message = input.name() + ": " + WithoutLastNewline(libraryMessage);
  if (orsa::kesncd::isTopModNameEverMatched != 0) return {FailureKind::Unusable, message};
  return {FailureKind::NothingMatched, message + "\n" + input.name() + ": " + ModulesText(input)};
}

std::vector<std::string> ReadNames(const std::string& path) {
  std::ifstream file(path);
  std::vector<std::string> names;
  for (std::string line; std::getline(file, line);) {
    const std::size_t start = line.find_first_not_of(" \t\r");
    if (start == std::string::npos || line[start] == '#') continue;
    names.push_back(line.substr(start, line.find_last_not_of(" \t\r") - start + 1));
  }
  if (!file.eof()) throw Failure(FailureKind::Unusable, path + ": cannot be read");
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

}  // namespace orsa::kesncd::cli
