// Rows for spreadsheets and scripts.
#include <variant>

#include "export/result_writer.h"

namespace orsa::kesncd {

namespace {

class CsvWriter : public ResultWriter {
 public:
  CsvWriter(const ResultHead& head, ByteSink& out) : ResultWriter(out) {
    for (const Column& column : head.columns) {
      if (!text_.empty()) text_ += ',';
      AppendQuoted(column.name);
    }
    text_ += "\r\n";
  }

  void Add(const Row& row) override {
    for (std::size_t c = 0; c < row.size(); ++c) {
      if (c > 0) text_ += ',';
      if (const auto* text = std::get_if<std::string>(&row[c])) {
        AppendQuoted(*text);
      } else {
        text_ += NumberText(row[c]);
      }
    }
    text_ += "\r\n";
    PassOn();
  }

  void End(const ResultTail& /*tail*/) override { PassOn(0); }

 private:
  void AppendQuoted(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
      text_ += text;
      return;
    }
    text_ += '"';
    for (const char c : text) text_.append(c == '"' ? 2 : 1, c);
    text_ += '"';
  }
};

}  // namespace

std::unique_ptr<ResultWriter> MakeCsvWriter(const ResultHead& head, ByteSink& out) {
  return std::make_unique<CsvWriter>(head, out);
}

}  // namespace orsa::kesncd
