#include "kesncd/text/line_source.h"

namespace orsa::kesncd {

const char* LineSource::Next() {
  if (stream_ == nullptr) return nullptr;
  return std::fgets(buffer_.data(), static_cast<int>(buffer_.size()), stream_);
}

}  // namespace orsa::kesncd
