# Debian packages: `cpack -G DEB` in the build folder makes one for each component.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tarnbeamdatabase)
set(CPACK_PACKAGE_VENDOR Tarnbeam)
# Empty, or else it would stand before the description of each package.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_CONTACT "Tarnbeam maintainers <maintainers@tarnbeam.invalid>"
  CACHE STRING "Maintainer named in the packages")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
# Whatever umask the packages are made with.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development)
if(TARNBEAM_BUILD_TOOL)
  list(APPEND CPACK_COMPONENTS_ALL tool)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 0tarnbeam1)
set(CPACK_DEBIAN_PACKAGE_SOURCE tarnbeamdatabase)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(package_version ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
set(same_version "(= ${package_version})")

if(TARNBEAM_QT_MAJOR EQUAL 5)
  set(runtime_package libtarnbeamdatabase${PROJECT_VERSION_MAJOR})
  set(development_package libtarnbeamdatabase-dev)
  set(tool_package tarnbeam-db)
  set(qt_development_package qtbase5-dev)
else()
  set(runtime_package libtarnbeamdatabaseqt${TARNBEAM_QT_MAJOR}-${PROJECT_VERSION_MAJOR})
  set(development_package libtarnbeamdatabaseqt${TARNBEAM_QT_MAJOR}-dev)
  # One program, whichever Qt it is built with: the packages take each other's place.
  set(tool_package tarnbeam-db-qt${TARNBEAM_QT_MAJOR})
  set(CPACK_DEBIAN_TOOL_PACKAGE_CONFLICTS tarnbeam-db)
  set(CPACK_DEBIAN_TOOL_PACKAGE_REPLACES tarnbeam-db)
  set(CPACK_DEBIAN_TOOL_PACKAGE_PROVIDES tarnbeam-db)
  set(qt_development_package qt6-base-dev)
endif()

# multi_arch(COMPONENT VALUE): packages of several architectures side by side. From CMake 3.31 on CPack has a variable
# for it; before, the field follows the last one of those that CPack copies as they are.
function(multi_arch component section value)
  if(CMAKE_VERSION VERSION_LESS 3.31)
    string(APPEND section "\nMulti-Arch: ${value}")
  endif()
  set(CPACK_DEBIAN_${component}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${component}_PACKAGE_MULTIARCH ${value} PARENT_SCOPE)
endfunction()

# Changelog and copyright of every package. An installation without packages leaves them out.
tarnbeam_compress(cmake/debian/changelog changelog.Debian.gz)
function(package_documents component package)
  install(FILES ${PROJECT_BINARY_DIR}/changelog.Debian.gz ${PROJECT_SOURCE_DIR}/cmake/debian/copyright
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component} EXCLUDE_FROM_ALL)
endfunction()

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime_package})
multi_arch(RUNTIME libs same)
package_documents(runtime ${runtime_package})
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
  "Persistence of a handheld antenna-alignment instrument
Keeps alignments of sector antennas and point-to-point paths, thresholds,
preferences and screen contents in SQLite files, and converts files of earlier
schema versions. Conversions work in /opt/tarnbeam/database, which belongs to
the group tarnbeam.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS passwd)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
  ${PROJECT_SOURCE_DIR}/cmake/debian/postinst ${PROJECT_SOURCE_DIR}/cmake/debian/postrm
  ${PROJECT_SOURCE_DIR}/cmake/debian/triggers ${PROJECT_BINARY_DIR}/symbols)
install(CODE "execute_process(RESULT_VARIABLE failed OUTPUT_FILE ${PROJECT_BINARY_DIR}/symbols
    COMMAND ${PROJECT_SOURCE_DIR}/cmake/debian/make-symbols $<TARGET_FILE:TarnbeamDatabase>
      ${TARNBEAM_QT_MAJOR} ${runtime_package} ${development_package} ${package_version})
  if(failed)
    message(FATAL_ERROR \"No symbols file for the package\")
  endif()" COMPONENT runtime EXCLUDE_FROM_ALL)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${development_package})
multi_arch(DEVELOPMENT libdevel same)
package_documents(development ${development_package})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "${runtime_package} ${same_version}, ${qt_development_package} (>= ${qt_minimum}), libsqlite3-dev (>= 3.22)")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "Persistence of a handheld antenna-alignment instrument, development files
Headers, CMake package and pkg-config file of libTarnbeamDatabase.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME ${tool_package})
multi_arch(TOOL utils foreign)
package_documents(tool ${tool_package})
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${runtime_package} ${same_version}")
set(CPACK_COMPONENT_TOOL_DESCRIPTION
  "Creates, fills, reads, checks and migrates antenna-alignment databases
A command-line program over libTarnbeamDatabase.")

# Debug information of release builds. CPack's own packages of it have wrong checksums.
function(debug_package target component package)
  set(debug ${component}debug)
  set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${debug} PARENT_SCOPE)
  string(TOUPPER ${debug} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package}-dbgsym PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${package} ${same_version}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_SHLIBDEPS OFF PARENT_SCOPE)
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "Debug symbols for ${package}\nDebuggers find them by build ID." PARENT_SCOPE)
  package_documents(${debug} ${package}-dbgsym)
  multi_arch(${upper} debug same)
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${CPACK_DEBIAN_${upper}_PACKAGE_SECTION} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_MULTIARCH same PARENT_SCOPE)
  install(CODE "execute_process(RESULT_VARIABLE failed
      COMMAND ${PROJECT_SOURCE_DIR}/cmake/debian/split-debug $<TARGET_FILE:${target}>
        \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/lib/debug/.build-id\")
    if(failed)
      message(FATAL_ERROR \"No debug information of ${target}\")
    endif()" COMPONENT ${debug} EXCLUDE_FROM_ALL)
endfunction()
if(CMAKE_BUILD_TYPE STREQUAL Release)
  debug_package(TarnbeamDatabase runtime ${runtime_package})
  if(TARNBEAM_BUILD_TOOL)
    debug_package(tarnbeam-db tool ${tool_package})
  endif()
endif()

include(CPack)
