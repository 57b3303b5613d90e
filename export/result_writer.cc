// What all formats share.
#include "export/result_writer.h"

#include <cmath>

#include "text/number.h"

namespace orsa::kesncd {

void ResultWriter::PassOn(std::size_t most) {
  if (text_.size() < most) return;
  out_.Write(text_);
  text_.clear();
}

const double* ValueIn(const Cell& cell) {
  const auto* const value = std::get_if<double>(&cell);
  return value != nullptr && std::isfinite(*value) ? value : nullptr;
}

std::string NumberText(const Cell& cell) {
  if (const auto* count = std::get_if<std::int64_t>(&cell)) return std::to_string(*count);
  if (const auto* count = std::get_if<WideCount>(&cell)) return WideText(*count);
  const double* const value = ValueIn(cell);
  return value == nullptr ? "" : ShortestText(*value);
}

}  // namespace orsa::kesncd
