# What is installed, in three components: the libraries; what is needed to build against them, their
# headers and the files by which CMake and pkg-config find them; the program with its man page and
# completions. The headers keep a folder of their own, because a folder "host" among all others
# would say nothing.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(headers ${CMAKE_INSTALL_INCLUDEDIR}/libkesncd)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/kesncd)

set(libraries kesncd)
if(TARGET kesncd-host)
  list(APPEND libraries kesncd-host)
  install(FILES host/standalone/standalone_host.h DESTINATION ${headers}/host/standalone
    COMPONENT development)
endif()
install(TARGETS ${libraries} EXPORT kesncd-targets
  LIBRARY COMPONENT library NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${headers})
install(FILES kesncd/kesncd.h DESTINATION ${headers}/kesncd COMPONENT development)
install(FILES host/design_data.h host/power_data.h DESTINATION ${headers}/host
  COMPONENT development)
if(TARGET kesncd-program)
  file(RELATIVE_PATH libraries_of_program /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
  set_target_properties(kesncd-program PROPERTIES INSTALL_RPATH $ORIGIN/${libraries_of_program})
  install(TARGETS kesncd-program COMPONENT program)
  set(KESNCD_ZSH_COMPLETIONS ${CMAKE_INSTALL_DATADIR}/zsh/site-functions
    CACHE STRING "Where zsh's completion is installed")
  set(pages ${PROJECT_BINARY_DIR}/pages)
  install(FILES ${pages}/kesncd.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program)
  install(FILES ${pages}/kesncd
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT program)
  install(FILES ${pages}/_kesncd DESTINATION ${KESNCD_ZSH_COMPLETIONS} COMPONENT program)
  install(FILES ${pages}/kesncd.fish
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT program)
endif()

install(EXPORT kesncd-targets NAMESPACE kesncd:: DESTINATION ${package}
  FILE kesncdConfig.cmake COMPONENT development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/kesncdConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/kesncdConfigVersion.cmake DESTINATION ${package}
  COMPONENT development)

file(RELATIVE_PATH prefix_of_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
foreach(library ${libraries})
  configure_file(cmake/${library}.pc.in ${library}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${library}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT development)
endforeach()
