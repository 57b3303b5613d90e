// The manual page, in the man macros of roff.
#include <ostream>
//
// A few lines of the result:
//
//   .SS kesncd flat
//   Toggle frequencies of the signals declared in one module.
//   .TP
//   \fB\-\-top\fR \fINAME\fR
//   module whose signals are taken, a name or a path
#include <sstream>

#include "cli/options/help_text.h"
#include "cli/pages/pages.h"

namespace orsa::kesncd::cli {

namespace {

/// A text as roff shows it literally: hyphens stay ASCII, no line is taken for a request.
std::string RoffText(const std::string& text) {
  // A plain "-" may be shown as a hyphen that a shell does not understand when it is copied.
  std::string out;
  for (const char c : text) {
    if (c == '\\') {
      out += "\\e";
    } else if (c == '-') {
      out += "\\-";
    } else {
      out += c;
    }
  }
  // A line that begins with "." or "'" would be a request; \& is nothing, but comes first.
  return !out.empty() && (out[0] == '.' || out[0] == '\'') ? "\\&" + out : out;
}

/// \fB and \fI switch to bold and italic, \fR back.
std::string Bold(const std::string& text) {
  return "\\fB" + RoffText(text) + "\\fR";
}

std::string Italic(const std::string& text) {
  return "\\fI" + RoffText(text) + "\\fR";
}

/// Paragraphs; lines that are indented stand as they are. Examples and tables are indented in help
/// texts; .nf and .fi keep their line breaks. An empty line begins a paragraph.
void WriteText(std::ostream& out, const std::string& text) {
  std::istringstream lines(text);
  // Whether .nf is on.
  bool literal = false;
  for (std::string line; std::getline(lines, line);) {
    const bool indented = line.rfind("  ", 0) == 0;
    if (literal && !indented) out << ".fi\n";
    if (!literal && indented) out << ".nf\n";
    literal = indented;
    out << (line.empty() ? ".PP" : RoffText(line)) << "\n";
  }
  if (literal) out << ".fi\n";
}

/// The man page's version of UsageOf, which has no fonts.
std::string Synopsis(const Command& command) {
  std::string text = "[" + Italic("OPTION") + "]...";
  for (const Option& option : command.options()) {
    if (option.required) text += " " + Bold(option.flags.back()) + " " + Italic(option.argument);
  }
  for (const Option& operand : command.operands()) {
    const std::string name = Italic(operand.argument);
    text += " " + (operand.required ? name : "[" + name + "]") + (operand.repeats ? "..." : "");
  }
  return text + "\n";
}

/// An option or operand with its help below it: .TP indents what follows its first line.
void WriteRow(std::ostream& out, const Option& row) {
  out << ".TP\n";
  std::vector<std::string> flags;
  for (const std::string& flag : row.flags) flags.push_back(Bold(flag));
  out << Join(flags, ", ")
      // "--activity[=FILE]", "-o FILE", "--quiet".
      << (row.flags.empty() || row.argument.empty() ? ""
          : row.alsoAlone                           ? "[="
                                                    : " ")
      << (row.choices.empty() ? Italic(row.argument) : Bold(row.argument))
      << (row.alsoAlone ? "]" : "") << "\n"
      << RoffText(HelpWithDefault(row)) << "\n";
}

void WriteRows(std::ostream& out, const Command& command) {
  for (const Option& operand : command.operands()) WriteRow(out, operand);
  for (const Option& option : command.options()) WriteRow(out, option);
}

}  // namespace

/// .TH's date is left empty: a page must not depend on the day on which it was built.
void WriteManPage(std::ostream& out, const CommandLine& line) {
  const std::string name = line.program.name();
  out << ".TH KESNCD 1 \"\" \"" << name << " " KESNCD_VERSION << "\" \"User Commands\"\n"
      << ".SH NAME\n"
      << name << " \\- " << RoffText(line.program.summary()) << "\n"
      << ".SH SYNOPSIS\n"
      << Bold(name) << " " << Italic("COMMAND") << " ["
      << Italic("OPTION") + "]... [" + Italic("ARGUMENT") + "]...\n.br\n"
      << Bold(name) << " " << Italic("FILE") << "\n"
      << ".SH DESCRIPTION\n";
  WriteText(out, line.program.text());
  out << ".SH OPTIONS\n";
  WriteRows(out, line.program);
  out << ".SH COMMANDS\n";
  // One subsection a command, as all share one page.
  for (const Command& command : line.commands) {
    out << ".SS " << name << " " << command.name() << "\n"
        << RoffText(command.summary()) << ".\n.PP\n"
        << Bold(name + " " + command.name()) << " " << Synopsis(command);
    WriteText(out, command.text());
    WriteRows(out, command);
  }
}

}  // namespace orsa::kesncd::cli
