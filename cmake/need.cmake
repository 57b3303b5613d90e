# Looks for what the project builds on, and says which Debian package holds what is missing.
#
#   kesncd_need(ZLIB zlib1g-dev)                       a package that CMake finds
#   kesncd_need_library(CSV csv.h csv libcsv-dev)      sets CSV_INCLUDE_DIR and CSV_LIBRARY
macro(kesncd_need package debian)
  find_package(${package} QUIET ${ARGN})
  if(NOT ${package}_FOUND)
    message(FATAL_ERROR "${package} was not found: on Debian it is in the package ${debian}")
  endif()
endmacro()

macro(kesncd_need_library name header library debian)
  find_path(${name}_INCLUDE_DIR ${header})
  find_library(${name}_LIBRARY ${library})
  if(NOT ${name}_INCLUDE_DIR OR NOT ${name}_LIBRARY)
    message(FATAL_ERROR "${header} was not found: on Debian it is in the package ${debian}")
  endif()
endmacro()
