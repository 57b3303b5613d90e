// A result for programs: one object, a row a line.
#include <array>
#include <cstdio>

#include "export/result_writer.h"
#include "text/printable.h"

namespace orsa::kesncd {

namespace {

void AppendEscape(std::string& out, char32_t code) {
  std::array<char, 8> text{};
  (void)std::snprintf(text.data(), text.size(), "\\u%04x", static_cast<unsigned>(code));
  out += text.data();
}

/// Names in a dump need not be UTF-8: a stray byte becomes the character that stands for one.
/// Characters that steer a terminal are written as escapes, which says the same.
void AppendString(std::string& out, std::string_view text) {
  out += '"';
  while (!text.empty()) {
    const char c = text.front();
    const Utf8Character character = FirstCharacter(text);
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (!character.isValid) {
      out += "\xef\xbf\xbd";
    } else if (IsSteering(character.code)) {
      AppendEscape(out, character.code);
    } else {
      out += text.substr(0, character.bytes);
    }
    text.remove_prefix(character.bytes);
  }
  out += '"';
}

void AppendCell(std::string& out, const Cell& cell) {
  if (const auto* text = std::get_if<std::string>(&cell)) return AppendString(out, *text);
  const std::string number = NumberText(cell);
  out += number.empty() ? "null" : number;
  const bool looksWhole = number.find_first_of(".e") == std::string::npos;
  if (ValueIn(cell) != nullptr && looksWhole) out += ".0";
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
