// Rows for spreadsheets and scripts.
//
// For example, with quotes only where a field needs them:
//
//   path,t0,t1,tx,tz,tc,ig,freq_mhz,toggle_rate,high
//   tb/count[1],20,20,0,0,2,0,25,50,0.5
//   "a,b",...
#include <variant>

#include "export/result_writer.h"

namespace orsa::kesncd {

namespace {

/// The heading goes out with the first rows. Facts, lists and the last line are left out: a program
/// that reads CSV expects rows.
class CsvWriter : public ResultWriter {
 public:
  CsvWriter(const ResultHead& head, ByteSink& out) : ResultWriter(out) {
    for (const Column& column : head.columns) {
      if (!text_.empty()) text_ += ',';
      AppendQuoted(column.name);
    }
    // The line end that RFC 4180 asks for.
    text_ += "\r\n";
  }

  void Add(const Row& row) override {
    for (std::size_t c = 0; c < row.size(); ++c) {
      if (c > 0) text_ += ',';
      if (const auto* text = std::get_if<std::string>(&row[c])) {
        AppendQuoted(*text);
      } else {
        AppendNumber(text_, row[c]);
      }
    }
    text_ += "\r\n";
    PassOn();
  }

  // Also an empty result has its heading.
  void End(const ResultTail& /*tail*/) override { PassOn(0); }

 private:
  /// A quote inside is doubled.
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
