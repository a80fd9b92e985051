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

# wavo_library(<name> SOURCES ... [LINK ...]): one folder, one static library.
function(wavo_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC ${ARG_LINK})
  wavo_flags(${name})
endfunction()

# wavo_test(<name> SOURCES ... LINK ... LABELS ... [EXCLUSIVE] [TIMEOUT <seconds>] [MAIN]):
# a GoogleTest program. EXCLUSIVE: it uses names that exist once on a machine (the master's
# segments), so it never runs beside another such test. MAIN: it brings its own main().
function(wavo_test name)
  cmake_parse_arguments(ARG "EXCLUSIVE;MAIN" "TIMEOUT" "SOURCES;LINK;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LINK} GTest::gmock)
  if(NOT ARG_MAIN)
    target_link_libraries(${name} PRIVATE wavo_test_main)
  endif()
  wavo_flags(${name})
  wavo_windows(${name})
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
