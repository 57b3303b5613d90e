// Dumps of a line and figures of a line, so that a table can hold what goes in and what comes out.
#ifndef KESNCD_TESTS_SUPPORT_SMALL_DUMPS_H_
#define KESNCD_TESTS_SUPPORT_SMALL_DUMPS_H_

#include <algorithm>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "activity/activity_rows.h"
#include "activity/activity_run.h"
#include "tests/support/text_stream.h"

namespace orsa::kesncd {

/// A dump from a time scale ("-" for none), scopes ("tb{" to "}") with variables as
/// "reg:4:CODE:NAME", and after ";" the body as it is.
inline std::string SmallDump(const std::string& line) {
  const std::size_t body = line.find(';');
  std::istringstream words(line.substr(0, body));
  std::string word;
  words >> word;
  std::string text = word == "-" ? "" : "$timescale " + word + " $end\n";
  while (words >> word) {
    if (word == "}") {
      text += "$upscope $end\n";
    } else if (word.back() == '{') {
      text += "$scope module " + word.substr(0, word.size() - 1) + " $end\n";
    } else {
      for (std::size_t at = 0, parts = 0; parts < 3; ++parts) word[at = word.find(':', at)] = ' ';
      text += "$var " + word + " $end\n";
    }
  }
  text += "$enddefinitions $end";
  for (std::istringstream items(line.substr(body + 1)); items >> word;) {
    text += (word[0] == '#' ? '\n' : ' ') + word;
  }
  return text + "\n";
}

/// A line of a design of which not all is dumped, its scopes and ranges different each time.
inline std::string RandomRun(std::mt19937& random, const std::string& scale) {
  const auto below = [&](std::size_t limit) { return random() % limit; };
  std::string line = scale;
  std::string body;
  std::vector<std::string> scopes{"a", "b", "c"};
  std::shuffle(scopes.begin(), scopes.end(), random);
  for (const std::string& scope : scopes) {
    line += " " + scope + "{";
    for (const std::string name : {"p", "q", "r"}) {
      if (below(3) == 0) continue;
      const std::size_t low = below(3);
      const std::size_t width = 1 + below(4);
      const std::string code = below(4) == 0 ? "shared" + std::to_string(width) : scope + name;
      std::string left = std::to_string(low + width - 1);
      std::string right = std::to_string(low);
      if (below(4) == 0) left.swap(right);
      line += " wire:" + std::to_string(width) + ":" + code + ":" + name + "[" + left + ":" +
              right + "]";
      for (std::size_t i = below(6), time = 0; i > 0; --i) {
        std::string value(width, '0');
        for (char& bit : value) bit = "01xz"[below(4)];
        body += " #" + std::to_string(time += below(9)) + " b" + value + " " + code;
      }
    }
    line += " }";
  }
  return line + " reg:1:end:end ; #0" + body + " #100";
}

inline ActivityResult Counted(const std::string& line) {
  TextSource dump(SmallDump(line));
  return CountActivity(dump, {});
}

/// "tb/d[1] T0 T1 TX TZ TC IG" of every bit, the rows parted by ", ".
inline std::string FiguresText(const ActivityResult& result) {
  std::ostringstream text;
  ActivityRows(result).ForEachSignal(Declarations::kDump, [&](const SignalRow& row) {
    for (std::uint32_t bit = row.names.width(); bit-- > 0;) {
      std::string name = result.declarations.PathOf(row.variable.scope) + "/";
      row.names.AppendName(bit, name);
      const BitFigures& of = row.figures[bit];
      text << (text.tellp() > 0 ? ", " : "") << name << ' ' << of.t0 << ' ' << of.t1 << ' ' << of.tx
           << ' ' << of.tz << ' ' << of.tc << ' ' << of.ig;
    }
  });
  return text.str();
}

}  // namespace orsa::kesncd

#endif  // KESNCD_TESTS_SUPPORT_SMALL_DUMPS_H_
