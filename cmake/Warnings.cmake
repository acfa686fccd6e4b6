# Warnings, sanitizers and coverage: one place for every target of the tree.
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
