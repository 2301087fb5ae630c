# Cross compiler for Windows x64: Debian's GCC with the POSIX thread model.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_OBJCOPY x86_64-w64-mingw32-objcopy)

# Libraries and headers come from the target's own folders only, programs from the build machine.
include(${CMAKE_CURRENT_LIST_DIR}/Distribution.cmake)
list(APPEND CMAKE_FIND_ROOT_PATH ${DISTRIBUTION_mingw})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
