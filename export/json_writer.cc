// A result for programs: one object, a row a line.
#include <algorithm>
#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <variant>

#include "export/result_writer.h"
#include "text/printable.h"

namespace orsa::kesncd {

namespace {

using OrderedJson = nlohmann::ordered_json;

OrderedJson JsonOf(const Cell& cell) {
  if (const auto* wide = std::get_if<WideCount>(&cell)) {
    return static_cast<std::uint64_t>(*wide);
  }
  if (const auto* text = std::get_if<std::string>(&cell)) return *text;
  if (const auto* count = std::get_if<std::int64_t>(&cell)) return *count;
  if (const double* value = ValueIn(cell)) return *value;
  return nullptr;
}

/// Appends a value's text. Names in a dump need not be UTF-8: stray bytes become the character that
/// stands for one. Characters that steer a terminal, of which JSON itself escapes only the oldest,
/// are written as escapes, which says the same.
void AppendValue(std::string& out, const OrderedJson& value) {
  const std::string text = value.dump(-1, ' ', false, OrderedJson::error_handler_t::replace);
  for (std::string_view rest = text; !rest.empty();) {
    const auto isPlain = [](char c) { return c >= ' ' && c < '\x7f'; };
    const auto plain = static_cast<std::size_t>(
        std::find_if_not(rest.begin(), rest.end(), isPlain) - rest.begin());
    out += rest.substr(0, plain);
    rest.remove_prefix(plain);
    if (rest.empty()) return;
    const Utf8Character character = FirstCharacter(rest);
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

class JsonWriter : public ResultWriter {
 public:
  JsonWriter(const ResultHead& head, ByteSink& out) : ResultWriter(out) {
    text_ += "{";
    AppendMembers(head.facts, head.lists);
    AppendKey(head.rowsName);
    text_ += "[";
    for (const Column& column : head.columns) {
      AppendValue(keys_.emplace_back(), column.name);
      keys_.back() += ':';
    }
  }

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

  void End(const ResultTail& tail) override {
    text_ += hasRows_ ? "\n  ]" : "]";
    AppendMembers(tail.facts, tail.lists);
    text_ += "\n}\n";
    PassOn(0);
  }

 private:
  void AppendKey(const std::string& key) {
    text_ += hasMembers_ ? ",\n  " : "\n  ";
    hasMembers_ = true;
    AppendValue(text_, key);
    text_ += ": ";
  }

  /// Sums may be longer than the whole numbers of the JSON library, though not than JSON's.
  void AppendCell(const Cell& cell) {
    const auto* const wide = std::get_if<WideCount>(&cell);
    if (wide != nullptr && *wide > UINT64_MAX) {
      text_ += WideText(*wide);
    } else {
      AppendValue(text_, JsonOf(cell));
    }
  }

  void AppendMembers(const Facts& facts, const Lists& lists) {
    for (const auto& [key, cell] : facts) {
      AppendKey(key);
      AppendCell(cell);
    }
    for (const auto& [key, texts] : lists) {
      AppendKey(key);
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
