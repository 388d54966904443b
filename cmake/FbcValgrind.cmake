# Memcheck runs of test programs (ctest label "valgrind"): the native build
# without sanitizers, so that valgrind sees the code the device runs, built
# the same way. Any memory error or definite leak fails the test.
#
#   fbc_add_valgrind_test(NAME command [args...])
include_guard(GLOBAL)

if(FBC_BUILD_TESTS AND NOT FBC_SANITIZE AND NOT CMAKE_CROSSCOMPILING)
  find_program(FBC_VALGRIND valgrind)
  if(NOT FBC_VALGRIND)
    message(WARNING "valgrind not found: the valgrind tests are left out (cmake/setup-debian.sh installs it)")
  endif()
endif()

function(fbc_add_valgrind_test name)
  if(NOT FBC_VALGRIND OR FBC_SANITIZE OR CMAKE_CROSSCOMPILING)
    return()
  endif()
  add_test(NAME valgrind.${name}
    COMMAND ${FBC_VALGRIND} -q --error-exitcode=99 --leak-check=full
            --errors-for-leak-kinds=definite ${ARGN})
  set_tests_properties(valgrind.${name} PROPERTIES LABELS valgrind)
endfunction()
