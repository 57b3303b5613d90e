# What the project's own targets are compiled with, beyond the build type.
function(kesncd_strict target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
  # g++ 12 warns of its own standard library where an optimised build inlines strings.
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(${target} PRIVATE -Wno-restrict -Wno-maybe-uninitialized)
  endif()
endfunction()
