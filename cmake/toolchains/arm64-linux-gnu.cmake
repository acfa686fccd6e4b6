# Builds for 64-bit ARM with Debian's cross compiler. Qt and SQLite come from TARNBEAM_SYSROOT, a folder into which
# Debian's arm64 packages were unpacked, or, if it is not set, from multiarch packages of this machine.
# docs/cross-build.md has the commands.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_STRIP aarch64-linux-gnu-strip)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TARNBEAM_SYSROOT)
if(TARNBEAM_SYSROOT)
  set(CMAKE_FIND_ROOT_PATH ${TARNBEAM_SYSROOT})
  set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
  set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
  set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
  # What Qt itself needs is looked up for programs, even though they are not linked to it.
  string(CONCAT CMAKE_EXE_LINKER_FLAGS_INIT
    "-Wl,-rpath-link,${TARNBEAM_SYSROOT}/usr/lib/aarch64-linux-gnu"
    ":${TARNBEAM_SYSROOT}/lib/aarch64-linux-gnu")
endif()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
