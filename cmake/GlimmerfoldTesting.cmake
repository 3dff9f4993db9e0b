# glimmerfold_add_test(<name> SOURCES <files...> LIBS <targets...> [LABELS <labels...>] [TIMEOUT <s>])
#
# Builds a GoogleTest executable and registers each of its test cases with
# CTest on its own, so that cases run in parallel (end-to-end cases each get a
# private X server). Cases are listed when CTest runs, not at build time.
function(glimmerfold_add_test name)
    cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LIBS;LABELS" ${ARGN})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_LIBS} GTest::gtest GTest::gmock)
    if(NOT "GTest::gtest_main" IN_LIST ARG_LIBS AND NOT "glimmerfold_test_main" IN_LIST ARG_LIBS)
        target_link_libraries(${name} PRIVATE GTest::gtest_main)
    endif()
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
    glimmerfold_target(${name})
    gtest_discover_tests(${name}
        DISCOVERY_MODE PRE_TEST
        DISCOVERY_TIMEOUT 30
        PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT ${ARG_TIMEOUT})
endfunction()
