# Toolchain that makes 64-bit Windows programs on Linux. It uses MinGW-w64 (GCC with posix threads) and a folder
# with static builds of all libraries. CORVADINE_WINDOWS_PREFIX, a cache entry or an environment variable, names
# this folder.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# CMake runs this file again for each trial build. A trial build does not see the cache, so it gets the folder here.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES CORVADINE_WINDOWS_PREFIX)
if(NOT CORVADINE_WINDOWS_PREFIX)
    set(CORVADINE_WINDOWS_PREFIX $ENV{CORVADINE_WINDOWS_PREFIX})
endif()
if(NOT IS_DIRECTORY "${CORVADINE_WINDOWS_PREFIX}/lib/cmake/Qt6")
    message(FATAL_ERROR "CORVADINE_WINDOWS_PREFIX must name a folder with the libraries for Windows "
        "(./dev windows unpacks one); it is '${CORVADINE_WINDOWS_PREFIX}'")
endif()

set(CMAKE_PREFIX_PATH ${CORVADINE_WINDOWS_PREFIX})
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 ${CORVADINE_WINDOWS_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Without this, pkg-config would find the libraries of the machine that builds.
set(ENV{PKG_CONFIG_LIBDIR} ${CORVADINE_WINDOWS_PREFIX}/lib/pkgconfig)

# Qt's tools (moc, rcc) run on the machine that builds.
set(QT_HOST_PATH /usr CACHE PATH "Where Qt for this machine is installed")
set(QT_HOST_PATH_CMAKE_DIR /usr/lib/${CMAKE_HOST_SYSTEM_PROCESSOR}-linux-gnu/cmake CACHE PATH
    "Where its CMake packages are")

# Without this option, GCC may assume that an inline function changes only the registers that its copy in this object
# file changes. But the linker keeps only one copy, and that copy may come from a library compiled with other options.
set(CMAKE_CXX_FLAGS_INIT "-fno-ipa-ra")

# Each program is one file with the compiler's runtime in it, and has the same bytes each time it is built.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -Wl,--no-insert-timestamp")
