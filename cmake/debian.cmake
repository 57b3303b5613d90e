# Debian packages of the three installed components, made by `cpack -G DEB` in the preset "package".
# libkesncd1 holds the stand-alone host's library too: both have one version and change together.
set(maintainer "kesncd maintainers <kesncd@localhost>")
if(DEFINED ENV{DEBEMAIL})
  set(maintainer "$ENV{DEBFULLNAME} <$ENV{DEBEMAIL}>")
endif()

set(library_package libkesncd${PROJECT_VERSION_MAJOR})
set(development_package libkesncd-dev)
set(program_package kesncd)

# Every package's own papers.
set(papers ${PROJECT_BINARY_DIR}/packaging)
file(MAKE_DIRECTORY ${papers})
execute_process(
  COMMAND packaging/make_changelog ${PROJECT_VERSION} ${maintainer} CHANGELOG.md
  COMMAND gzip -9n
  WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
  OUTPUT_FILE ${papers}/changelog.gz COMMAND_ERROR_IS_FATAL ANY)
foreach(component library development program)
  set(name ${${component}_package})
  install(FILES ${papers}/changelog.gz packaging/copyright
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
  if(EXISTS ${PROJECT_SOURCE_DIR}/packaging/${name}.overrides)
    install(FILES packaging/${name}.overrides RENAME ${name}
      DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides COMPONENT ${component})
  endif()
endforeach()
install(CODE "execute_process(COMMAND gzip -9nf
  \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_MANDIR}/man1/kesncd.1\"
  COMMAND_ERROR_IS_FATAL ANY)" COMPONENT program)
install(FILES docs/embedding.md README.md DESTINATION
  ${CMAKE_INSTALL_DATADIR}/doc/${development_package} COMPONENT development)
install(FILES examples/host/main.cc examples/host/CMakeLists.txt DESTINATION
  ${CMAKE_INSTALL_DATADIR}/doc/${development_package}/examples/host COMPONENT development)
install(FILES docs/activity.md docs/cluster.md docs/formats.md docs/dumps.md docs/readers.md DESTINATION
  ${CMAKE_INSTALL_DATADIR}/doc/${program_package} COMPONENT program)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_COMPONENTS_ALL library development program)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_CONTACT ${maintainer})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own, the first line below
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(same_library "${library_package} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_MULTIARCH same)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/triggers)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
"switching activity from value change dumps - library
Reads the value change dump (VCD) of a logic simulation and tells how often
each signal toggles, in MHz, for a power estimator.

This package holds the library and a stand-alone host for programs that have
no design application.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${development_package})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_MULTIARCH same)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS ${same_library})
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
"switching activity from value change dumps - development files
Reads the value change dump (VCD) of a logic simulation and tells how often
each signal toggles, in MHz, for a power estimator.

This package holds the headers, the files by which CMake and pkg-config find
the library, and a small host as an example.")

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME ${program_package})
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION electronics)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS ${same_library})
# What it runs where it is there: fst2vcd for FST dumps, and what reads Verilog netlists.
set(CPACK_DEBIAN_PROGRAM_PACKAGE_RECOMMENDS "gtkwave, yosys")
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION
"switching activity from value change dumps - program
Reads the value change dump (VCD) of a logic simulation and tells how often
each signal toggles, in MHz, for a power estimator.

This package holds the command-line program, which also checks the dumps of
many simulators and rewrites them where readers would go wrong.")
include(CPack)
