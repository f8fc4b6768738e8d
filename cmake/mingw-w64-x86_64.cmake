# Cross-build for 64-bit Windows with Debian's mingw-w64 (posix threads, so
# std::thread works), everything linked statically: no mingw DLLs travel with
# the programs.
#
#   cmake -S . -B build-win -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-x86_64.cmake \
#         -DCADRELLE_WIN_PREFIX=<prefix printed by scripts/build-windows-deps.sh>
#
# The prefix holds wxMSW, expat, zlib, libpng, libsodium and GoogleTest built
# with this same toolchain. CMake reads this file again for every
# try_compile, where only the environment survives: the prefix is passed on
# through it.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CADRELLE_WIN_HOST x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${CADRELLE_WIN_HOST}-gcc-posix)
set(CMAKE_CXX_COMPILER ${CADRELLE_WIN_HOST}-g++-posix)
set(CMAKE_RC_COMPILER ${CADRELLE_WIN_HOST}-windres)

if(CADRELLE_WIN_PREFIX)
  set(ENV{CADRELLE_WIN_PREFIX} "${CADRELLE_WIN_PREFIX}")
elseif(DEFINED ENV{CADRELLE_WIN_PREFIX})
  set(CADRELLE_WIN_PREFIX "$ENV{CADRELLE_WIN_PREFIX}")
endif()

set(CMAKE_FIND_ROOT_PATH /usr/${CADRELLE_WIN_HOST})
if(CADRELLE_WIN_PREFIX)
  list(PREPEND CMAKE_FIND_ROOT_PATH "${CADRELLE_WIN_PREFIX}")
  # wx-config and pkg-config must answer for the prefix, never for the
  # host's GTK build.
  set(WX_CONFIG_EXECUTABLE "${CADRELLE_WIN_PREFIX}/bin/wx-config" CACHE FILEPATH "wx-config of wxMSW" FORCE)
  set(ENV{PKG_CONFIG_LIBDIR} "${CADRELLE_WIN_PREFIX}/lib/pkgconfig")
  set(ENV{PKG_CONFIG_PATH} "")
  set(ENV{PKG_CONFIG_SYSROOT_DIR} "")
endif()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")

# Test programs run under Wine (ctest, gtest_discover_tests).
# Debian's wine64 package keeps its loader out of PATH.
find_program(CADRELLE_WINE64 NAMES wine64 wine PATHS /usr/lib/wine)
if(CADRELLE_WINE64)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${CADRELLE_WINE64})
endif()
