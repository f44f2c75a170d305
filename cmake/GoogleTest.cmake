# GoogleTest from its sources (Debian's googletest package), so that it fits the target's compiler.
set(QUORVEX_GOOGLETEST_SOURCES /usr/src/googletest CACHE PATH "Where GoogleTest's sources are")
set(INSTALL_GTEST OFF)
set(gtest_force_shared_crt ON)
add_subdirectory(${QUORVEX_GOOGLETEST_SOURCES} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
include(GoogleTest)
