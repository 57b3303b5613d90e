// A result for programs: one object, a row a line.
//
//   {
//     "dump": "sim.vcd",
//     "figures": "exact",
//     "signals": [
//       {"path":"tb/clk","tc":4,"freq_mhz":50.0},
//       {"path":"tb/q","tc":0,"freq_mhz":null}
//     ]
//   }
#include <algorithm>
#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <variant>

#include "export/result_writer.h"
#include "text/printable.h"

namespace orsa::kesncd {

namespace {

// For single values only, of which nlohmann::ordered_json would be a second whole library.
using JsonValue = nlohmann::json;

/// Of all but a WideCount, which AppendCell takes care of.
JsonValue JsonOf(const Cell& cell) {
  if (const auto* text = std::get_if<std::string>(&cell)) return *text;
  if (const auto* count = std::get_if<std::int64_t>(&cell)) return *count;
  if (const double* value = ValueIn(cell)) return *value;
  // Nothing known, infinite or no number.
  return nullptr;
}

/// Appends a value's text. Names in a dump need not be UTF-8: stray bytes become the character that
/// stands for one. Characters that steer a terminal, of which JSON itself escapes only the oldest,
/// are written as escapes, which says the same.
void AppendValue(std::string& out, const JsonValue& value) {
  // The JSON library's `replace` puts U+FFFD in the place of bytes that are no UTF-8.
  const std::string text = value.dump(-1, ' ', false, JsonValue::error_handler_t::replace);
  for (std::string_view rest = text; !rest.empty();) {
    // Printable ASCII, which is nearly all; everything else is looked at by itself.
    const auto isPlain = [](char c) { return c >= ' ' && c < '\x7f'; };
    const auto plain = static_cast<std::size_t>(
        std::find_if_not(rest.begin(), rest.end(), isPlain) - rest.begin());
    out += rest.substr(0, plain);
    rest.remove_prefix(plain);
    if (rest.empty()) return;
    const Utf8Character character = FirstCharacter(rest);
    // Marks that change the direction of text, for one: harmless to programs, not to who looks at
    // it.
    if (IsSteering(character.code)) {
      std::array<char, 8> escape{};
      (void)std::snprintf(escape.data(), escape.size(), "\\u%04x",
                          static_cast<unsigned>(character.code));
      out += escape.data();
    } else {
      out += rest.substr(0, character.bytes);
    }
    rest.remove_prefix(character.bytes);
  }
}

/// Calling order as ResultWriter has it. A program may read the rows line by line.
class JsonWriter : public ResultWriter {
 public:
  JsonWriter(const ResultHead& head, ByteSink& out) : ResultWriter(out) {
    text_ += "{";
    AppendMembers(head.facts, head.lists);
    AppendKey(head.rowsName);
    text_ += "[";
    // Keys are made once: rows have many of them.
    for (const Column& column : head.columns) {
      AppendValue(keys_.emplace_back(), column.name);
      keys_.back() += ':';
    }
  }

  /// A line a row, so that a result can be searched by line.
  void Add(const Row& row) override {
    text_ += hasRows_ ? ",\n    " : "\n    ";
    hasRows_ = true;
    char separator = '{';
    for (std::size_t c = 0; c < row.size(); ++c) {
      text_ += separator;
      text_ += keys_[c];
      AppendCell(row[c]);
      separator = ',';
    }
    text_ += '}';
    PassOn();
  }

  // An array without rows is "[]", on the line of its key.
  void End(const ResultTail& tail) override {
    text_ += hasRows_ ? "\n  ]" : "]";
    AppendMembers(tail.facts, tail.lists);
    text_ += "\n}\n";
    PassOn(0);
  }

 private:
  /// Members of the outermost object are on lines of their own.
  void AppendKey(const std::string& key) {
    text_ += hasMembers_ ? ",\n  " : "\n  ";
    hasMembers_ = true;
    AppendValue(text_, key);
    text_ += ": ";
  }

  /// Sums may be longer than the whole numbers of the JSON library, though not than JSON's.
  void AppendCell(const Cell& cell) {
    if (std::holds_alternative<WideCount>(cell)) {
      AppendNumber(text_, cell);
    } else {
      AppendValue(text_, JsonOf(cell));
    }
  }

  /// Facts and lists of the head or the tail, in their order.
  void AppendMembers(const Facts& facts, const Lists& lists) {
    for (const auto& [key, cell] : facts) {
      AppendKey(key);
      AppendCell(cell);
    }
    for (const auto& [key, texts] : lists) {
      AppendKey(key);
      // A list may be as long as the dump, so it is passed on in between.
      const char* separator = "[";
      for (const std::string& text : texts) {
        text_ += separator;
        AppendValue(text_, text);
        PassOn();
        separator = ",";
      }
      text_ += texts.empty() ? "[]" : "]";
    }
  }

  std::vector<std::string> keys_;  // of a row, each with its colon
  bool hasMembers_ = false;
  bool hasRows_ = false;
};

}  // namespace

std::unique_ptr<ResultWriter> MakeJsonWriter(const ResultHead& head, ByteSink& out) {
  return std::make_unique<JsonWriter>(head, out);
}

}  // namespace orsa::kesncd
