# Cross build for 64-bit Windows on Debian: mingw-w64 with POSIX threads, and the static Qt that
# provide-qt.sh puts into build/qt-windows. Without that Qt this file serves to build it.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_VERSION 10.0)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(machine x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${machine}-gcc-posix)
set(CMAKE_CXX_COMPILER ${machine}-g++-posix)
set(CMAKE_RC_COMPILER ${machine}-windres)
# Archives with the compiler's own plug-in, so that objects with link-time information are read.
set(CMAKE_AR ${machine}-gcc-ar-posix)
set(CMAKE_RANLIB ${machine}-gcc-ranlib-posix)

# A program that is one file: the runtimes of the compiler and of its threads are inside.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(ZLIB_USE_STATIC_LIBS ON)

# Headers and libraries are those of the target; programs (moc, rcc, uic among them) the host's.
get_filename_component(qt "${CMAKE_CURRENT_LIST_DIR}/../../build/qt-windows" REALPATH)
set(CMAKE_FIND_ROOT_PATH /usr/${machine})
if(EXISTS ${qt}/lib/cmake/Qt6)
  list(APPEND CMAKE_FIND_ROOT_PATH ${qt})
  list(APPEND CMAKE_PREFIX_PATH ${qt})
endif()
# provide-muparser.sh puts the parser of expressions there.
get_filename_component(muparser "${CMAKE_CURRENT_LIST_DIR}/../../build/muparser-windows" REALPATH)
if(EXISTS ${muparser}/lib/cmake/muparser)
  list(APPEND CMAKE_FIND_ROOT_PATH ${muparser})
  list(APPEND CMAKE_PREFIX_PATH ${muparser})
endif()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The host's Qt has the tools; it must be of the same version.
set(QT_HOST_PATH /usr)
file(GLOB host_packages /usr/lib/*/cmake/Qt6HostInfo)
if(host_packages)
  list(GET host_packages 0 host_package)
  get_filename_component(QT_HOST_PATH_CMAKE_DIR ${host_package} DIRECTORY)
endif()

# What was built runs under Wine; see with-wine.sh.
find_program(WAVO_WINE NAMES wine wine64)
if(WAVO_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine-place.sh ${WAVO_WINE})
endif()
