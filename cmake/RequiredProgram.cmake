# tarnbeam_required_program(VARIABLE NAME): for tests of TARNBEAM_ALL_TESTS, none of which is silently left out.
function(tarnbeam_required_program variable name)
  find_program(${variable} ${name})
  if(NOT ${variable})
    message(FATAL_ERROR "TARNBEAM_ALL_TESTS needs ${name}; ./run-tests --all installs it")
  endif()
endfunction()
