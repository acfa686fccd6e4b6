# What another project needs to build against the library: headers, CMake package, pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS TarnbeamDatabase EXPORT ${TARNBEAM_NAME}Targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
install(EXPORT ${TARNBEAM_NAME}Targets
  NAMESPACE TarnbeamDatabase::
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/${TARNBEAM_NAME}
  COMPONENT development)

# The models, the reports, and the classes of each version are public as they stand.
file(GLOB TARNBEAM_PUBLIC_HEADERS RELATIVE ${PROJECT_SOURCE_DIR} CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/model/*.h
  ${PROJECT_SOURCE_DIR}/reports/*.h
  ${PROJECT_SOURCE_DIR}/store/AlignmentDatabaseVersion*.h
  ${PROJECT_SOURCE_DIR}/store/legacy/*.h
  ${PROJECT_SOURCE_DIR}/migration/AlignmentDatabaseConverter*.h)
list(APPEND TARNBEAM_PUBLIC_HEADERS
  core/AlignmentDatabase.h
  core/OperationGuard.h
  core/TypeList.h
  migration/AllConverters.h
  migration/IAlignmentDatabaseConverter.h
  store/AlignmentDatabaseStore.h
  store/AllStores.h
  store/IAlignmentDatabase.h
  store/IAlignmentDatabaseInternal.h)
foreach(header ${TARNBEAM_PUBLIC_HEADERS})
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES ${header}
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${TARNBEAM_NAME}/${folder} COMPONENT development)
endforeach()
install(FILES ${PROJECT_BINARY_DIR}/include/TarnbeamDatabaseExport.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${TARNBEAM_NAME} COMPONENT development)

configure_package_config_file(cmake/TarnbeamDatabaseConfig.cmake.in
  ${PROJECT_BINARY_DIR}/${TARNBEAM_NAME}Config.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/${TARNBEAM_NAME})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/${TARNBEAM_NAME}ConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/${TARNBEAM_NAME}Config.cmake
  ${PROJECT_BINARY_DIR}/${TARNBEAM_NAME}ConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/${TARNBEAM_NAME} COMPONENT development)

# Paths in the pkg-config file start where that file lies, so an installation can be moved.
set(folder ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH pkgconfig_to_prefix ${folder} ${CMAKE_INSTALL_PREFIX})
file(RELATIVE_PATH prefix_to_libdir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH prefix_to_includedir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
configure_file(cmake/TarnbeamDatabase.pc.in ${PROJECT_BINARY_DIR}/${TARNBEAM_NAME}.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/${TARNBEAM_NAME}.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
