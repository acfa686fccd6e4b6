# Debian packages: `cpack -G DEB` in the build folder makes one for each component.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tarnbeamdatabase)
set(CPACK_PACKAGE_VENDOR Tarnbeam)
# Empty, or it would stand before the description of each package.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_CONTACT "Tarnbeam maintainers <maintainers@tarnbeam.invalid>"
  CACHE STRING "Maintainer named in the packages")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development)
if(TARNBEAM_BUILD_TOOL)
  list(APPEND CPACK_COMPONENTS_ALL tool)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(same_version "(= ${PROJECT_VERSION})")
set(runtime_package libtarnbeamdatabase${PROJECT_VERSION_MAJOR})

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
  "Persistence of a handheld antenna-alignment instrument
Keeps alignments of sector antennas and point-to-point paths, thresholds,
preferences and screen contents in SQLite files, and converts files of earlier
schema versions. Conversions work in /opt/tarnbeam/database, which belongs to
the group tarnbeam.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS passwd)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
  ${PROJECT_SOURCE_DIR}/cmake/debian/postinst ${PROJECT_SOURCE_DIR}/cmake/debian/postrm)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtarnbeamdatabase-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "${runtime_package} ${same_version}, qtbase5-dev (>= 5.9)")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "Persistence of a handheld antenna-alignment instrument, development files
Headers, CMake package and pkg-config file of libTarnbeamDatabase.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME tarnbeam-db)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${runtime_package} ${same_version}")
set(CPACK_COMPONENT_TOOL_DESCRIPTION
  "Creates, fills, reads, checks and migrates antenna-alignment databases
A command-line program over libTarnbeamDatabase.")

include(CPack)
