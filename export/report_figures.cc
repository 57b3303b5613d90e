// Writes the figures of a report, and fewer of them where they would be too many bytes.
#include "export/report_figures.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>

#include "export/report_choice.h"
#include "text/number.h"

namespace orsa::kesncd {

namespace {

/// Text that is built up piece by piece: a report has millions of numbers, too many for a tree of
/// values. Calling order: as the JSON goes; Open and Close must match. Commas are put where they
/// belong.
class JsonText {
 public:
  // Inside an object, before each value.
  void Key(std::string_view key) {
    Separate();
    Quote(key);
    text_ += ':';
    isFirst_ = true;
  }
  void Member(std::string_view key, WideCount number) {
    Key(key);
    Number(number);
  }
  void Member(std::string_view key, std::string_view text) {
    Key(key);
    String(text);
  }
  // null where nothing is known.
  void Member(std::string_view key, const std::optional<double>& value) {
    Key(key);
    Measured(value);
  }
  void Open(char bracket) {
    Separate();
    text_ += bracket;
    isFirst_ = true;
  }
  void Close(char bracket) {
    text_ += bracket;
    isFirst_ = false;
  }
  void String(std::string_view text) {
    Separate();
    Quote(text);
  }
  /// What no reader of JSON holds exactly is written as a text. JavaScript's numbers are doubles:
  /// exact up to 2^53.
  void Number(WideCount number) {
    constexpr WideCount kExact = WideCount{1} << 53U;
    Separate();
    const std::string digits = WideText(number);
    text_ += number > kExact ? '"' + digits + '"' : digits;
  }
  /// A part of a whole from 0 to 1, with four digits, as the page shows no more.
  void Share(WideCount part, WideCount whole) {
    constexpr int kDigits = 4;
    Separate();
    const double share = whole == 0 ? 0 : static_cast<double>(part) / static_cast<double>(whole);
    text_ += RoundedText(share, kDigits);
  }
  void Measured(const std::optional<double>& value) {
    Separate();
    text_ += value ? ShortestText(*value) : "null";
  }
  std::string Take() { return std::move(text_); }

 private:
  /// Before every value or key but the first one in its bracket, and the value after its key.
  void Separate() {
    if (!isFirst_) text_ += ',';
    isFirst_ = false;
  }
  /// Names need not be UTF-8. The figures are in a <script> element, which "</script>" in a name
  /// would end.
  void Quote(std::string_view text) {
    const nlohmann::json quoted = text;
    for (const char c : quoted.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)) {
      if (c == '<') {
        text_ += "\\u003c";
      } else {
        text_ += c;
      }
    }
  }

