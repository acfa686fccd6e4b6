# What another project needs to build against the library: headers, CMake package, pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS TarnbeamDatabase EXPORT TarnbeamDatabaseTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
install(EXPORT TarnbeamDatabaseTargets
  NAMESPACE TarnbeamDatabase::
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/TarnbeamDatabase
  COMPONENT development)

set(TARNBEAM_PUBLIC_HEADERS
  core/AlignmentDatabase.h
  migration/IAlignmentDatabaseConverter.h
  store/IAlignmentDatabase.h
  store/IAlignmentDatabaseInternal.h
  store/AlignmentDatabaseStore.h
  store/AlignmentDatabaseVersion7.h)
foreach(version RANGE 1 6)
  math(EXPR next "${version} + 1")
  list(APPEND TARNBEAM_PUBLIC_HEADERS
    store/legacy/AlignmentDatabaseVersion${version}.h
    migration/AlignmentDatabaseConverter${version}to${next}.h)
endforeach()
file(GLOB model_headers RELATIVE ${PROJECT_SOURCE_DIR} CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/model/*.h ${PROJECT_SOURCE_DIR}/reports/*.h)
list(APPEND TARNBEAM_PUBLIC_HEADERS ${model_headers})
foreach(header ${TARNBEAM_PUBLIC_HEADERS})
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES ${header}
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/TarnbeamDatabase/${folder} COMPONENT development)
endforeach()
install(FILES ${PROJECT_BINARY_DIR}/include/TarnbeamDatabaseExport.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/TarnbeamDatabase COMPONENT development)

configure_package_config_file(cmake/TarnbeamDatabaseConfig.cmake.in
  ${PROJECT_BINARY_DIR}/TarnbeamDatabaseConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/TarnbeamDatabase)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TarnbeamDatabaseConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/TarnbeamDatabaseConfig.cmake
  ${PROJECT_BINARY_DIR}/TarnbeamDatabaseConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/TarnbeamDatabase COMPONENT development)

# Paths in the pkg-config file start where that file lies, so an installation can be moved.
set(folder ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH pkgconfig_to_prefix ${folder} ${CMAKE_INSTALL_PREFIX})
file(RELATIVE_PATH prefix_to_libdir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH prefix_to_includedir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
configure_file(cmake/TarnbeamDatabase.pc.in ${PROJECT_BINARY_DIR}/TarnbeamDatabase.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/TarnbeamDatabase.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
