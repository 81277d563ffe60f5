# Helpers that keep the CMake file of each room to what is particular to it.

# quillet_rooms(ROOM...): adds each room that is there.
function(quillet_rooms)
  foreach(room IN LISTS ARGN)
    if(EXISTS "${CMAKE_CURRENT_SOURCE_DIR}/${room}/CMakeLists.txt")
      add_subdirectory(${room})
    endif()
  endforeach()
endfunction()

# quillet_library(NAME SOURCES ... LIBRARIES ...): a static library included by its room's path.
function(quillet_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC "${CMAKE_SOURCE_DIR}")
  target_link_libraries(${name} PUBLIC ${ARG_LIBRARIES})
endfunction()

# quillet_test(NAME SOURCES ... LIBRARIES ...): one GoogleTest program, one ctest entry.
function(quillet_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}")
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} GTest::gmock_main)
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 300)
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
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}")
endfunction()
