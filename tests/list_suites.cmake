# Writes a file that makes each suite of a test program one test of CTest. For suites whose tests share a session.
#   cmake -D PROGRAM=... -D LABEL=... -D TIMEOUT=... -D FILE=... -P list_suites.cmake
execute_process(COMMAND ${PROGRAM} --gtest_list_tests OUTPUT_VARIABLE list COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "\n[A-Za-z0-9_/]+\\." suites "\n${list}")
# A suite counts as skipped if all of its tests were skipped. Otherwise its exit code is the result.
set(skipped "PASSED  []] 0 tests[.]\n[[]  SKIPPED []] [0-9]+ tests?, listed below:\n([[]  SKIPPED []] [^\n]*\n)+$")
set(tests "")
foreach(suite IN LISTS suites)
  string(REGEX REPLACE "\n(.*)[.]" "\\1" suite "${suite}")
  string(APPEND tests "add_test([==[${suite}]==] [==[${PROGRAM}]==] [==[--gtest_filter=${suite}.*]==])\n"
    "set_tests_properties([==[${suite}]==] PROPERTIES LABELS ${LABEL} TIMEOUT ${TIMEOUT}"
    " SKIP_REGULAR_EXPRESSION [==[${skipped}]==])\n")
endforeach()
file(WRITE ${FILE} "${tests}")
