#include "cli/pages/option_table.h"

#include <CLI/CLI.hpp>
#include <set>
#include <sstream>

namespace orsa::kesncd::cli {

namespace {

/// The values of a type name such as "{table,csv,json}" or "TEXT:{table,csv,json}".
std::vector<std::string> Choices(const std::string& typeName) {
  const std::size_t open = typeName.find('{');
  const std::size_t close = typeName.find('}');
  std::vector<std::string> choices;
  if (open == std::string::npos || close == std::string::npos) return choices;
  std::istringstream values(typeName.substr(open + 1, close - open - 1));
  for (std::string value; std::getline(values, value, ',');) choices.push_back(value);
  return choices;
}

/// The name before a validator's own words: "N" of "N:INT in [0 - 2]".
std::string ArgumentName(const std::string& typeName, const std::vector<std::string>& choices) {
  const std::string name = typeName.substr(0, typeName.find(':'));
  return choices.empty() || (!name.empty() && name[0] != '{') ? name : Join(choices, "|");
}

OptionRow Row(const CLI::Option& option) {
  OptionRow row;
  for (const std::string& name : option.get_snames()) row.flags.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) row.flags.push_back("--" + name);
  row.help = option.get_description();
  row.required = option.get_required();
  row.repeats = option.get_expected_max() > 1;
  if (option.get_positional()) {
    row.argument = option.get_name(true);
  } else if (option.get_type_size() != 0) {
    row.choices = Choices(option.get_type_name());
    row.argument = ArgumentName(option.get_type_name(), row.choices);
  }
  return row;
}

CommandRow Command(const CLI::App& app) {
  CommandRow row;
  row.name = app.get_name();
  const std::string description = app.get_description();
  const std::size_t end = description.find('\n');
  row.summary = description.substr(0, end);
  if (end != std::string::npos) row.text = description.substr(end + 1);
  for (const CLI::Option* option : app.get_options()) {
    if (option->get_group().empty()) continue;  // hidden
    (option->get_positional() ? row.operands : row.options).push_back(Row(*option));
  }
  return row;
}

}  // namespace

bool OptionRow::TakesFile() const {
  static const std::set<std::string> files{"DUMP", "FILE", "REPORT", "TABLE"};
  return files.contains(argument);
}

OptionTable ReadOptionTable(const CLI::App& app) {
  OptionTable table{Command(app), {}};
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (!command->get_group().empty()) table.commands.push_back(Command(*command));
  }
  return table;
}

std::vector<std::string> FlagsOf(const CommandRow& command) {
  std::vector<std::string> flags;
  for (const OptionRow& option : command.options) {
    flags.insert(flags.end(), option.flags.begin(), option.flags.end());
  }
  return flags;
}

std::string Join(const std::vector<std::string>& parts, const std::string& separator) {
  std::string text;
  for (const std::string& part : parts) text += (text.empty() ? "" : separator) + part;
  return text;
}

}  // namespace orsa::kesncd::cli
