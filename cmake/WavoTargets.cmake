set(WAVO_COPYRIGHT "Copyright (C) 2026 Velk")

# Functions that make this project's libraries, programs and tests, so that flags and include
# folders are set in one place.

# What stands before the folders of this build where the programs run: under Wine they lie on a drive.
if(CMAKE_CROSSCOMPILING AND WIN32)
  set(WAVO_DRIVE "Z:")
else()
  set(WAVO_DRIVE "")
endif()

file(RELATIVE_PATH relative_source_folder ${CMAKE_BINARY_DIR} ${PROJECT_SOURCE_DIR})
string(REGEX REPLACE "/+$" "" relative_source_folder "${relative_source_folder}")

# Flags of everything that is ours.
function(wavo_flags target)
  target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR})
  # "slots", "signals" and "emit" stay ordinary words.
  target_compile_definitions(${target} PRIVATE QT_NO_KEYWORDS)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic
    # Reports name our own paths, relative to the repository.
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=
    # The same where a compiler cache has made them relative to the build folder.
    -ffile-prefix-map=${relative_source_folder}/=
    # GCC 12 sees overlapping copies inside std::string where there are none.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
    $<$<COMPILE_LANGUAGE:CXX>:-Werror=switch>)
  if(WIN32 AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # The stack is aligned for 16 bytes there, and the compiler puts vectors of 32 on it all the same.
    # And a call that is guessed not to be virtual, past a thunk, has been seen to become a call of
    # memcpy (GCC 12).
    target_compile_options(${target} PRIVATE
      $<$<COMPILE_LANGUAGE:CXX>:-Wa,-muse-unaligned-vector-move;-fno-devirtualize-speculatively>)
  endif()
  if(WAVO_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(WAVO_SANITIZE)
    target_compile_options(${target} PRIVATE
      -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer
      # GCC finds uninitialised values in the standard library's own code when it is instrumented.
      $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_link_options(${target} PRIVATE -fsanitize=address,undefined)
  endif()
endfunction()

# Flags of tests: most of the time to compile them would be time to optimise code that runs once.
function(wavo_test_flags target)
  wavo_flags(${target})
  target_compile_options(${target} PRIVATE -O${WAVO_TEST_OPTIMISATION})
  if(WAVO_SANITIZE)
    # Half of the time again goes into checks of each pointer, which the other sanitizer finds too.
    target_compile_options(${target} PRIVATE -fno-sanitize=alignment,null,object-size,vptr)
  endif()
endfunction()

# Programs for Windows: with a static Qt, the platform for tests is linked in beside the usual one.
function(wavo_windows target)
  if(WIN32)
    qt_import_plugins(${target} INCLUDE Qt6::QOffscreenIntegrationPlugin)
  endif()
endfunction()

# wavo_windows_resources(<program> DESCRIPTION <text> [WINDOW]): what a program's file tells Windows of
# itself: icon, version data, manifest. A library of objects <program>_resources, so that tests have
# them, too. WINDOW: it has windows, with controls as they look today.
function(wavo_windows_resources target)
  if(NOT WIN32)
    return()
  endif()
  cmake_parse_arguments(ARG "WINDOW" "DESCRIPTION" "" ${ARGN})
  set(controls "")
  if(ARG_WINDOW)
    file(READ ${PROJECT_SOURCE_DIR}/cmake/windows/controls.manifest controls)
  endif()
  set(resource ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
  set(manifest ${CMAKE_CURRENT_BINARY_DIR}/${target}.manifest)
  string(REPLACE "." "," version_numbers "${PROJECT_VERSION}.0")
  configure_file(${PROJECT_SOURCE_DIR}/cmake/windows/program.manifest.in ${manifest} @ONLY)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/windows/program.rc.in ${resource} @ONLY)
  set_source_files_properties(${resource} PROPERTIES
    OBJECT_DEPENDS "${manifest};${PROJECT_SOURCE_DIR}/data/icons/wavo.ico")
  add_library(${target}_resources OBJECT ${resource})
  target_sources(${target} PRIVATE $<TARGET_OBJECTS:${target}_resources>)
endfunction()

# Most of the time to compile is time to read headers: sources of a target are compiled some at a
# time (WAVO_UNITY), and headers that most of them include are read once (WAVO_PCH).
function(wavo_compile_together target)
  if(WAVO_UNITY GREATER 1)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE ${WAVO_UNITY})
    # What the headers of an operating system define stays out of other sources.
    get_target_property(sources ${target} SOURCES)
    list(FILTER sources INCLUDE REGEX "(^|/)(posix|win32)/")
    set_source_files_properties(${sources} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
  endif()
  if(WAVO_PCH AND TARGET wavo_pch_${ARGV1})
    target_precompile_headers(${target} REUSE_FROM wavo_pch_${ARGV1})
  endif()
endfunction()

# wavo_precompiled(<kind> HEADERS ... LINK ...): a set of headers that targets of a kind share.
function(wavo_precompiled kind)
  cmake_parse_arguments(ARG "" "" "HEADERS;LINK" ${ARGN})
  if(NOT WAVO_PCH)
    return()
  endif()
  set(source ${CMAKE_CURRENT_BINARY_DIR}/pch_${kind}.cpp)
  if(NOT EXISTS ${source})
    file(WRITE ${source} "")
  endif()
  add_library(wavo_pch_${kind} OBJECT ${source})
  target_link_libraries(wavo_pch_${kind} PRIVATE ${ARG_LINK})
  if(kind MATCHES "^test_")
    wavo_test_flags(wavo_pch_${kind})
  else()
    wavo_flags(wavo_pch_${kind})
  endif()
  target_precompile_headers(wavo_pch_${kind} PRIVATE ${ARG_HEADERS})
endfunction()

# What of Qt these libraries reach, directly or through libraries of ours: plain, gui or widgets.
function(wavo_kind result)
  set(kind plain)
  foreach(library ${ARGN})
    get_property(reached GLOBAL PROPERTY WAVO_KIND_${library})
    if(library MATCHES "^Qt6::(Widgets|Test|PrintSupport)$" OR reached STREQUAL widgets)
      set(kind widgets)
    elseif(kind STREQUAL plain AND (library STREQUAL Qt6::Gui OR reached STREQUAL gui))
      set(kind gui)
    endif()
  endforeach()
  set(${result} ${kind} PARENT_SCOPE)
endfunction()

# wavo_library(<name> SOURCES ... [LINK ...] [SEPARATE]): one folder, one static library. SEPARATE: tests
# put files of their own in the place of some of its objects, so that each source is one.
function(wavo_library name)
  cmake_parse_arguments(ARG "SEPARATE" "" "SOURCES;LINK" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC ${ARG_LINK})
  wavo_flags(${name})
  wavo_kind(kind ${ARG_LINK})
  set_property(GLOBAL PROPERTY WAVO_KIND_${name} ${kind})
  wavo_compile_together(${name} ${kind})
  if(ARG_SEPARATE)
    set_target_properties(${name} PROPERTIES UNITY_BUILD OFF)
  endif()
endfunction()

# wavo_test(<name> SOURCES ... LINK ... LABELS ... [EXCLUSIVE] [SHARDS <number>] [TIMEOUT <seconds>] [MAIN]):
# a GoogleTest program. EXCLUSIVE: it uses names that exist once on a machine (the master's
# segments); where it cannot have a place of its own for them, as it has under Wine (wine-place.sh), it
# never runs beside another such test.
# SHARDS: that many processes, beside each other, run its tests. MAIN: it brings its own main().
# DEBUG_INFO: it looks at the names and lines of its own functions.
function(wavo_test name)
  cmake_parse_arguments(ARG "DEBUG_INFO;EXCLUSIVE;MAIN" "SHARDS;TIMEOUT" "SOURCES;LINK;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LINK} GTest::gmock)
  if(NOT ARG_MAIN)
    target_link_libraries(${name} PRIVATE wavo_test_main)
  endif()
  wavo_test_flags(${name})
  wavo_windows(${name})
  if(ARG_DEBUG_INFO)
    target_compile_options(${name} PRIVATE -g)
  else()
    wavo_kind(kind ${ARG_LINK})
    wavo_compile_together(${name} test_${kind})
  endif()
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 300)  # for what never ends; how long the others take is the machine's business
  endif()
  set(environment "QT_QPA_PLATFORM=offscreen"
    "LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/tools/lsan.supp"
    "ASAN_OPTIONS=allocator_may_return_null=1:detect_stack_use_after_return=1")
  set(tests ${name})
  if(ARG_SHARDS)
    set(tests)
    math(EXPR last "${ARG_SHARDS} - 1")
    foreach(shard RANGE ${last})
      list(APPEND tests ${name}_${shard})
    endforeach()
  endif()
  set(shard 0)
  foreach(test ${tests})
    add_test(NAME ${test} COMMAND ${name})
    set(own_environment ${environment})
    if(NOT test STREQUAL name)
      list(APPEND own_environment GTEST_TOTAL_SHARDS=${ARG_SHARDS} GTEST_SHARD_INDEX=${shard})
      math(EXPR shard "${shard} + 1")
    endif()
    set_tests_properties(${test} PROPERTIES
      LABELS "${ARG_LABELS}" TIMEOUT ${ARG_TIMEOUT} ENVIRONMENT "${own_environment}")
    if(ARG_SHARDS)
      set_tests_properties(${test} PROPERTIES COST 1000)  # the long ones first
    endif()
    if(ARG_EXCLUSIVE AND WIN32 AND NOT CMAKE_CROSSCOMPILING)
      set_tests_properties(${test} PROPERTIES RESOURCE_LOCK machine_segments)
    endif()
  endforeach()
  if(ARG_EXCLUSIVE AND NOT WIN32)
    target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/system/posix/private_segments.cpp)
  endif()
endfunction()
