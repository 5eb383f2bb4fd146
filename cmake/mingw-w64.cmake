# Builds for 64-bit Windows with Debian's MinGW-w64, the flavour with POSIX threads, which
# std::thread needs.
#
#     KESTRA_WINDOWS_PACKAGES   a folder in which find_package looks for packages built for Windows; the environment variable of that name
#                               reaches the checks that CMake builds on the way
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# Programs and libraries need nothing but what Windows has: the runtime of the compiler is linked
# in.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")

if(KESTRA_WINDOWS_PACKAGES)
    set(ENV{KESTRA_WINDOWS_PACKAGES} ${KESTRA_WINDOWS_PACKAGES})
endif()
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 $ENV{KESTRA_WINDOWS_PACKAGES} ${CMAKE_PREFIX_PATH})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
