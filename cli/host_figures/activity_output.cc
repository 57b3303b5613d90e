// Where activity files go, and what they hold.
#include "cli/host_figures/activity_output.h"

#include <array>
#include <charconv>
#include <filesystem>
#include <string_view>

#include "cli/output/output.h"
#include "text/byte_stream.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

// The first bytes of every activity file, by which one is known.
constexpr std::string_view kStart = "module | ";

}  // namespace

std::string ActivityPath(const std::string& asked, const std::string& dump) {
  if (!asked.empty()) return asked;
  std::error_code ignored;
  // A pipe or a device has no folder of its own: "/dev/stdin.txt" would be a surprise.
  if (std::filesystem::is_regular_file(dump, ignored)) return dump + ".txt";
  const std::string name = dump == "-" ? "standard input" : dump;
  throw Failure(FailureKind::Unusable,
                name + ": is no file with a place beside it; --activity=FILE");
}

void RequireActivityFile(const std::string& path) {
  // What is no regular file cannot lose what it held.
  if (!PlaceOf(path).IsRegular()) return;
  std::array<char, kStart.size()> start{};
  FileSource file(path);
  const std::size_t size = ReadFully(file, start.data(), start.size());
  // An empty file fails as well: it may be another program's output that is still to come.
  if (std::string_view(start.data(), size) == kStart) return;
  throw Failure(FailureKind::Unusable,
                path + ": is there already and is no activity file; it is left as it is");
}

ActivityText::ActivityText(const std::string& module)
    : text_(std::string(kStart) + module + "\n") {}

void ActivityText::Add(const std::string& signal, double frequency) {
  // As the library writes them: with a decimal point whatever the locale.
  constexpr int kDecimals = 6;
  // 309 digits, a point and six decimals are the longest.
  std::array<char, 400> number{};
  const char* const end =
      std::to_chars(number.begin(), number.end(), frequency, std::chars_format::fixed, kDecimals)
          .ptr;
  text_ += "signal | " + signal + " | ";
  text_.append(number.data(), static_cast<std::size_t>(end - number.data()));
  text_ += '\n';
}

void ActivityText::Save(const std::string& path) const {
  OutputFile file(path);
  file.Write(text_);
  file.Commit();
}

}  // namespace orsa::kesncd::cli
