# A room is a folder of sources that keeps no state of its own: it computes from values and
# parameters. It is a static library, hidden in whatever links it, and links only the rooms that it
# may include. Usage: kesncd_room(NAME SOURCES... ROOMS OTHER... ALONE SOURCES... COLD)
# Sources with a loop over the body of a dump, or over all values of a database, stand under ALONE:
# they are compiled by themselves also where others are joined, since a compiler inlines less into a
# loop in a long source, and optimised as far as a release asks for. The other sources of a COLD room
# run once a signal or once a run; optimising them further takes a fifth of the time of a build.
function(kesncd_room name)
  cmake_parse_arguments(room "COLD" "" "ROOMS;ALONE" ${ARGN})
  add_library(kesncd-room-${name} STATIC ${room_UNPARSED_ARGUMENTS} ${room_ALONE})
  if(room_COLD)
    target_compile_options(kesncd-room-${name} PRIVATE $<$<CONFIG:Release>:-O1>)
  endif()
  set_source_files_properties(${room_ALONE} PROPERTIES
    SKIP_UNITY_BUILD_INCLUSION ON
    COMPILE_OPTIONS $<$<CONFIG:Release>:-O3>)
  target_include_directories(kesncd-room-${name} PUBLIC ${PROJECT_SOURCE_DIR})
  foreach(other ${room_ROOMS})
    target_link_libraries(kesncd-room-${name} PUBLIC kesncd-room-${other})
  endforeach()
  kesncd_strict(kesncd-room-${name})
  kesncd_standard_headers(kesncd-room-${name})
endfunction()
