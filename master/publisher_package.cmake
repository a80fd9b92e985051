# For authors of masters outside this tree: the publishing side as one static library, its headers and
# those of the wire formats, and what find_package(wavo) needs.
if(WIN32)
  return()
endif()
include(CMakePackageConfigHelpers)

add_library(wavo_publisher STATIC
  $<TARGET_OBJECTS:wavo_master> $<TARGET_OBJECTS:wavo_support> $<TARGET_OBJECTS:wavo_platform>)
set_target_properties(wavo_publisher PROPERTIES LINKER_LANGUAGE CXX)
set(WAVO_PUBLISHER_LIBRARIES ${CMAKE_DL_LIBS} rt)
if(WAVO_HAVE_LIBBACKTRACE)
  list(APPEND WAVO_PUBLISHER_LIBRARIES backtrace)
endif()
install(TARGETS wavo_publisher ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})

set(headers ${CMAKE_INSTALL_INCLUDEDIR}/wavo)
install(FILES capability_module.h line_fifo_writer.h publisher.h DESTINATION ${headers}/master)
foreach(header
    link/axis_capabilities.h link/master_messages.h link/wire_format.h
    platform/message_window.h platform/shared_memory.h)
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES ${PROJECT_SOURCE_DIR}/src/${header} DESTINATION ${headers}/${folder})
endforeach()

set(package ${CMAKE_INSTALL_LIBDIR}/cmake/wavo)
configure_package_config_file(wavo-config.cmake.in wavo-config.cmake
  INSTALL_DESTINATION ${package}
  PATH_VARS CMAKE_INSTALL_INCLUDEDIR CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(wavo-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/wavo-config.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/wavo-config-version.cmake
  DESTINATION ${package})
