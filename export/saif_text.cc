// SAIF in the subset that open and commercial readers share; what they do not agree on is not
// written.
#include "export/saif_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <numeric>

#include "text/failure.h"

namespace orsa::kesncd {

namespace {

// Readers take these for their own words wherever they stand. A net called T0 would end a reader's
// list of nets.
constexpr std::array<std::string_view, 21> kKeywords{
    "T0",     "T1",      "TX",        "TZ",        "TB",      "TC",          "IG",
    "NET",    "PORT",    "INSTANCE",  "DURATION",  "DATE",    "DESIGN",      "VERSION",
    "VENDOR", "DIVIDER", "TIMESCALE", "DIRECTION", "SAIFILE", "SAIFVERSION", "PROGRAM_NAME"};

/// A unit's name in SAIF and how long it is.
struct Unit {
  std::string_view name;
  std::uint64_t femtoseconds;
};

// From the coarsest on: the first that fits gives the smallest numbers.
constexpr Unit kUnits[] = {{"us", 1'000'000'000}, {"ns", 1'000'000}, {"ps", 1'000}, {"fs", 1}};

// Deeper instances are indented no further, or a dump of deep scopes would become mostly blanks.
constexpr std::size_t kDeepestIndent = 32;

constexpr std::size_t kSaifBlock = std::size_t{1} << 16;  // characters written at once

/// ASCII only, whatever the locale says of letters.
bool IsNameStart(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

/// Dots and brackets are of names that were flattened or indexed.
bool IsNameRest(char c) {
  return IsNameStart(c) || (c >= '0' && c <= '9') ||
         std::string_view("$[]\\.").find(c) != std::string_view::npos;
}

/// A text that can stand between quotes: a quote would end it, and a line end is one too many.
std::string Quotable(const std::string& text) {
  // Control characters become blanks, quotes go.
  std::string kept;
  for (const char c : text) {
    const bool isControl = static_cast<unsigned char>(c) < ' ' || c == '\x7F';
    if (c != '"') kept += isControl ? ' ' : c;
  }
  // A backslash at the end would take the closing quote with it.
  while (!kept.empty() && kept.back() == '\\') kept.pop_back();
  return kept;
}

/// Adds a number in decimal digits of its own: no locale groups them. A time in a fine unit can be
/// beyond 64 bits.
void AppendNumber(std::string& text, SaifTimes::Wide number) {
  // 10^19, the largest power of ten below 2^64.
  constexpr std::uint64_t kPart = 10'000'000'000'000'000'000U;
  std::array<char, 20> digits;
  if (number >= kPart) {
    AppendNumber(text, number / kPart);
    const auto rest = static_cast<std::uint64_t>(number % kPart);
    // The lower part keeps its zeros: it is not the beginning of the number.
    auto* const end = std::to_chars(digits.begin(), digits.end(), rest).ptr;
    text.append(19 - static_cast<std::size_t>(end - digits.begin()), '0');
    text.append(digits.begin(), end);
    return;
  }
  auto* const end =
      std::to_chars(digits.begin(), digits.end(), static_cast<std::uint64_t>(number)).ptr;
  text.append(digits.begin(), end);
}

}  // namespace

/// The tick, stretched, is tick * numerator / denominator femtoseconds.
SaifTimes::SaifTimes(std::uint64_t tickFemtoseconds, std::uint64_t numerator,
                     std::uint64_t denominator) {
  // In lowest terms, so that a factor of 10/2 does not look as if it needed rounding.
  const std::uint64_t common = std::gcd(numerator, denominator);
  const Wide stretched = static_cast<Wide>(tickFemtoseconds) * (numerator / common);
  denominator_ = denominator / common;
  rounded_ = stretched % denominator_ != 0;
  // No unit is fine enough, not even 1 fs: each time is rounded by itself.
  if (rounded_) {
    // Ticks have up to 64 bits, so that is what is left for their factor.
    if (stretched > std::numeric_limits<std::uint64_t>::max() / 2) {
      throw Failure(FailureKind::Unusable, "the clock's periods are too long to scale times by");
    }
    unit_ = "1 fs";
    factor_ = stretched;
    return;
  }
  // In whole femtoseconds, so the last of the twelve units fits in any case.
  const Wide tick = stretched / denominator_;
  for (const Unit& unit : kUnits) {
    for (const unsigned count : {100U, 10U, 1U}) {
      // 100 us, 10 us, 1 us, 100 ns, ... 1 fs.
      const std::uint64_t size = count * unit.femtoseconds;
      if (tick % size != 0) continue;
      unit_ = std::to_string(count) + ' ' + std::string(unit.name);
      factor_ = tick / size;
      return;
    }
  }
}

/// Only the first one: backslashes inside are part of the name.
std::string_view SaifBareName(std::string_view name) {
  if (!name.empty() && name.front() == '\\') name.remove_prefix(1);
  return name;
}

bool IsSaifName(std::string_view bareName) {
  return !bareName.empty() && IsNameStart(bareName.front()) &&
         std::all_of(bareName.begin(), bareName.end(), IsNameRest) &&
         std::find(kKeywords.begin(), kKeywords.end(), bareName) == kKeywords.end();
}

void CheckSaifRoot(std::string_view bareName) {
  if (IsSaifName(bareName)) return;
  throw Failure(FailureKind::Unusable,
                "no reader of SAIF takes an instance that is called \"" + std::string(bareName) +
                    "\"; --strip and --root give the outermost one another name");
}

std::string SaifNetName(std::string_view bareName) {
  std::string escaped;
  for (const char c : bareName) {
    if (c == '[' || c == ']') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

/// Texts of the dump pass through Quotable.
SaifStream::SaifStream(std::ostream& out, const SaifHead& head, const SaifTimes& times)
    : out_(out), times_(times), observed_(head.observed) {
  // cppcheck-suppress useInitializationList ; the text is built of what is set before it
  text_ =
      "(SAIFILE\n"
      "  (SAIFVERSION \"2.0\")\n"
      "  (DIRECTION \"backward\")\n";
  text_ += "  (DESIGN \"" + Quotable(head.design) + "\")\n";
  text_ += "  (DATE \"" + Quotable(head.date) + "\")\n";
  text_ +=
      "  (VENDOR \"libkesncd\")\n"
      "  (PROGRAM_NAME \"kesncd\")\n";
  text_ += "  (VERSION \"" + Quotable(head.version) + "\")\n";
  text_ += "  (DIVIDER / )\n";
  text_ += "  (TIMESCALE " + times_.unit() + ")\n ";
  // Scaled as all times are, so that the times of a net add up to it.
  Time("DURATION", 0, observed_);
  text_ += '\n';
}

/// Two blanks a level.
void SaifStream::Indent() {
  text_.append(2 * std::min(depth_, kDeepestIndent), ' ');
}

void SaifStream::Line(std::string_view text) {
  Indent();
  text_ += text;
  text_ += '\n';
  if (text_.size() >= kSaifBlock) Flush();
}

/// A difference of two rounded points: parts of a time add up to the whole, however they are
/// rounded.
void SaifStream::Time(std::string_view key, std::uint64_t begin, std::uint64_t end) {
  text_ += " (";
  text_ += key;
  text_ += ' ';
  AppendNumber(text_, times_.Until(end) - times_.Until(begin));
  text_ += ')';
}

/// Ends the list of nets of the instance around it.
void SaifStream::Open(std::string_view bareName) {
  CloseNets();
  Line("(INSTANCE " + std::string(bareName));
  ++depth_;
}

/// The first net of an instance opens its list.
void SaifStream::Net(std::string_view netName, const BitFigures& figures) {
  if (!inNets_) {
    Line("(NET");
    ++depth_;
    inNets_ = true;
  }
  // The four times stand in a row: where one ends the next begins. TX gets what is missing to the
  // observed time, so that all nets fill DURATION: see the header.
  const std::uint64_t until1 = figures.t0 + figures.t1;
  const std::uint64_t untilZ = until1 + figures.tz;
  Indent();
  // Order of the text: T0 T1 TX TZ, while the times are put in a row as 0, 1, z, x.
  text_ += '(';
  text_ += netName;
  Time("T0", 0, figures.t0);
  Time("T1", figures.t0, until1);
  Time("TX", untilZ, observed_);
  Time("TZ", until1, untilZ);
  // TB is always 0: no value of a dump stands for it.
  text_ += " (TB 0) (TC ";
  AppendNumber(text_, figures.tc);
  text_ += ") (IG ";
  AppendNumber(text_, figures.ig);
  text_ += "))\n";
  if (text_.size() >= kSaifBlock) Flush();
}

void SaifStream::CloseNets() {
  if (!inNets_) return;
  inNets_ = false;
  --depth_;
  Line(")");
}

void SaifStream::Close() {
  CloseNets();
  --depth_;
  Line(")");
}

/// Closes the outermost bracket.
void SaifStream::Finish() {
  text_ += ")\n";
  Flush();
}

void SaifStream::Flush() {
  out_.write(text_.data(), static_cast<std::streamsize>(text_.size()));
  text_.clear();
}

}  // namespace orsa::kesncd
