// Numbers in dumps and reports. A dump means the same under every locale of the host, so all of it
// is read and written with a decimal point.
#ifndef KESNCD_TEXT_NUMBER_H_
#define KESNCD_TEXT_NUMBER_H_

#include <array>
#include <bit>
#include <clocale>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace orsa::kesncd {

/// Puts the calling thread into the "C" locale for its lifetime. Not for two objects that overlap
/// without nesting: each puts back the locale that it found.
class CLocaleScope {
 public:
  CLocaleScope();
  ~CLocaleScope();
  CLocaleScope(const CLocaleScope&) = delete;
  CLocaleScope& operator=(const CLocaleScope&) = delete;

 private:
  // The locale that the thread had before.
  locale_t host_;
};

/// Scans a number at the start of `text` as scanf's "%lf" does. False, with `value` untouched,
/// where there is none. Leading blanks, hexadecimal digits, "inf" and "nan" count as they do there,
/// and what follows the number does not matter: "10ps" is 10.
bool ScanDouble(const char* text, double& value);

/// The decimal integer at the start of `text`, cut to 32 bits; 0 where there is none.
int ScanInt(const char* text);

/// A double as printf's "%f" writes it: six decimals.
std::string FixedText(double value);

/// A double as an output stream with default formatting writes it: six significant digits.
std::string DisplayText(double value);

/// The shortest text that reads back to the same value. For files that other programs read: no
/// digit is lost.
std::string ShortestText(double value);
/// Appends that text, or a whole number's digits: a row of a million needs no text of its own.
void AppendShortest(std::string& to, double value);
void AppendDigits(std::string& to, std::uint64_t number);

/// The bytes at `bytes` as a number of 4 or 8 bytes, the first one lowest on every machine. Texts
/// are looked through, hashed and compared so many bytes at a time.
template <class Number>
Number LoadBytes(const char* bytes) {
  static_assert(sizeof(Number) == 4 || sizeof(Number) == 8);
  Number number = 0;
  std::memcpy(&number, bytes, sizeof number);
  if constexpr (std::endian::native == std::endian::little) {
    return number;
  } else if constexpr (sizeof number == 4) {
    return __builtin_bswap32(number);
  } else {
    return __builtin_bswap64(number);
  }
}

/// The same of the first `count` bytes, as if zeros came after them.
template <class Number>
Number LoadBytes(const char* bytes, std::size_t count) {
  std::array<char, sizeof(Number)> held{};
  if (count > 0) std::memcpy(held.data(), bytes, count);  // an empty text may have none at all
  return LoadBytes<Number>(held.data());
}

/// The value rounded to so many significant digits, without an exponent where a reader could still
/// tell the size: "33.33", "0.0005". For figures that a person reads. `digits` is 1 to 17: a double
/// holds no more.
std::string RoundedText(double value, int digits);

}  // namespace orsa::kesncd

#endif  // KESNCD_TEXT_NUMBER_H_
