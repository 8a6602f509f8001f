# add_unit_test(Name SOURCES a.cpp b.cpp LIBRARIES one two): one GoogleTest program run by CTest.
if(BUILD_TESTING)
  find_package(GTest REQUIRED)
endif()

function(add_unit_test name)
  cmake_parse_arguments(TEST "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${TEST_SOURCES})
  target_link_libraries(${name} PRIVATE build_flags ${TEST_LIBRARIES} GTest::gtest GTest::gtest_main)
  add_test(NAME ${name} COMMAND ${name})
endfunction()
