// What all formats share.
#include "export/result_writer.h"

#include <cmath>

#include "text/number.h"

namespace orsa::kesncd {

/// Most rows are shorter than a call is worth; see kBlock.
void ResultWriter::PassOn(std::size_t most) {
  if (text_.size() < most) return;
  out_.Write(text_);
  text_.clear();
}

// An infinite or undefined value is a rate that nobody knows.
const double* ValueIn(const Cell& cell) {
  const auto* const value = std::get_if<double>(&cell);
  return value != nullptr && std::isfinite(*value) ? value : nullptr;
}

/// As few digits as give the same double when they are read again.
void AppendNumber(std::string& to, const Cell& cell) {
  if (const auto* wide = std::get_if<WideCount>(&cell)) {
    if (*wide <= UINT64_MAX) {
      AppendDigits(to, static_cast<std::uint64_t>(*wide));
    } else {
      to += WideText(*wide);
    }
  } else if (const auto* count = std::get_if<std::int64_t>(&cell)) {
    to += std::to_string(*count);
  } else if (const double* const value = ValueIn(cell)) {
    AppendShortest(to, *value);
  }
}

std::string NumberText(const Cell& cell) {
  std::string text;
  AppendNumber(text, cell);
  return text;
}

}  // namespace orsa::kesncd
