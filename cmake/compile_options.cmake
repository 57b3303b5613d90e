# How the project's own targets are compiled, beyond the build type.

function(kesncd_strict target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
  # g++ 12 warns of its own standard library where an optimised build inlines strings.
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(${target} PRIVATE -Wno-restrict -Wno-maybe-uninitialized)
  endif()
endfunction()

# What a release is hardened with. Binding at load is not asked for: hosts supply the symbols that
# they have when they are first called.
add_compile_options(
  "$<$<CONFIG:Release>:-fstack-protector-strong;-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
add_link_options("$<$<CONFIG:Release>:LINKER:-z,relro>")

# Headers of the standard library that most sources include: read once for all targets, they take a
# third of a second of each source instead of more than one. Usage: kesncd_standard_headers(TARGET)
# after the room "text" only, whose headers are those of all. g++ takes them at every level of
# optimisation but not for programs, which are compiled with -fPIE and not with -fPIC; clang
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

# The same for the tests' own sources, half of whose time goes into reading these headers, in every
# build but those with a cache of compilers. (The development build reads no common headers for the
# product itself, so that a source that lacks an include does not compile.) The target of the case
# files comes first, and nothing waits for more than its one source. Programs are compiled with -fPIC
# here, as headers that were compiled with it are not taken with -fPIE.
set(read_once ON)
if(CMAKE_CXX_COMPILER_LAUNCHER)
  set(read_once ${KESNCD_STANDARD_HEADERS})
endif()
option(KESNCD_TEST_HEADERS "Read the tests' common headers once for all tests (g++ only)"
  ${read_once})
function(kesncd_test_headers target)
  if(NOT KESNCD_TEST_HEADERS OR NOT CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    return()
  endif()
  target_compile_options(${target} PRIVATE -Wno-array-bounds -Wno-stringop-overflow -fPIC)
  if(NOT target STREQUAL kesncd-case-files)
    target_precompile_headers(${target} REUSE_FROM kesncd-case-files)
    return()
  endif()
  target_precompile_headers(${target} PRIVATE
    <gtest/gtest.h> <algorithm> <array> <cstdint> <cstdlib> <filesystem> <fstream> <functional>
    <map> <memory> <optional> <random> <regex> <set> <sstream> <string> <string_view> <vector>)
endfunction()
