# Warnings, sanitizers, coverage and hardening: one place for every target of the tree.
function(tarnbeam_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion
    $<$<BOOL:${TARNBEAM_WERROR}>:-Werror>)
  if(TARNBEAM_SANITIZE)
    target_compile_options(${target} PRIVATE
      -fsanitize=${TARNBEAM_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(${target} PRIVATE -fsanitize=${TARNBEAM_SANITIZE})
  endif()
  if(TARNBEAM_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage -fprofile-update=atomic)
    target_link_options(${target} PRIVATE --coverage)
  endif()
endfunction()

# What is shipped: hardened in release builds, with debug information that goes into packages of its own and names no
# folder of the machine that it was built on. The last map that fits counts: the build folder may be in the source.
function(tarnbeam_shipped target)
  if(NOT CMAKE_BUILD_TYPE STREQUAL Release OR TARNBEAM_SANITIZE OR TARNBEAM_COVERAGE)
    return()
  endif()
  target_compile_options(${target} PRIVATE
    -g -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=.)
  target_link_options(${target} PRIVATE LINKER:-z,relro LINKER:-z,now)
endfunction()
