// SAIF in the subset that open and commercial readers share; what they do not agree on is not written.
#include "export/saif_text.h"

#include <algorithm>
#include <array>

namespace orsa::kesncd {

namespace {

// Readers take these for their own words wherever they stand.
constexpr std::array<std::string_view, 21> kKeywords{
    "T0",      "T1",       "TX",        "TZ",        "TB",      "TC",          "IG",
    "NET",     "PORT",     "INSTANCE",  "DURATION",  "DATE",    "DESIGN",      "VERSION",
    "VENDOR",  "DIVIDER",  "TIMESCALE", "DIRECTION", "SAIFILE", "SAIFVERSION", "PROGRAM_NAME"};

struct Unit {
  std::string_view name;
  std::uint64_t femtoseconds;
};

constexpr Unit kUnits[] = {{"us", 1'000'000'000}, {"ns", 1'000'000}, {"ps", 1'000}, {"fs", 1}};

// Deeper instances are indented no further, or a dump of deep scopes would become mostly blanks.
constexpr std::size_t kDeepestIndent = 32;

bool IsNameStart(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

bool IsNameRest(char c) {
  return IsNameStart(c) || (c >= '0' && c <= '9') ||
         std::string_view("$[]\\.").find(c) != std::string_view::npos;
}

/// A text that can stand between quotes: a quote would end it, and a line end is one too many.
std::string Quotable(const std::string& text) {
  std::string kept;
  for (const char c : text) {
    const bool isControl = static_cast<unsigned char>(c) < ' ' || c == '\x7F';
    if (c != '"') kept += isControl ? ' ' : c;
  }
  // A backslash at the end would take the closing quote with it.
  while (!kept.empty() && kept.back() == '\\') kept.pop_back();
  return kept;
}

/// A product that may be beyond 64 bits, in decimal digits of its own: no locale groups them.
std::string ProductText(std::uint64_t left, std::uint64_t right) {
  __extension__ using Wide = unsigned __int128;
  Wide product = static_cast<Wide>(left) * right;
  std::string digits;
  do {
    digits += static_cast<char>('0' + static_cast<int>(product % 10));
    product /= 10;
  } while (product != 0);
  std::reverse(digits.begin(), digits.end());
  return digits;
}

}  // namespace

std::optional<SaifTimescale> SaifTimescaleOf(std::uint64_t tickFemtoseconds) {
  if (tickFemtoseconds == 0) return {};
  for (const Unit& unit : kUnits) {
    for (const unsigned count : {100U, 10U, 1U}) {
      const std::uint64_t size = count * unit.femtoseconds;
      if (tickFemtoseconds % size == 0) {
        return SaifTimescale{count, unit.name, tickFemtoseconds / size};
      }
    }
  }
  return {};  // not reached: the last unit divides every tick
}

std::string_view SaifBareName(std::string_view name) {
  if (!name.empty() && name.front() == '\\') name.remove_prefix(1);
  return name;
}

bool IsSaifName(std::string_view bareName) {
  return !bareName.empty() && IsNameStart(bareName.front()) &&
         std::all_of(bareName.begin(), bareName.end(), IsNameRest) &&
         std::find(kKeywords.begin(), kKeywords.end(), bareName) == kKeywords.end();
}

std::string SaifNetName(std::string_view bareName) {
  std::string escaped;
  for (const char c : bareName) {
    if (c == '[' || c == ']') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

SaifStream::SaifStream(std::ostream& out, const SaifHead& head)
    : out_(out), observed_(head.observed), factor_(head.timescale.factor) {
  out_ << "(SAIFILE\n"
          "  (SAIFVERSION \"2.0\")\n"
          "  (DIRECTION \"backward\")\n"
          "  (DESIGN \""
       << Quotable(head.design) << "\")\n  (DATE \"" << Quotable(head.date)
       << "\")\n"
          "  (VENDOR \"libkesncd\")\n"
          "  (PROGRAM_NAME \"kesncd\")\n"
          "  (VERSION \""
       << Quotable(head.version)
       << "\")\n"
          "  (DIVIDER / )\n"
          "  (TIMESCALE "
       << std::to_string(head.timescale.count) << ' ' << head.timescale.unit << ")\n  ";
  Time("DURATION", head.observed);
  out_ << '\n';
}

void SaifStream::Indent() {
  for (std::size_t i = 0; i < std::min(depth_, kDeepestIndent); ++i) out_ << "  ";
}

void SaifStream::Time(std::string_view key, std::uint64_t ticks) {
  out_ << '(' << key << ' ' << ProductText(ticks, factor_) << ')';
}

void SaifStream::Open(std::string_view bareName) {
  CloseNets();
  Indent();
  out_ << "(INSTANCE " << bareName << '\n';
  ++depth_;
}

void SaifStream::Net(std::string_view bareName, const SaifFigures& figures) {
  if (!inNets_) {
    Indent();
    out_ << "(NET\n";
    ++depth_;
    inNets_ = true;
  }
  const std::uint64_t known = figures.t0 + figures.t1 + figures.tz;
  Indent();
  out_ << '(' << SaifNetName(bareName) << ' ';
  Time("T0", figures.t0);
  out_ << ' ';
  Time("T1", figures.t1);
  out_ << ' ';
  Time("TX", observed_ - std::min(observed_, known));
  out_ << ' ';
  Time("TZ", figures.tz);
  out_ << " (TB 0) (TC " << std::to_string(figures.toggles) << ") (IG "
       << std::to_string(figures.glitches) << "))\n";
}

void SaifStream::CloseNets() {
  if (!inNets_) return;
  inNets_ = false;
  --depth_;
  Indent();
  out_ << ")\n";
}

void SaifStream::Close() {
  CloseNets();
  --depth_;
  Indent();
  out_ << ")\n";
}

void SaifStream::Finish() {
  out_ << ")\n";
}

}  // namespace orsa::kesncd
