# tb_register_suite(NAME [TIMEOUT SECONDS] [WITH COMMAND...]): CTest runs the GoogleTest program NAME whole; the runner
# demands the program's own closing line besides its exit code. A command given by WITH gets the program as its last
# arguments, and runs it beside what the tests need.
function(tb_register_suite name)
    cmake_parse_arguments(suite "" "TIMEOUT" "WITH" ${ARGN})
    if(NOT suite_TIMEOUT)
        set(suite_TIMEOUT 600)
    endif()
    add_test(NAME ${name}
             COMMAND "${PROJECT_SOURCE_DIR}/tools/run_suite.sh" ${suite_WITH} ${CMAKE_CROSSCOMPILING_EMULATOR}
                     $<TARGET_FILE:${name}>)
    set_tests_properties(${name} PROPERTIES TIMEOUT ${suite_TIMEOUT})
endfunction()

# tb_suite(NAME SOURCES... USES LAYERS... [TIMEOUT SECONDS] [WITH COMMAND...]): a suite linked to the library's own objects.
function(tb_suite name)
    cmake_parse_arguments(suite "" "TIMEOUT" "USES;WITH" ${ARGN})
    add_executable(${name} ${suite_UNPARSED_ARGUMENTS})
    target_link_libraries(${name} PRIVATE ${suite_USES} tb_test_support)
    tb_register_suite(${name} TIMEOUT "${suite_TIMEOUT}" WITH ${suite_WITH})
endfunction()
