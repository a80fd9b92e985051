# Functions that make this project's libraries, programs and tests, so that flags and include
# folders are set in one place.

# What stands before the folders of this build where the programs run: under Wine they lie on a drive.
if(CMAKE_CROSSCOMPILING AND WIN32)
  set(WAVO_DRIVE "Z:")
else()
  set(WAVO_DRIVE "")
endif()

# Flags of everything that is ours.
function(wavo_flags target)
  target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR})
  # "slots", "signals" and "emit" stay ordinary words.
  target_compile_definitions(${target} PRIVATE QT_NO_KEYWORDS)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic
    # Reports name our own paths, relative to the repository.
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=
    # GCC 12 sees overlapping copies inside std::string where there are none.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
    $<$<COMPILE_LANGUAGE:CXX>:-Werror=switch>)
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

# Programs for Windows: with a static Qt, the platform for tests is linked in beside the usual one.
function(wavo_windows target)
  if(WIN32)
    qt_import_plugins(${target} INCLUDE Qt6::QOffscreenIntegrationPlugin)
  endif()
endfunction()

# Most of the time to compile is time to read headers: sources of a target are compiled some at a
# time (WAVO_UNITY), and headers that most of them include are read once (WAVO_PCH).
function(wavo_compile_together target)
  if(WAVO_UNITY)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 8)
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
  wavo_flags(wavo_pch_${kind})
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

# wavo_test(<name> SOURCES ... LINK ... LABELS ... [EXCLUSIVE] [TIMEOUT <seconds>] [MAIN]):
# a GoogleTest program. EXCLUSIVE: it uses names that exist once on a machine (the master's
# segments), so it never runs beside another such test. MAIN: it brings its own main(). DEBUG_INFO: it
# looks at the names and lines of its own functions.
function(wavo_test name)
  cmake_parse_arguments(ARG "DEBUG_INFO;EXCLUSIVE;MAIN" "TIMEOUT" "SOURCES;LINK;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LINK} GTest::gmock)
  if(NOT ARG_MAIN)
    target_link_libraries(${name} PRIVATE wavo_test_main)
  endif()
  wavo_flags(${name})
  wavo_windows(${name})
  if(ARG_DEBUG_INFO)
    target_compile_options(${name} PRIVATE -g)
  else()
    wavo_kind(kind ${ARG_LINK})
    wavo_compile_together(${name} test_${kind})
  endif()
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES
    LABELS "${ARG_LABELS}"
    TIMEOUT ${ARG_TIMEOUT}
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/tools/lsan.supp;ASAN_OPTIONS=allocator_may_return_null=1:detect_stack_use_after_return=1")
  if(ARG_EXCLUSIVE)
    set_tests_properties(${name} PROPERTIES RESOURCE_LOCK machine_segments)
  endif()
endfunction()