  std::string text_;
  bool isFirst_ = true;
};

/// "key":[...], each item written by `write`.
template <class Items, class Write>
void WriteList(JsonText& json, std::string_view key, const Items& items, Write write) {
  json.Key(key);
  json.Open('[');
  for (const auto& item : items) write(item);
  json.Close(']');
}

/// "format" to "time": what the page says at its top.
void WriteHead(JsonText& json, const ActivityResult& result, const ReportFacts& facts) {
  // The page refuses figures of another format or version.
  json.Member("format", "kesncd-report");
  json.Member("version", 1);
  json.Member("program", facts.program);
  json.Key("dump");
  json.Open('{');
  // A hostile $version may be megabytes long.
  for (const auto& [key, text] : {std::pair("name", &facts.dump),
                                  {"simulator", &result.declarations.version},
                                  {"date", &result.declarations.date}}) {
    json.Member(key, std::string_view(*text).substr(0, 1000));
  }
  json.Close('}');
  // In ticks; the page turns them into seconds by tick_fs.
  json.Key("time");
  json.Open('{');
  // null without a time scale: the page then shows ticks.
  json.Key("tick_fs");
  if (result.tick) {
    json.Number(*result.tick);
  } else {
    json.Measured({});
  }
  json.Member("begin", result.firstTick);
  json.Member("end", result.lastTick);
  json.Member("observed", result.observedTicks);
  json.Close('}');
}

/// Of all signals, also those that are not listed.
void WriteCounts(JsonText& json, const ReportSource& source) {
  const auto count = [&](auto isCounted) {
    return static_cast<std::uint64_t>(
        std::count_if(source.signals.begin(), source.signals.end(),
                      [&](const ReportSignal& signal) { return isCounted(signal.sums); }));
  };
  // Variables without bits are in no list of signals.
  const ActivityNotes& notes = source.result.notes;
  json.Key("counts");
  json.Open('{');
  // Without the whole dump, which is the first of them.
  json.Member("modules", source.order.size() - 1);
  json.Member("signals", source.signals.size());
  json.Member("still_signals", count([](const ReportSums& sums) { return sums.tc == 0; }));
  json.Member("x_signals", count([](const ReportSums& sums) { return sums.tx > 0; }));
  json.Member("glitch_signals", count([](const ReportSums& sums) { return sums.ig > 0; }));
  json.Member("left_out", notes.typesWithoutBits.count + notes.withoutBits.count);
  json.Close('}');
}

/// "clocks", "findings", "reached" and "notes". The first two are absent where nobody asked.
void WriteFacts(JsonText& json, const ReportFacts& facts) {
  if (facts.clocks) {
    WriteList(json, "clocks", *facts.clocks, [&](const ReportFacts::Clock& clock) {
      json.Open('{');
      json.Member("name", clock.name);
      json.Member("mhz", clock.mhz);
      json.Member("reported_mhz", clock.reported);
      if (clock.reported) {
        json.Member("reported_by", clock.reportedBy);
      }
      json.Close('}');
    });
  }
  if (facts.findings) {
    WriteList(json, "findings", *facts.findings, [&](const ReportFacts::Finding& finding) {
      json.Open('{');
      json.Member("severity", finding.severity);
      json.Member("text", finding.text);
      json.Close('}');
    });
  }
  // An empty list where no netlist was given.
  WriteList(json, "reached", facts.reached, [&](const ReportFacts::Reached& reached) {
    json.Open('{');
    json.Member("what", reached.what);
    json.Member("reached", reached.reached);
    json.Member("total", reached.total);
    json.Member("source", reached.source);
    json.Close('}');
  });
  WriteList(json, "notes", facts.notes, [&](const std::string& note) { json.String(note); });
}

/// Lists of equal length, one for each property, by place: shorter than a list of objects, and what
/// the scripts want.
void WriteModules(JsonText& json, const ReportSource& source, const ReportChoice& choice) {
  const ModuleTree& tree = source.profile.modules;
  const Declarations& declarations = source.result.declarations;
  // Shares are of bits times this.
  const WideCount observed = source.result.observedTicks;
  const auto totals = [&](std::string_view key, auto write) {
    WriteList(json, key, choice.modules,
              [&](std::uint32_t module) { write(source.totals[module]); });
  };
  // Order: see report/data_format.md.
  json.Key("modules");
  json.Open('{');
  // Place 0 is the whole dump, which has no name.
  WriteList(json, "name", choice.modules, [&](std::uint32_t module) {
    json.String(module == 0 ? std::string() : declarations.scopes[tree.scopes[module]].name);
  });
  WriteList(json, "depth", choice.modules,
            [&](std::uint32_t module) { json.Number(tree.depths[module]); });
  WriteList(json, "signals", choice.names, [&](std::uint64_t names) { json.Number(names); });
  totals("bits", [&](const ReportSums& sums) { json.Number(sums.bits); });
  totals("toggles", [&](const ReportSums& sums) { json.Number(sums.tc); });
  totals("glitches", [&](const ReportSums& sums) { json.Number(sums.ig); });
  totals("still", [&](const ReportSums& sums) { json.Number(sums.still); });
  // Shares of all bits' observed time.
  totals("high", [&](const ReportSums& sums) { json.Share(sums.t1, sums.bits * observed); });
  totals("unknown", [&](const ReportSums& sums) { json.Share(sums.tx, sums.bits * observed); });
  WriteList(json, "own_bits", choice.own, [&](const ReportSums& sums) { json.Number(sums.bits); });
  WriteList(json, "own_toggles", choice.own, [&](const ReportSums& sums) { json.Number(sums.tc); });
  json.Close('}');
}

/// Toggles by window of modules with a course; those of others are added to the nearest one above.
void WriteCourses(JsonText& json, const ReportSource& source, const ReportChoice& choice) {
  const Profile& profile = source.profile;
  // A dump without time has no windows.
  if (profile.windows() == 0) return;
  // By course, then by window.
  std::vector<std::vector<std::uint64_t>> courses(choice.withCourse.size(),
                                                  std::vector<std::uint64_t>(profile.windows()));
  for (std::size_t module = 0; module < profile.toggles.size(); ++module) {
    // Every module's row goes to exactly one course, so courses add up to the total.
    const std::vector<std::uint64_t>& row = profile.toggles[module];
    std::vector<std::uint64_t>& course = courses[choice.courseOf[choice.places[module]]];
    for (std::size_t window = 0; window < row.size(); ++window) course[window] += row[window];
  }
  json.Key("activity");
  json.Open('{');
  // One edge more than windows.
  WriteList(json, "edges", profile.edges, [&](std::uint64_t edge) { json.Number(edge); });
  WriteList(json, "module", choice.withCourse, [&](std::uint32_t place) { json.Number(place); });
  WriteList(json, "toggles", courses, [&](const std::vector<std::uint64_t>& course) {
    json.Open('[');
    for (const std::uint64_t toggles : course) json.Number(toggles);
    json.Close(']');
  });
  // Stretches that were not observed, as pairs of ticks.
  WriteList(json, "gaps", profile.gaps, [&](const auto& gap) {
    json.Open('[');
    json.Number(gap.first);
    json.Number(gap.second);
    json.Close(']');
  });
  json.Close('}');
}

/// Lists by signal; "module" is a place.
void WriteSignals(JsonText& json, const ReportSource& source, const ReportChoice& choice) {
  const auto list = [&](std::string_view key, auto write) {
    WriteList(json, key, choice.signals, [&](std::uint32_t at) { write(source.signals[at]); });
  };
  json.Key("signals");
  json.Open('{');
  list("module", [&](const ReportSignal& signal) { json.Number(choice.places[signal.module]); });
  list("name", [&](const ReportSignal& signal) {
    json.String(source.result.declarations.variables[signal.variable].name);
  });
  list("bits", [&](const ReportSignal& signal) { json.Number(signal.sums.bits); });
  list("toggles", [&](const ReportSignal& signal) { json.Number(signal.sums.tc); });
  list("glitches", [&](const ReportSignal& signal) { json.Number(signal.sums.ig); });
  list("t1", [&](const ReportSignal& signal) { json.Number(signal.sums.t1); });
  list("tx", [&](const ReportSignal& signal) { json.Number(signal.sums.tx); });
  list("tz", [&](const ReportSignal& signal) { json.Number(signal.sums.tz); });
  json.Close('}');
}

/// What is not listed: signals by module, and modules by the nearest listed one above.
void WriteRest(JsonText& json, const ReportChoice& choice) {
  std::vector<std::uint32_t> rest;
  // Places of modules under which others are hidden.
  std::vector<std::uint32_t> hidden;
  for (std::uint32_t place = 0; place < choice.modules.size(); ++place) {
    if (choice.restSignals[place] > 0) rest.push_back(place);
    if (choice.hidden[place] > 0) hidden.push_back(place);
  }
  json.Key("rest");
  json.Open('{');
  WriteList(json, "module", rest, [&](std::uint32_t place) { json.Number(place); });
  WriteList(json, "signals", rest,
            [&](std::uint32_t place) { json.Number(choice.restSignals[place]); });
  WriteList(json, "toggles", rest,
            [&](std::uint32_t place) { json.Number(choice.restToggles[place]); });
  json.Close('}');
  json.Key("hidden");
  json.Open('{');
  WriteList(json, "module", hidden, [&](std::uint32_t place) { json.Number(place); });
  WriteList(json, "modules", hidden,
            [&](std::uint32_t place) { json.Number(choice.hidden[place]); });
  json.Close('}');
}

/// The whole text under these limits.
std::string Written(const ReportSource& source, const ReportFacts& facts,
                    const ReportLimits& limits) {
  const ReportChoice choice(source, limits);
  JsonText json;
  json.Open('{');
  WriteHead(json, source.result, facts);
  WriteCounts(json, source);
  WriteFacts(json, facts);
  WriteModules(json, source, choice);
  WriteCourses(json, source, choice);
  WriteSignals(json, source, choice);
  WriteRest(json, choice);
  json.Close('}');
  return json.Take();
}

}  // namespace

/// A first try with the limits given; most dumps fit.
std::string ReportJson(const ActivityResult& result, const Profile& profile,
                       const ReportFacts& facts, const ReportLimits& limits) {
  // The costly sums are made once; only the choice is repeated.
  const ReportSource source(result, profile);
  ReportLimits fitting = limits;
  std::string json = Written(source, facts, fitting);
  // Halves until it fits: what remains is what is most active. Two lists of one entry end the loop
  // in any case.
  while (json.size() > limits.bytes && fitting.signals + fitting.modules > 2) {
    fitting.signals /= 2;
    fitting.modules = std::max<std::size_t>(fitting.modules / 2, 1);
    json = Written(source, facts, fitting);
  }
  return json;
}

}  // namespace orsa::kesncd
