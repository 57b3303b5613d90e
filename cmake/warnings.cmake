# What the project's own targets are compiled with, beyond the build type.
function(kesncd_strict target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
endfunction()
