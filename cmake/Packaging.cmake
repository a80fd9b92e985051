# What `cpack` in the build folder of Windows makes: a ZIP to unpack anywhere, and an installer.
set(CPACK_PACKAGE_NAME "Wavo")
set(CPACK_PACKAGE_VENDOR "Velk")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_FILE_NAME "wavo-${PROJECT_VERSION}-win64")
set(CPACK_PACKAGE_INSTALL_DIRECTORY "Wavo")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_GENERATOR ZIP NSIS)

# A 64-bit installer for 64-bit programs.
set(CPACK_NSIS_DEFINES "Target amd64-unicode")
set(CPACK_NSIS_DISPLAY_NAME "Wavo ${PROJECT_VERSION}")
set(CPACK_NSIS_PACKAGE_NAME "Wavo")
set(CPACK_NSIS_MUI_ICON "${PROJECT_SOURCE_DIR}/data/icons/wavo.ico")
set(CPACK_NSIS_MUI_UNIICON "${PROJECT_SOURCE_DIR}/data/icons/wavo.ico")
set(CPACK_NSIS_INSTALLED_ICON_NAME "wavo.exe")
set(CPACK_NSIS_EXECUTABLES_DIRECTORY ".")
set(CPACK_NSIS_ENABLE_UNINSTALL_BEFORE_INSTALL ON)
set(CPACK_NSIS_MODIFY_PATH OFF)
# Recordings offer the viewer under "Open with", and nothing else is opened by it; who opens them by
# default stays as it was. The desktop is told, so that it does so at once.
set(tell_desktop [=[System::Call 'shell32::SHChangeNotify(i 0x8000000, i 0, p 0, p 0)']=])
set(CPACK_NSIS_EXTRA_INSTALL_COMMANDS [=[
  WriteRegStr HKLM 'Software\Classes\Wavo.Recording' '' 'Recording of Wavo'
  WriteRegStr HKLM 'Software\Classes\Wavo.Recording\DefaultIcon' '' '"$INSTDIR\wavo.exe",0'
  WriteRegStr HKLM 'Software\Classes\Wavo.Recording\shell\open\command' '' '"$INSTDIR\wavo.exe" "%1"'
  WriteRegNone HKLM 'Software\Classes\.mcap\OpenWithProgids' 'Wavo.Recording'
]=] "  ${tell_desktop}\n")
# Keys that are empty then are those that it has made.
set(CPACK_NSIS_EXTRA_UNINSTALL_COMMANDS [=[
  DeleteRegKey HKLM 'Software\Classes\Wavo.Recording'
  DeleteRegValue HKLM 'Software\Classes\.mcap\OpenWithProgids' 'Wavo.Recording'
  DeleteRegKey /ifempty HKLM 'Software\Classes\.mcap\OpenWithProgids'
  DeleteRegKey /ifempty HKLM 'Software\Classes\.mcap'
  DeleteRegKey SHCTX 'Software\Velk\Wavo'
  DeleteRegKey /ifempty SHCTX 'Software\Velk'
]=] "  ${tell_desktop}\n")
list(JOIN CPACK_NSIS_EXTRA_INSTALL_COMMANDS "" CPACK_NSIS_EXTRA_INSTALL_COMMANDS)
list(JOIN CPACK_NSIS_EXTRA_UNINSTALL_COMMANDS "" CPACK_NSIS_EXTRA_UNINSTALL_COMMANDS)
set(CPACK_NSIS_IGNORE_LICENSE_PAGE ON)  # there is no text to agree to
set(CPACK_PACKAGE_EXECUTABLES "wavo" "Wavo")
set(CPACK_NSIS_MENU_LINKS "manual/index.html" "Manual of Wavo")
# Where Qt is inside the programs, what they are linked from is kept beside the packages.
get_target_property(qt_type Qt6::Core TYPE)
find_program(WAVO_PYTHON python3)
if(qt_type STREQUAL STATIC_LIBRARY AND CMAKE_GENERATOR STREQUAL Ninja AND WAVO_PYTHON)
  get_filename_component(qt_folder ${Qt6_DIR}/../../.. REALPATH)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/RelinkArchive.cmake.in RelinkArchive.cmake @ONLY)
  set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_BINARY_DIR}/RelinkArchive.cmake)
endif()
include(CPack)
