# Helpers for registering tests with CTest.
find_package(GTest REQUIRED)
include(GoogleTest)

# tolva_gtest(NAME src... LIBS lib...): a GoogleTest binary, each of its tests a CTest test.
function(tolva_gtest name)
  cmake_parse_arguments(T "" "" "LIBS" ${ARGN})
  add_executable(${name} ${T_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE ${T_LIBS} GTest::gtest GTest::gtest_main)
  # Where a test finds its fixtures and the programs it runs.
  target_compile_definitions(${name} PRIVATE TOLVA_TEST_SOURCE_DIR="${CMAKE_SOURCE_DIR}"
    TOLVA_TEST_BINARY_DIR="${CMAKE_BINARY_DIR}")
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST)
endfunction()

# tolva_behaviour_cases(ROOT runner program): one CTest test per case folder (a folder holding `args` or `run.sh`).
function(tolva_behaviour_cases root runner program)
  file(GLOB_RECURSE markers LIST_DIRECTORIES false "${root}/*/args" "${root}/*/run.sh")
  list(SORT markers)
  foreach(marker ${markers})
    get_filename_component(case ${marker} DIRECTORY)
    file(RELATIVE_PATH rel ${CMAKE_SOURCE_DIR}/tests ${case})
    add_test(NAME ${rel} COMMAND ${runner} $<TARGET_FILE:${program}> ${case})
  endforeach()
endfunction()
