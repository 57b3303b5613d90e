// A result for programs: one object, a row a line.
#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "export/result_writer.h"
#include "text/printable.h"

namespace orsa::kesncd {

namespace {

using nlohmann::json;

/// nlohmann's text of a value. Names in a dump need not be UTF-8: stray bytes become the character
/// that stands for one.
std::string Serialised(const json& value) {
  return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

/// The text of a string. Characters that steer a terminal, of which JSON itself escapes only the
/// oldest, are written as escapes, which says the same.
void AppendString(std::string& out, const std::string& text) {
  const std::string quoted = Serialised(text);
  for (std::string_view rest = quoted; !rest.empty();) {
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

void AppendCell(std::string& out, const Cell& cell) {
  if (const auto* text = std::get_if<std::string>(&cell)) return AppendString(out, *text);
  if (const auto* count = std::get_if<std::int64_t>(&cell)) {
    out += Serialised(*count);
  } else if (const double* value = ValueIn(cell)) {
    out += Serialised(*value);
  } else {
    out += Serialised(nullptr);
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
      std::string& key = keys_.emplace_back(keys_.empty() ? "{" : ",");
      AppendString(key, column.name);
      key += ':';
    }
  }

  void Add(const Row& row) override {
    text_ += hasRows_ ? ",\n    " : "\n    ";
    hasRows_ = true;
    for (std::size_t c = 0; c < row.size(); ++c) {
      text_ += keys_[c];
      AppendCell(text_, row[c]);
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
    AppendString(text_, key);
    text_ += ": ";
  }

  void AppendMembers(const Facts& facts, const Lists& lists) {
    for (const auto& [key, cell] : facts) {
      AppendKey(key);
      AppendCell(text_, cell);
    }
    for (const auto& [key, texts] : lists) {
      AppendKey(key);
      const char* separator = "[";
      for (const std::string& text : texts) {
        text_ += separator;
        AppendString(text_, text);
        PassOn();
        separator = ",";
      }
      text_ += texts.empty() ? "[]" : "]";
    }
  }

  std::vector<std::string> keys_;  // each with what stands before and after it
  bool hasMembers_ = false;
  bool hasRows_ = false;
};

}  // namespace

std::unique_ptr<ResultWriter> MakeJsonWriter(const ResultHead& head, ByteSink& out) {
  return std::make_unique<JsonWriter>(head, out);
}

}  // namespace orsa::kesncd
