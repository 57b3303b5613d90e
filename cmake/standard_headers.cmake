# Headers of the standard library that most sources include: read once for all targets, they take a
# third of a second of each source instead of more than one. Usage: kesncd_standard_headers(TARGET)
# after the room "text" only, whose headers are those of all. g++ takes them at every level of
# optimisation but not for programs, which are compiled for another kind of addresses; clang
# would take them at one level only. Caches of compilers know nothing of them without more ado.
option(KESNCD_STANDARD_HEADERS "Read the standard library's headers once for all targets (g++ only)" OFF)
function(kesncd_standard_headers target)
  if(NOT KESNCD_STANDARD_HEADERS OR NOT CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    return()
  endif()
  # From there g++ 12 warns of the library's own copies of strings, as nothing marks them as such.
  target_compile_options(${target} PRIVATE -Wno-array-bounds -Wno-stringop-overflow)
  if(NOT target STREQUAL kesncd-room-text)
    target_precompile_headers(${target} REUSE_FROM kesncd-room-text)
    return()
  endif()
  target_precompile_headers(${target} PRIVATE
    <algorithm> <array> <atomic> <bit> <charconv> <cmath> <cstdint> <cstdio> <cstdlib> <cstring>
    <filesystem> <functional> <limits> <map> <memory> <mutex> <numeric> <optional> <ostream> <set>
    <span> <string> <string_view> <thread> <tuple> <unordered_map> <unordered_set> <utility>
    <variant> <vector>)
endfunction()
