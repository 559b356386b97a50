# How to build for Windows elsewhere; included with the architecture set.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${architecture})
set(CMAKE_C_COMPILER ${architecture}-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER ${architecture}-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER ${architecture}-w64-mingw32-windres)
# No library that is built for this system may slip in.
set(CMAKE_FIND_ROOT_PATH ${SLYVER_WINDOWS_LIBRARIES} /usr/${architecture}-w64-mingw32)
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES SLYVER_WINDOWS_LIBRARIES)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# The programs need nothing that does not come with Windows.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_CROSSCOMPILING_EMULATOR wine)
