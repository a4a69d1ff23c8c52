# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# overlay_test(NAME LABEL SOURCES file... LIBS target...): executable, test and label in one line. A test
# in which a row was skipped counts as skipped, never as passed. What starts threads has the label "unit;threads" and
# runs under ThreadSanitizer too.
function(overlay_test name label)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_LIBS} overlay_settings GTest::gtest GTest::gtest_main)
    target_include_directories(${name} PRIVATE
        ${PROJECT_SOURCE_DIR}/tests/support ${PROJECT_SOURCE_DIR}/tests/support/host)
    target_compile_definitions(${name} PRIVATE
        OVERLAY_SOURCE_DIR="${PROJECT_SOURCE_DIR}" OVERLAY_RECORDED_DATA="${OVERLAY_RECORDED_DATA}")
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES LABELS "${label}" SKIP_REGULAR_EXPRESSION "\\[  SKIPPED \\]" TIMEOUT 600
        ENVIRONMENT "LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/support/lsan_suppressions.txt:print_suppressions=0;TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/support/tsan_suppressions.txt")
    if("unit" IN_LIST label)
        add_dependencies(unit_tests ${name})
    endif()
    if("threads" IN_LIST label)
        add_dependencies(thread_tests ${name})
    endif()
endfunction()
