# Helpers shared by every folder's CMakeLists.txt.

# tidewake_library(name SOURCES ... [DEPENDS ...])
# One static library per subsystem folder; include paths are from the repository root,
# so code writes #include "graphics/Span.h".
function(tidewake_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}/generated)
  if(ARG_DEPENDS)
    target_link_libraries(${name} PUBLIC ${ARG_DEPENDS})
  endif()
endfunction()

# tidewake_test(subsystem SOURCES ... DEPENDS ...)
# One GoogleTest executable per subsystem, its tests discovered by CTest at test time.
function(tidewake_test subsystem)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  find_package(GTest REQUIRED)
  set(exe tests_${subsystem})
  add_executable(${exe} ${ARG_SOURCES})
  target_include_directories(${exe} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${exe} PRIVATE ${ARG_DEPENDS} GTest::gtest GTest::gmock GTest::gtest_main Threads::Threads)
  target_compile_definitions(${exe} PRIVATE TIDEWAKE_TEST_DATA="${PROJECT_SOURCE_DIR}/tests/data"
                                            TIDEWAKE_BINARY_DIR="${PROJECT_BINARY_DIR}")
  include(GoogleTest)
  gtest_discover_tests(${exe} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
                       PROPERTIES ENVIRONMENT "TIDEWAKE_BINARY_DIR=${PROJECT_BINARY_DIR}")
endfunction()

# tidewake_bench(name SOURCES ... DEPENDS ...)
function(tidewake_bench name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  find_package(benchmark REQUIRED)
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE ${ARG_DEPENDS} benchmark::benchmark Threads::Threads)
endfunction()

# tidewake_fuzz(name SOURCES ... DEPENDS ... [CORPUS dir] [RUNS n])
# A libFuzzer target; CI runs it for a fixed number of runs over its seed corpus (fewer
# for a target whose every input is a whole session, given with RUNS).
function(tidewake_fuzz name)
  cmake_parse_arguments(ARG "" "CORPUS;RUNS" "SOURCES;DEPENDS" ${ARGN})
  set(runs ${TIDEWAKE_FUZZ_RUNS})
  if(ARG_RUNS)
    set(runs ${ARG_RUNS})
  endif()
  add_executable(fuzz_${name} ${ARG_SOURCES})
  target_include_directories(fuzz_${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(fuzz_${name} PRIVATE ${ARG_DEPENDS})
  target_link_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
  # New inputs go to a scratch folder in the build tree, never into the seed corpus.
  set(seeds "")
  if(ARG_CORPUS)
    set(seeds ${CMAKE_CURRENT_SOURCE_DIR}/${ARG_CORPUS})
  endif()
  set(scratch ${CMAKE_CURRENT_BINARY_DIR}/corpus_${name})
  add_test(NAME fuzz_${name}
           COMMAND sh -c "mkdir -p '${scratch}' && exec '$<TARGET_FILE:fuzz_${name}>' -runs=${runs} -max_len=65536 -timeout=10 -rss_limit_mb=2048 '${scratch}' ${seeds}")
endfunction()

# Adds every subfolder of the calling folder that has a CMakeLists.txt, so that a new
# subsystem's tests, benchmarks, fuzz targets or tools need no edit of a shared file.
macro(tidewake_add_subfolders)
  file(GLOB _tidewake_subfolders LIST_DIRECTORIES true ${CMAKE_CURRENT_SOURCE_DIR}/*)
  foreach(_tidewake_subfolder ${_tidewake_subfolders})
    if(EXISTS ${_tidewake_subfolder}/CMakeLists.txt)
      add_subdirectory(${_tidewake_subfolder})
    endif()
  endforeach()
endmacro()
