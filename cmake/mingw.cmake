# Shared by the two Windows toolchain files; each sets QUORVEX_WINDOWS_ARCH first.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${QUORVEX_WINDOWS_ARCH})

set(triplet ${QUORVEX_WINDOWS_ARCH}-w64-mingw32)
set(CMAKE_C_COMPILER ${triplet}-gcc-posix)
set(CMAKE_CXX_COMPILER ${triplet}-g++-posix)
set(CMAKE_RC_COMPILER ${triplet}-windres)

get_filename_component(quorvex_root ${CMAKE_CURRENT_LIST_DIR}/.. ABSOLUTE)
# Libraries that the scripts build for Windows; one under CMAKE_PREFIX_PATH wins.
list(APPEND CMAKE_FIND_ROOT_PATH ${CMAKE_PREFIX_PATH} ${quorvex_root}/build/deps/${QUORVEX_WINDOWS_ARCH} /usr/${triplet})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR ${quorvex_root}/scripts/wine.sh)
