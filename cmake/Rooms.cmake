# Helpers that keep the CMake file of each room to what is particular to it.

# quillet_rooms(ROOM...): adds each room that is there.
function(quillet_rooms)
  foreach(room IN LISTS ARGN)
    if(EXISTS "${CMAKE_CURRENT_SOURCE_DIR}/${room}/CMakeLists.txt")
      add_subdirectory(${room})
    endif()
  endforeach()
endfunction()

# The headers of others that most sources include, parsed once. A source still names each that it uses: clang-tidy, which
# has none of this, would not find it otherwise.
set(QUILLET_COMMON_HEADERS
  <algorithm> <functional> <memory> <optional> <string> <string_view> <vector> <nlohmann/json.hpp> <tl/expected.hpp>)

# quillet_precompiled(NAME HEADERS ... [OPTIONS ...] LIBRARIES ...): makes NAME hold these headers precompiled, for targets
# that are compiled with the same options.
function(quillet_precompiled name)
  cmake_parse_arguments(ARG "" "" "HEADERS;OPTIONS;LIBRARIES" ${ARGN})
  file(WRITE "${CMAKE_BINARY_DIR}/precompiled/${name}.cpp" "")
  add_library(${name} OBJECT "${CMAKE_BINARY_DIR}/precompiled/${name}.cpp")
  target_compile_options(${name} PRIVATE ${ARG_OPTIONS})
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES})
  target_precompile_headers(${name} PRIVATE ${ARG_HEADERS})
endfunction()

# quillet_library(NAME SOURCES ... LIBRARIES ...): a static library included by its room's path.
function(quillet_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  if(QUILLET_PRECOMPILE)
    target_precompile_headers(${name} REUSE_FROM precompiled_headers)
  endif()
  target_include_directories(${name} PUBLIC "${CMAKE_SOURCE_DIR}")
  target_link_libraries(${name} PUBLIC ${ARG_LIBRARIES})
endfunction()

# What tests and programs' command lines are compiled with: they run once, and build in half the time, under a sanitizer in
# a third. No fuzz target measures what it covers of them.
set(QUILLET_QUICK_TO_BUILD $<$<CONFIG:Release>:-O1>)
if(QUILLET_SANITIZE)
  set(QUILLET_QUICK_TO_BUILD -O0)
endif()
if(QUILLET_FUZZ)
  list(APPEND QUILLET_QUICK_TO_BUILD -fno-sanitize=fuzzer-no-link)
endif()

# quillet_test(NAME [THREADS] SOURCES ... LIBRARIES ...): one GoogleTest program; ctest knows each of its cases by name.
# THREADS: it is one of those that ThreadSanitizer looks at.
function(quillet_test name)
  cmake_parse_arguments(ARG "THREADS" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}")
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} GTest::gmock_main)
  target_compile_options(${name} PRIVATE ${QUILLET_QUICK_TO_BUILD})
  if(QUILLET_PRECOMPILE)
    target_precompile_headers(${name} REUSE_FROM precompiled_test_headers)
  endif()
  # Most of what a test source takes to compile is GoogleTest's: a few together take little more than one.
  set_target_properties(${name} PROPERTIES UNITY_BUILD ${QUILLET_TESTS_TOGETHER} UNITY_BUILD_BATCH_SIZE 6)
  set(labels)
  if(ARG_THREADS)
    set(labels LABELS threads)
    add_dependencies(tests_with_threads ${name})
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 300 ${labels})
endfunction()

# quillet_benchmark(NAME SOURCES ... LIBRARIES ...): one Google Benchmark program.
function(quillet_benchmark name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}")
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} benchmark::benchmark_main)
endfunction()

# quillet_fuzz(NAME SOURCES ... LIBRARIES ...): one LLVMFuzzerTestOneInput target. Its seed corpus is
# the folder corpus/NAME beside it; without libFuzzer the program replays that corpus as a test.
function(quillet_fuzz name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  set(corpus "${CMAKE_CURRENT_SOURCE_DIR}/corpus/${name}")
  if(QUILLET_FUZZ)
    add_executable(${name} ${ARG_SOURCES})
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
    add_test(NAME ${name} COMMAND ${name} -runs=0 ${corpus})
    set_property(GLOBAL APPEND_STRING PROPERTY QUILLET_FUZZERS "$<TARGET_FILE:${name}> ${corpus}\n")
  else()
    add_executable(${name} ${ARG_SOURCES} "${CMAKE_SOURCE_DIR}/fuzz/ReplayCorpus.cpp")
    add_test(NAME ${name} COMMAND ${name} ${corpus})
  endif()
  set_tests_properties(${name} PROPERTIES TIMEOUT 300)
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}")
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES})
endfunction()

# quillet_program(NAME SOURCES ... LIBRARIES ...): a program for users; it lies in the build folder itself.
function(quillet_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}")
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES})
  target_compile_options(${name} PRIVATE ${QUILLET_QUICK_TO_BUILD})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}")
endfunction()
