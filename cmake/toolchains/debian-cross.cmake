# Shared by the toolchain files beside this one, each of which says processor and triplet: builds with Debian's cross
# compiler. Qt and SQLite come from TARNBEAM_SYSROOT, a folder into which Debian's packages for that processor were
# unpacked, or, if it is not set, from multiarch packages of this machine. docs/cross-build.md has the commands.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_CXX_COMPILER ${triplet}-g++)
set(CMAKE_STRIP ${triplet}-strip)
set(CMAKE_LIBRARY_ARCHITECTURE ${triplet})

set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TARNBEAM_SYSROOT)
if(TARNBEAM_SYSROOT)
  set(CMAKE_FIND_ROOT_PATH ${TARNBEAM_SYSROOT})
  set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
  set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
  set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
  # What Qt itself needs is looked up for programs, even though they are not linked to it.
  string(CONCAT CMAKE_EXE_LINKER_FLAGS_INIT
    "-Wl,-rpath-link,${TARNBEAM_SYSROOT}/usr/lib/${triplet}:${TARNBEAM_SYSROOT}/lib/${triplet}")
endif()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
