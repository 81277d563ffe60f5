# Warnings, hardening and sanitizers for every target of the project.

set(QUILLET_SANITIZE "" CACHE STRING "Value of -fsanitize= for every target, for example address,undefined")
option(QUILLET_FUZZ "Build the fuzz targets with libFuzzer (needs clang)" OFF)
option(QUILLET_TESTS "Build the tests" ON)
option(QUILLET_PRECOMPILE "Precompile the headers of others that most sources include" ON)
option(QUILLET_TESTS_TOGETHER "Compile the sources of a test program a few at a time" ON)
option(QUILLET_BENCH "Build the benchmarks" ON)

find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()

add_compile_options(
  -Wall -Wextra -Wpedantic -Werror
  -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
  -Wcast-align -Wformat=2 -Wimplicit-fallthrough
  -fstack-protector-strong
)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # g++ 12 sees overlaps in std::string's own assignments that cannot be (GCC bug 105651).
  add_compile_options(-Wno-restrict)
  if(QUILLET_PRECOMPILE)
    # The same, and out of precompiled headers it no longer counts as the library's own.
    add_compile_options(-Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread)
  endif()
endif()
add_compile_definitions(JSON_USE_IMPLICIT_CONVERSIONS=0)

if(NOT QUILLET_SANITIZE AND CMAKE_BUILD_TYPE STREQUAL "Release")
  add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
  add_link_options(-Wl,-z,relro,-z,now)
else()
  add_compile_definitions(_GLIBCXX_ASSERTIONS)
endif()
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

if(QUILLET_SANITIZE)
  add_compile_options(-fsanitize=${QUILLET_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${QUILLET_SANITIZE})
endif()
if(QUILLET_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
