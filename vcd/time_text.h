// Times with a unit, in whole femtoseconds: time scales and the bounds of windows.
#ifndef KESNCD_VCD_TIME_TEXT_H_
#define KESNCD_VCD_TIME_TEXT_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orsa::kesncd {

/// "1.5us", "10PS"; nothing for any other text, a part of a femtosecond or more than five hours.
/// Units are s to fs, in either case.
std::optional<std::uint64_t> Femtoseconds(std::string_view text);

/// The time in the largest unit that leaves it whole: "100ps".
std::string TimeText(std::uint64_t femtoseconds);

/// The time in nanoseconds, computed as the line readers compute it from that text: a host that
/// reads the same time scale gets the same figure to the last bit.
double Nanoseconds(std::uint64_t femtoseconds);

}  // namespace orsa::kesncd

#endif  // KESNCD_VCD_TIME_TEXT_H_
