# What is installed: both libraries, their headers, the program, and the files by which CMake and
# pkg-config find the libraries. The headers keep a folder of their own, because a folder "host"
# among all others would say nothing.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(headers ${CMAKE_INSTALL_INCLUDEDIR}/libkesncd)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/kesncd)

set(libraries kesncd)
if(TARGET kesncd-host)
  list(APPEND libraries kesncd-host)
  install(FILES host/standalone/standalone_host.h DESTINATION ${headers}/host/standalone)
endif()
install(TARGETS ${libraries} EXPORT kesncd-targets INCLUDES DESTINATION ${headers})
install(FILES kesncd/kesncd.h DESTINATION ${headers}/kesncd)
install(FILES host/design_data.h host/power_data.h DESTINATION ${headers}/host)
if(TARGET kesncd-program)
  file(RELATIVE_PATH libraries_of_program /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
  set_target_properties(kesncd-program PROPERTIES INSTALL_RPATH $ORIGIN/${libraries_of_program})
  install(TARGETS kesncd-program)
endif()

install(EXPORT kesncd-targets NAMESPACE kesncd:: DESTINATION ${package}
  FILE kesncdConfig.cmake)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/kesncdConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/kesncdConfigVersion.cmake DESTINATION ${package})

file(RELATIVE_PATH prefix_of_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/kesncd.pc.in kesncd.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kesncd.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
